// Python callables as the host's: signatures, defaults, calls, identity, and functions from source text.
#include "bridge/python.h"
#include "function/annotation.h"
#include "function/python_function.h"
#include "ling/testing.h"
#include "proxies/outcomes.h"
#include "python/call_python.h"

namespace ling::cpython {
namespace {

using ling::testing::make_map;
using PythonFunction = PythonTest;

// What the host gets for the variable `f` of the statements.
CPythonFunction function(const std::string& statements) {
  const PyObjectPtr object = run(statements + "\nresult = f");
  EXPECT_TRUE(object) << statements;
  return make_python_function(object.get()).value();
}

TEST_F(PythonFunction, MapsAnnotationsToTypes) {
  const std::string names =
      "import typing, collections.abc\nclass Own: pass\nclass String: pass\n"
      "class Box(typing.Generic[typing.TypeVar('T')]): pass\nresult = ";
  const std::pair<const char*, const char*> rows[] = {
      {"type(None)",                    "None"      },
      {"' builtins.int '",              "Integer"   },
      {"collections.abc.Sequence[int]", "List"      },
      {"typing.Optional[int]",          "Any"       },
      {"'int | None'",                  "Integer"   },
      {"typing.Callable[[int], str]",   "I_Callable"},
      {"Own",                           "Own"       },
      {"'Own'",                         "Any"       },
      {"Box[int]",                      "Box"       },
      {"String",                        "String"    }, // the host's, by its name
      {"3",                             "Any"       },
  };
  for (const auto& [annotation, type] : rows) {
    expect_outcome(type_from_annotation(run(names + annotation).get()).name(), type, annotation);
  }
}

TEST_F(PythonFunction, IsCalledByItsQualifiedNameElseByItsName) {
  const std::pair<const char*, const char*> rows[] = {
      {"''",          "" },
      {"1 // 0",      "" },
      {"5",           "n"},
      {"self.nobody", "n"}, // raises AttributeError
  };
  for (const auto& [qualified, name] : rows) {
    const std::string of_class =
        "class A:\n def __call__(self): pass\n def __getattr__(self, name):\n"
        "  if name == '__qualname__': return " +
        std::string(qualified) + "\n";
    expect_outcome(function(of_class + "  raise AttributeError(name)\nf = A()\nf.__name__ = 'n'").name(), name,
                   qualified);
  }
}

TEST_F(PythonFunction, TellsItsSignature) {
  const std::pair<const char*, const char*> rows[] = {
      {"def f(a, b, /, c, *, d: str, e=1): pass",                           "(a, b, c, d: String, e)"                                         },
      {"def f(*args: int, **kwargs: str) -> 'str': pass",                   "(args: Integer, kwargs: String) -> String"                       },
      {"from __future__ import annotations\ndef f(a: nobody) -> int: pass", "(a) -> Integer"                                                  },
      {"class A:\n def __call__(self, a: float): pass\nf = A()",            "(a: Float)"                                                      },
      {"f = min",                                                           "Error: no signature found for builtin <built-in function min>…"},
  };
  for (const auto& [statements, signature] : rows) {
    expect_outcome(function(statements).signature(), signature, statements);
  }
}

TEST_F(PythonFunction, IsCalledWithPositionsAndNames) {
  const CPythonFunction made =
      function("def f(a, /, b=2, *rest, c, d=9, **more): return repr((a, b, rest, c, d, more))");
  expect_outcomes({
      {made.callWithNamed(List_Generic({1}),       make_map({"d", 4, "b", 2, "c", 3})), "(1, 2, (), 3, 4, {})"                                    },
      {made.callWithNamed(List_Generic({1, 5, 6}), make_map({"c", 3, "x", 7})),         "(1, 5, (6,), 3, 9, {'x': 7})"                            },
      {made.callWithNamed(List_Generic({1}),       make_map({})),                       "Error: f() missing 1 required keyword-only argument: 'c'"},
      {made(1,                                     Error("no paper")),                  "Error: no paper"                                         },
  });
}

TEST_F(PythonFunction, ReadsAndWritesDefaultsAllOrNothing) {
  const CPythonFunction made = function("def f(a, b=2, c='x'): return (a, b, c)");
  const meta_property_untyped defaults("$$defaults");
  expect_outcomes({
      {made.propertyValue(defaults), "[2, \"x\"]"},
      {made.signature().value().requiredParameterCount(), "1"},
      {made.setPropertyValue(defaults, List_Generic({7})), "None"},
      {made.propertyValue(defaults), "[7]"},
      {made.signature().value().requiredParameterCount(), "2"},
      {made.setPropertyValue(defaults, List_Generic({1, Error("no paper")})), "Error: no paper"},
      {made.propertyValue(defaults), "[7]"},
      {function("class f: __defaults__ = 3").propertyValue(defaults), "[]"},
      {function("f = len").setPropertyValue(defaults, List_Generic()), "Error: …"},
  });
}

TEST_F(PythonFunction, IsNamedAndDocumentedByPython) {
  const CPythonFunction method = function("class A:\n def m(self):\n  'What it does.'\nf = A.m");
  const char* hiding = "class A:\n __call__ = len\n __doc__ = property(lambda self: 1 / 0)\nf = A()";
  expect_outcomes({
      {method.name(), "A.m"},
      {method.doc(), "What it does."},
      {ask(function("def f(): pass"), ".doc"), "None"},
      {ask(function(hiding), ".doc"), "Error: division by zero"},
      {function("f = __import__('functools').partial(len)").name(), ""},
  });
}

TEST_F(PythonFunction, IsOneHoweverOftenItCrosses) {
  // Python makes a bound method anew each time it is asked for.
  const PyObjectPtr methods = run("n = 5\nresult = [n.bit_length, n.bit_length]");
  const Any one = from_python(PyList_GetItem(methods.get(), 0)), other = from_python(PyList_GetItem(methods.get(), 1));
  EXPECT_EQ(to_python(one).get(), PyList_GetItem(methods.get(), 0));
  EXPECT_EQ(compare_objects_value(one, other), ordering_value::Equal);
  EXPECT_EQ(hash_of(one), hash_of(other));
}

TEST_F(PythonFunction, IsMadeFromSourceText) {
  // What a call with 20 and 22 gives.
  const std::pair<const char*, const char*> rows[] = {
      {" def add(a, b) :\n  return a + b\n",    "42"                                        },
      {"x = sum(args)\nif x:\n  return x",      "42"                                        },
      {"return ling.List is not None",          "true"                                      },
      {"x = = 1",                               "invalid syntax"                            },
      {"lambda a: a, 3",                        "Error: The source object isn't a function."},
      {"def f(): pass\ndel f",                  "Error: Unable to find the function: f."    },
      {"def f(): pass\nraise SystemExit('no')", "Error: no"                                 },
  };
  for (const auto& [source, expected] : rows) {
    const auto made = compile_function(source);
    const std::string outcome = outcome_text(made.is_error() ? Any(made) : made.value()(20, 22));
    // Errors of syntax quote the text before they say what is wrong.
    EXPECT_TRUE(outcome == expected || outcome.ends_with(std::string("SyntaxError: ") + expected + "\n")) << outcome;
  }
  expect_outcome(CPythonFunction::getClass()(3), "Error: The source object isn't a function.");
}

TEST_F(PythonFunction, ServesEightThreads) {
  const CPythonFunction made = function("def f(a: int, b=1) -> int: return a + b");
  on_eight_threads([&](int thread) {
    for (int i = 0; i < 200; ++i) {
      EXPECT_EQ(Integer::unchecked(made(thread, i)).value(), thread + i);
      EXPECT_TRUE(is_none(made.setPropertyValue(meta_property_untyped("$$defaults"), List_Generic({Any(i)}))));
    }
  });
  EXPECT_EQ(made.signature().value().toString().view(), "(a: Integer, b=199) -> Integer");
}

}  // namespace
}  // namespace ling::cpython
