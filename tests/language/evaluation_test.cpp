// Python source run for the host.
#include "language/evaluation.h"

#include "bridge/python.h"
#include "ling/ling.h"

namespace ling::cpython {
namespace {

class Evaluation : public PythonTest {
 protected:
  // The Python text of a result, or the message of its error.
  static std::string text(const Result<Any>& result) {
    if (result.is_error()) {
      return std::string(result.error().message().view());
    }
    return repr(to_python(result));
  }
  static std::string run_code(const char* code, const Any& scope = {}) { return text(evaluate(code, scope)); }
  // Of keys and values in turn.
  static HashMap_Generic map(std::initializer_list<Any> entries) {
    const HashMap_Generic result;
    for (const Any* each = entries.begin(); each != entries.end(); each += 2) {
      result.set(each[0], each[1]);
    }
    return result;
  }
  static EvaluationScope with_locals(const Any& variables) { return EvaluationScope({}, {}, variables, {}); }
  static EvaluationScope with_out_locals(const Any& variables) { return EvaluationScope({}, {}, {}, variables); }
};

TEST_F(Evaluation, GivesWhatTheCodeReturns) {
  const std::pair<const char*, const char*> rows[] = {
      {"return 1 + 2",                                                      "3"                            },
      {"x = 1",                                                             "None"                         },
      {"größe = 'ß\\u20ac'\nreturn größe",                             "'ß€'"                      },
      {"",                                                                  "None"                         },
      {" # \n\n#",                                                          "None"                         },
      {"x = 1\rreturn x",                                                   "1"                            },
 // However the code is indented, its literals stay what they are.
      {"return '''a\nb'''",                                                 "'a\\nb'"                      },
      {"x = 'a\\\r\n b'\nreturn x",                                         "'a b'"                        },
      {"if 1:\n  x = '# \\'', r\"\"\"\"\\\"\"\"\n \"\"\"  # '''\nreturn x", "(\"# '\", '\"\\\\\"\"\"\\n ')"},
      {"def outer():\n  x = 1\n  def inner():\n    nonlocal x\n    x += 1\n    return x\n  return inner()\nreturn "
       "outer()",                                                    "2"                            },
      {"return sorted(k for k in locals())",                                "[]"                           },
  };
  for (const auto& [code, result] : rows) {
    EXPECT_EQ(run_code(code), result) << code;
  }
}

TEST_F(Evaluation, KeepsCodeInItsFunction) {
  for (const char* code : {"%s", "\f%s", "x = 1\n  \f%s", "x = '''\n\f'''\n\f%s", "x = 1\n\\\n\f%s", "    \f%s"}) {
    const String all = String(code).replaced("%s", "return __import__('sys')._getframe().f_code.co_name");
    EXPECT_EQ(run_code(all.c_str()), "'ling_outer'") << code;
    EXPECT_EQ(run_code(all.c_str(), with_out_locals(map({"out", 1}))), "'ling_outer'") << code;
  }
}

TEST_F(Evaluation, PlacesErrorsInTheCallersText) {
  constexpr std::int64_t none = 0;
  const std::tuple<const char*, std::int64_t, std::int64_t, const char*> rows[] = {
      {"return 1 +* 2",                           1, 11,   "SyntaxError"                       },
      {"x = 1\nif x:\n  y = = 2",                 3, 7,    "SyntaxError"                       },
      {"a = 1\nb = 2\nreturn 1 // 0",             3, none, "integer division or modulo by zero"},
      {"def f():\n  return 1 // 0\n\nreturn f()", 2, none, "integer division or modulo by zero"},
      {"return ling_outer()",                     1, none, "name 'ling_outer' is not defined"  },
      {"\nraise SystemExit(3)",                   2, none, "3"                                 },
      {"x = '''\n'''\nreturn 1 + \\",             4, 1,    "SyntaxError"                       },
      {"x = 1\n \fx = = 2",                       2, 7,    "SyntaxError"                       },
      {"if 1:\ny = 2",                            2, 1,    "IndentationError"                  },
      {"x = [1,\n)",                              2, 1,    "SyntaxError"                       },
  };
  // The declarations of out-locals stand above the code and must not count.
  for (const Any& out_locals : {Any(), Any(map({"a", 1, "b", 2, "c", 3}))}) {
    const EvaluationScope scope = with_out_locals(out_locals);
    for (const auto& [code, line, column, message] : rows) {
      const Result<Any> result = evaluate(code, scope);
      const auto error = EvaluationError::cast(result);
      ASSERT_TRUE(error) << code << ": " << text(result);
      EXPECT_EQ(error->line(), line) << code;
      EXPECT_EQ(error->column().value_or(none), column) << code;
      EXPECT_TRUE(error->message().contains(message)) << code << ": " << text(result);
      EXPECT_EQ(PyErr_Occurred(), nullptr);
    }
  }
}

TEST_F(Evaluation, RefusesZeroBytesInsteadOfCuttingTheCodeOff) {
  EXPECT_TRUE(evaluate(String(std::string_view("return 1\0 + 1", 13)), {}).is_error());
  EXPECT_TRUE(evaluate_expr(String(std::string_view("1\0 + 1", 6)), {}).is_error());
  EXPECT_TRUE(resolve(String(std::string_view("json\0.dumps", 11))).is_error());
}

TEST_F(Evaluation, LetsTheNearestVariableWin) {
  const HashMap_Generic globals = map({"a", 1, "b", 1, "c", 1});
  const HashMap_Generic locals = map({"c", 3});
  const HashMap_Generic out_locals = map({"b", 2, "c", 2});
  const EvaluationScope scope(Any("me"), globals, locals, out_locals);
  EXPECT_EQ(run_code("return (a, b, c, self)", scope), "(1, 2, 3, 'me')");
  EXPECT_EQ(text(evaluate_expr("(a, b, c)", EvaluationScope({}, globals, locals, out_locals))), "(1, 1, 3)");
  EXPECT_EQ(text(evaluate_expr("self", scope)), "name 'self' is not defined");
}

TEST_F(Evaluation, TakesTheHostsGlobalVariablesUnlessOthersAreGiven) {
  globals().set(String("host_answer"), Any(42));
  EXPECT_EQ(run_code("return host_answer"), "42");
  EXPECT_EQ(text(evaluate_expr("host_answer", {})), "42");
  EXPECT_EQ(run_code("return host_answer", EvaluationScope({}, map({}), {}, {})), "name 'host_answer' is not defined");
  globals().remove(String("host_answer"));
}

TEST_F(Evaluation, LeavesOutWhatPythonCannotTake) {
  const HashMap_Generic locals = map({"broken", Error("no value"), "fine", 1, 7, "no name"});
  EXPECT_EQ(run_code("return fine", with_locals(locals)), "1");
  EXPECT_EQ(run_code("return broken", with_locals(locals)), "name 'broken' is not defined");
}

TEST_F(Evaluation, GivesOutLocalsBack) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"x += 1",                             "2", nullptr                  },
      {"def f():\n  global x\n  x = 7\nf()", "7", nullptr                  },
      {"def f():\n  x = 7\nf()",             "1", nullptr                  },
      {"x = 5\nraise ValueError('late')",    "1", "late"                   },
      {"del x",                              "1", "name 'x' is not defined"},
  };
  for (const auto& [code, x, error] : rows) {
    const HashMap_Generic out_locals = map({"x", 1});
    const Result<Any> result = evaluate(code, with_out_locals(out_locals));
    EXPECT_EQ(repr(to_python(out_locals.get(String("x")))), x) << code;
    EXPECT_EQ(result.is_error(), error != nullptr) << code;
    if (error != nullptr) {
      EXPECT_NE(text(result).find(error), std::string::npos) << text(result);
    }
  }
}

