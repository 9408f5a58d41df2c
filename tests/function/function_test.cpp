// Python callables as the host's: signatures, defaults, calls, identity, and functions from source text.
#include "bridge/python.h"
#include "bridge/python_call.h"
#include "function/annotation.h"
#include "function/python_function.h"
#include "ling/ling.h"

namespace ling::cpython {
namespace {

class PythonFunction : public PythonTest {
 protected:
  // What the host gets for the variable `f` of the statements.
  static CPythonFunction function(const std::string& statements) {
    const PyObjectPtr object = run(statements + "\nresult = f");
    EXPECT_TRUE(object) << statements;
    const Any made = make_python_function(object.get());
    EXPECT_TRUE(CPythonFunction::matches(made.get())) << statements << text(made);
    return CPythonFunction::unchecked(made);
  }
  static std::string text(const Any& outcome) {
    return std::string((is_error_result(outcome) ? Error::unchecked(outcome).message() : display_text(outcome)).view());
  }
  static std::string signature(const std::string& statements) {
    const Result<Signature> signature = function(statements).signature();
    return signature.is_error() ? text(signature) : std::string(signature->toString().view());
  }
};

TEST_F(PythonFunction, MapsAnnotationsToTypes) {
  const PyObjectPtr names =
      run("import typing, datetime, decimal, inspect, collections.abc, types\n"
          "class Own: pass\n"
          "class String: pass\n"
          "result = dict(globals())");
  const struct {
    const char* annotation;
    const char* type;
  } rows[] = {
      {"int",                              "Integer"        },
      {"'int'",                            "Integer"        },
      {"' builtins.int '",                 "Integer"        },
      {"bool",                             "Boolean"        },
      {"float",                            "Float"          },
      {"str",                              "String"         },
      {"bytes",                            "ByteArray"      },
      {"memoryview",                       "ByteArray"      },
      {"None",                             "None"           },
      {"type(None)",                       "None"           },
      {"'None'",                           "None"           },
      {"inspect.Parameter.empty",          "Any"            },
      {"typing.Any",                       "Any"            },
      {"list",                             "List"           },
      {"list[int]",                        "List"           },
      {"typing.List[str]",                 "List"           },
      {"'typing.List[int]'",               "List"           },
      {"'list [ int ]'",                   "List"           },
      {"collections.abc.Sequence[int]",    "List"           },
      {"typing.Mapping[str, int]",         "HashMap"        },
      {"'collections.abc.MutableMapping'", "HashMap"        },
      {"typing.Set[int]",                  "HashSet"        },
      {"frozenset",                        "frozenset"      },
      {"tuple[int, ...]",                  "Tuple"          },
      {"typing.Callable[[int], str]",      "I_Callable"     },
      {"collections.abc.Callable",         "I_Callable"     },
      {"typing.Optional[int]",             "Any"            },
      {"'int | None'",                     "Integer"        },
      {"datetime.date",                    "Date"           },
      {"datetime.datetime",                "DateTime"       },
      {"datetime.time",                    "Time"           },
      {"decimal.Decimal",                  "Decimal"        },
      {"Own",                              "Own"            },
      {"'Own'",                            "Any"            },
      {"String",                           "String"         }, // the host's, by its name
      {"'EvaluationError'",                "EvaluationError"},
      {"typing.TypeVar('T')",              "Any"            },
      {"''",                               "Any"            },
      {"3",                                "Any"            },
  };
  for (const auto& row : rows) {
    const PyObjectPtr code(Py_CompileString(row.annotation, "<case>", Py_eval_input));
    const PyObjectPtr annotation(code ? PyEval_EvalCode(code.get(), names.get(), names.get()) : nullptr);
    ASSERT_TRUE(annotation) << row.annotation;
    EXPECT_EQ(type_from_annotation(annotation.get()).name().view(), row.type) << row.annotation;
  }
  EXPECT_TRUE(type_from_annotation(nullptr).is_untyped());
}

TEST_F(PythonFunction, TellsItsSignature) {
  const struct {
    const char* statements;
    const char* signature;
  } rows[] = {
      {"def f(a: int, b=2, *rest): pass",                                          "(a: Integer, b, rest=2)"        },
      {"def f(): pass",                                                            "()"                             },
      {"def f(a, b, /, c, *, d: str, e=1): pass",                                  "(a, b, c, d: String, e)"        },
      {"def f(*args: int, **kwargs: str): pass",                                   "(args: Integer, kwargs: String)"},
      {"def f(a: 'int', b: 'list[str]') -> 'str': pass",                           "(a: Integer, b: List) -> String"},
      {"from __future__ import annotations\ndef f(a: int) -> bool: pass",          "(a: Integer) -> Boolean"        },
      {"from __future__ import annotations\ndef f(a: nobody) -> int: pass",        "(a) -> Integer"                 },
      {"def f() -> None: pass",                                                    "() -> None"                     },
      {"import functools\ndef g(a, b: int, c): pass\nf = functools.partial(g, 1)", "(b: Integer, c)"                },
      {"import functools\ndef d(g):\n @functools.wraps(g)\n def w(*a): return g(*a)\n return w\n@d\ndef f(x: int) -> "
       "str: pass",                                                                           "(x: Integer) -> String"                                                                                                  },
      {"class A:\n def m(self, a: int): pass\nf = A().m",                                                                          "(a: Integer)"},
      {"class A:\n def __call__(self, a: float): pass\nf = A()",                                                                          "(a: Float)"                                                                                           },
      {"class f:\n def __init__(self, a: str): pass",                                                                          "(a: String)"},
      {"f = len",                                                                          "(obj)"                                                                                                                               },
      {"f = min",                                                                          "no signature found for builtin <built-in function min>"},
      {"class A:\n __signature__ = property(lambda s: 1 / 0)\n def __call__(s): pass\nf = A()",                                                                          "division by zero"                                                 },
      {"class A:\n __signature__ = 3\n def __call__(s): pass\nf = A()",
       "unexpected object 3 in __signature__ attribute"},
  };
  for (const auto& row : rows) {
    std::string told = signature(row.statements);
    EXPECT_EQ(told.substr(0, std::string_view(row.signature).size()), row.signature) << row.statements;
  }
}

TEST_F(PythonFunction, AsksForItsSignatureUntilItGetsOne) {
  const CPythonFunction made = function(
      "class A:\n"
      "  tries = 0\n"
      "  @property\n"
      "  def __signature__(self):\n"
      "    A.tries += 1\n"
      "    if A.tries == 1: raise ValueError('not yet')\n"
      "    import inspect\n"
      "    return inspect.signature(lambda a, b: 0)\n"
      "  def __call__(self, *_): return A.tries\n"
      "f = A()");
  EXPECT_TRUE(made.signature().is_error());
  EXPECT_TRUE(made.propertyValue(meta_property_untyped("$_sign")).empty());
  ASSERT_FALSE(made.signature().is_error());
  EXPECT_EQ(made.parameterCount(), 2u);
  EXPECT_TRUE(made.signature()->is_same(made.propertyValue(meta_property_untyped("$_sign"))));
  EXPECT_EQ(text(made.propertyValue(meta_property_untyped("$_result_type"))), "Any");
  EXPECT_EQ(text(made()), "2");
}

TEST_F(PythonFunction, IsCalledWithPositionsAndNames) {
  const CPythonFunction made =
      function("def f(a, /, b=2, *rest, c, d=4, **more): return repr((a, b, rest, c, d, more))");
  const auto named = [&](const char* keywords, std::vector<Any> positional) {
    const HashMap_Generic names;
    for (const char* name = keywords; *name != '\0'; ++name) {
      names.set(String(std::string_view(name, 1)), Any(std::string_view(name, 1)));
    }
    return text(made.callWithNamed(List_Generic(std::move(positional)), names));
  };
  EXPECT_EQ(named("c", {Any(1)}), "(1, 2, (), 'c', 4, {})");
  EXPECT_EQ(named("dbc", {Any(1)}), "(1, 'b', (), 'c', 'd', {})");
  EXPECT_EQ(named("cx", {Any(1), Any(5), Any(6)}), "(1, 5, (6,), 'c', 4, {'x': 'x'})");
  EXPECT_EQ(named("", {Any(1)}), "f() missing 1 required keyword-only argument: 'c'");
  EXPECT_EQ(named("cb", {Any(1), Any(5)}), "f() got multiple values for argument 'b'");
  EXPECT_EQ(text(made(Any(1), Error("no paper"))), "no paper");
  EXPECT_EQ(text(function("def f(): raise KeyError('k')")()), "'k'");
}

TEST_F(PythonFunction, ReadsAndWritesDefaultsAllOrNothing) {
  const CPythonFunction made = function("def f(a, b=2, c='x'): return (a, b, c)");
  const meta_property_untyped defaults("$$defaults");
  const auto read = [&] { return text(made.propertyValue(defaults)); };
  EXPECT_EQ(read(), "[2, \"x\"]");
  EXPECT_EQ(made.signature()->requiredParameterCount(), 1u);
  EXPECT_TRUE(is_none(made.setPropertyValue(defaults, List_Generic(std::vector<Any>{Any(7)}))));
  EXPECT_EQ(read(), "[7]");
  EXPECT_EQ(made.signature()->requiredParameterCount(), 2u);
  EXPECT_EQ(text(made.setPropertyValue(defaults, List_Generic(std::vector<Any>{Any(1), Error("no paper")}))),
            "no paper");
  EXPECT_EQ(read(), "[7]");
  for (const char* without : {"f = len", "def f(*, a=1): pass", "class f: __defaults__ = 3"}) {
    EXPECT_EQ(text(function(without).propertyValue(defaults)), "[]") << without;
  }
  EXPECT_TRUE(is_error_result(function("f = len").setPropertyValue(defaults, List_Generic())));
}

TEST_F(PythonFunction, IsNamedAndDocumentedByPython) {
  const CPythonFunction method = function("class A:\n def m(self):\n  'What it does.'\nf = A.m");
  EXPECT_EQ(method.name().view(), "A.m");
  EXPECT_EQ(method.doc().view(), "What it does.");
  EXPECT_EQ(function("import functools\nf = functools.partial(len)").name().view(), "");
  EXPECT_EQ(text(make_python_function(eval("3").get())), "The source object isn't a function.");
  EXPECT_EQ(text(make_python_function(nullptr)), "The source object isn't a function.");
}

TEST_F(PythonFunction, IsOneHoweverOftenItCrosses) {
  const PyObjectPtr object = run("def f(): pass\nresult = f");
  const Any first = from_python(object.get()), second = from_python(object.get());
  EXPECT_EQ(to_python(first).get(), object.get());
  EXPECT_EQ(compare_objects_value(first, second), ordering_value::Equal);
  EXPECT_EQ(hash_of(first), hash_of(second));
  EXPECT_NE(compare_objects_value(first, from_python(eval("len").get())), ordering_value::Equal);
}

TEST_F(PythonFunction, IsMadeFromSourceText) {
  const struct {
    const char* source;
    const char* outcome;  // of a call with 20 and 22
  } rows[] = {
      {"lambda a, b: a + b",                    "42"                                 },
      {" def add(a, b) :\n  return a + b\n",    "42"                                 },
      {"def\tadd(a: int, b):\n\treturn a + b",  "42"                                 },
      {"return args[0] + args[1]",              "42"                                 },
      {"x = sum(args)\nif x:\n  return x",      "42"                                 },
      {"return ling.List is not None",          "true"                               },
      {"pass",                                  "None"                               },
      {"return __name__",                       "builtins"                           },
      {"default = 3",                           "None"                               },
      {"def (a): pass",                         "invalid syntax"                     },
      {"def",                                   "invalid syntax"                     },
      {"def f(a, b): return a +",               "invalid syntax"                     },
      {"lambda a: a a",                         "invalid syntax"                     },
      {"lambda a: a, 3",                        "The source object isn't a function."},
      {"def f(): pass\ndel f",                  "Unable to find the function: f."    },
      {"def f(): pass\nraise SystemExit('no')", "no"                                 },
  };
  for (const auto& row : rows) {
    const auto made = compile_function(row.source);
    const std::string outcome = made.is_error() ? text(made) : text(made.value()(20, 22));
    // Errors of syntax quote the text before they say what is wrong.
    EXPECT_TRUE(outcome == row.outcome || outcome.ends_with(std::string("SyntaxError: ") + row.outcome + "\n"))
        << row.source << "\n"
        << outcome;
  }
  const auto of_class = CPythonFunction::getClass();
  EXPECT_EQ(text(I_Callable_Generic::unchecked(of_class(String("lambda *_: 5")))()), "5");
  EXPECT_EQ(text(of_class(3)), "The source object isn't a function.");
}

TEST_F(PythonFunction, ServesEightThreads) {
  const CPythonFunction made = function("def f(a: int, b=1) -> int: return a + b");
  on_eight_threads([&](int thread) {
    for (int i = 0; i < 200; ++i) {
      EXPECT_EQ(Integer::unchecked(made(thread, i)).value(), thread + i);
      EXPECT_EQ(made.parameterCount(), 2u);
      EXPECT_TRUE(is_none(made.setPropertyValue(meta_property_untyped("$$defaults"), List_Generic({Any(i)}))));
    }
  });
  EXPECT_EQ(made.signature()->toString().view(), "(a: Integer, b=199) -> Integer");
}

}  // namespace
}  // namespace ling::cpython