TEST_F(Evaluation, RefusesOutLocalsThatAreNoVariables) {
  EXPECT_EQ(run_code("pass", with_out_locals(map({"x", Error("no value")}))), "name 'x' is not defined");
  EXPECT_TRUE(evaluate("pass", with_out_locals(map({"no name", 1}))).is_error());
  EXPECT_EQ(run_code("pass", with_out_locals(map({7, 1}))), "The keys of outLocals must be texts, not 7.");
}

TEST_F(Evaluation, CountsAnythingButAScopeAsNone) {
  for (const Any& scope : {Any(), Any(None()), Any(7), Any("scope"), Any(map({"a", 1}))}) {
    EXPECT_EQ(run_code("return self", scope), "None");
    EXPECT_EQ(text(evaluate_expr("1 + 1", scope)), "2");
  }
}

TEST_F(Evaluation, IsTheBodyOfTheLanguagesMethod) {
  EXPECT_EQ(text(language_python_evaluate_method("return self", EvaluationScope(Any("me"), {}, {}, {}))), "'me'");
  EXPECT_EQ(text(language_python_evaluate_method("return self", None())), "None");
}

TEST_F(Evaluation, SeesTheHostsModules) {
  get_module("visible").value().setImportance(Any(9));
  get_module("hidden").value().setImportance(Any(10));
  get_module("visible.tools").value().setInlined();
  const auto shout = make_function("shout", "text", "", [](const String& text) { return String("{}!").arg(text); });
  EXPECT_FALSE(register_function("visible.tools", "shout", shout).is_error());
  EXPECT_EQ(run_code("return shout('hey')"), "'hey!'");
  EXPECT_EQ(text(evaluate_expr("shout('hey')", {})), "'hey!'");
  EXPECT_EQ(run_code("return visible is not None"), "True");
  EXPECT_EQ(run_code("return hidden"), "name 'hidden' is not defined");
  EXPECT_EQ(run_code("return 'visible.tools' in globals()"), "False");
}

TEST_F(Evaluation, OfExpressions) {
  const std::pair<const char*, const char*> rows[] = {
      {" \t1 + 1",     "2"},
      {"(n := 3) + n", "6"},
  };
  for (const auto& [code, result] : rows) {
    EXPECT_EQ(text(evaluate_expr(code, {})), result) << code;
  }
  for (const char* code : {"x = 1", "import os", "1 +", "1\n2"}) {
    const auto error = EvaluationError::cast(evaluate_expr(code, {}));
    ASSERT_TRUE(error) << code;
    EXPECT_TRUE(error->message().contains("SyntaxError")) << code;
  }
}

TEST_F(Evaluation, KeepsResultsThatComeAfterTheRunHarmless) {
  const Result<Any> late = evaluate("import sys\nreturn sys._getframe(1).f_locals['ling_store_result']", {});
  const auto store = I_Callable_Generic::cast(late);
  ASSERT_TRUE(store);
  EXPECT_TRUE(is_none((*store)(1)));
}

TEST_F(Evaluation, KeepsRunsOnDifferentThreadsApart) {
  on_eight_threads([](int i) {
    for (int round = 0; round < 20; ++round) {
      const HashMap_Generic out_locals = map({"x", i});
      const auto result = evaluate("for _ in range(100): x += 1\nreturn x", with_out_locals(out_locals));
      EXPECT_EQ(display_text(result), display_text(Any(i + 100)));
      EXPECT_EQ(display_text(out_locals.get(String("x"))), display_text(Any(i + 100)));
    }
  });
}

TEST_F(Evaluation, NestsAndEndsWhenItNeverEnds) {
  globals().set(String("again"),
                make_function("again", "code", "", [](const String& code) { return evaluate(code, {}); }));
  EXPECT_EQ(run_code("return again('return again(\"return 1\") + 1') + 1"), "3");
  EXPECT_TRUE(evaluate("code = 'return again(code)'\nimport sys\nsys.code = \"import sys\\nreturn again(sys.code)\"\n"
                       "return again(sys.code)",
                       {})
                  .is_error());
  globals().remove(String("again"));
}

TEST_F(Evaluation, LeavesNothingBehind) {
  const char* code = "def f(): return len(x)\nx = x + [1]\nreturn f()";
  const auto once = [&] { return run_code(code, with_out_locals(map({"x", from_python(eval("[0]").get())}))); };
  EXPECT_EQ(once(), "2");
  const long long before = allocated_blocks();
  for (int i = 0; i < 100; ++i) {
    once();
  }
  EXPECT_LE(allocated_blocks(), before + 50);
}

TEST_F(Evaluation, ResolvesDottedNames) {
  const std::pair<const char*, const char*> rows[] = {
      {"os.path",                 "found is __import__('os').path"},
      {"os.",                     "found is __import__('os')"     },
      {"collections.abc.Mapping", "found.__name__ == 'Mapping'"   },
      {"",                        "found is None"                 },
  };
  for (const auto& [name, test] : rows) {
    const Result<Any> found = resolve(name);
    ASSERT_FALSE(found.is_error()) << name << ": " << text(found);
    EXPECT_EQ(text(evaluate_expr(test, with_locals(map({"found", found})))), "True") << name;
  }
  const std::pair<const char*, const char*> failures[] = {
      {"nosuchmodule.x",  "No module named 'nosuchmodule'"              },
      {"os.nosuchobject", "Unable to find the object: os.nosuchobject." },
      {".x",              "Empty module name"                           },
      {"not_a_module.x",  "Unable to get the module dict: not_a_module."},
  };
  static_cast<void>(run("import sys\nsys.modules['not_a_module'] = 7"));
  for (const auto& [name, message] : failures) {
    EXPECT_EQ(text(resolve(name)), message) << name;
    EXPECT_EQ(PyErr_Occurred(), nullptr);
  }
}

}  // namespace
}  // namespace ling::cpython
