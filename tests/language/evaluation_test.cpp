// Python source run for the host.
#include "language/evaluation.h"

#include "bridge/python.h"
#include "corvantis/python_language.h"
#include "ling/lazy.h"
#include "ling/testing.h"

namespace ling::cpython {
namespace {

using ling::testing::make_map;

class Evaluation : public PythonTest {
 protected:
  // Code, what it is given for its scope, and the Python text of the result or the message of the error.
  using row = std::tuple<const char*, Any, const char*>;
  static void expect_code(const std::vector<row>& rows) {
    for (const auto& [code, scope, expected] : rows) {
      EXPECT_EQ(text(evaluate(code, scope)), expected) << code;
    }
  }
  static std::string text(const Result<Any>& result) {
    if (result.is_error()) {
      return std::string(result.error().message().view());
    }
    return repr(to_python(result));
  }
  static Any with_out_locals(const Any& variables) { return EvaluationScope({}, {}, {}, variables); }
};

TEST_F(Evaluation, GivesWhatTheCodeReturns) {
  expect_code({
      {"größe = 'ß\\u20ac'\nreturn größe",               {}, "'ß€'"     },
      {"return __import__('sys')._getframe().f_code.co_name", {}, "'ling_outer'"},
  });
  EXPECT_EQ(text(evaluate_expr(" \t(n := 3) + n", {})), "6");
  const auto error = EvaluationError::cast(evaluate_expr("x = 1", {}));
  EXPECT_TRUE(error && error->message().contains("SyntaxError"));
}

TEST_F(Evaluation, PlacesErrorsInTheCallersText) {
  const std::tuple<const char*, std::int64_t, std::int64_t, const char*> rows[] = {
      {"x = 1\nif x:\n  y = = 2",                 3, 7, "SyntaxError"                       },
      {"def f():\n  return 1 // 0\n\nreturn f()", 2, 0, "integer division or modulo by zero"},
      {"return ling_outer()",                     1, 0, "name 'ling_outer' is not defined"  },
      {"\nraise SystemExit(3)",                   2, 0, "3"                                 },
      {"x = '''\n'''\nreturn 1 + \\",             4, 1, "SyntaxError"                       },
  };
  // The declarations of out-locals stand above the code and must not count.
  for (const Any& scope : {Any(), with_out_locals(make_map({"a", 1, "b", 2, "c", 3}))}) {
    for (const auto& [code, line, column, message] : rows) {
      const Result<Any> result = evaluate(code, scope);
      const auto error = EvaluationError::cast(result);
      ASSERT_TRUE(error) << code << ": " << text(result);
      EXPECT_EQ(error->line(), line) << code;
      EXPECT_EQ(error->column().value_or(0), column) << code;
      EXPECT_TRUE(error->message().contains(message)) << code << ": " << text(result);
    }
  }
}

TEST_F(Evaluation, RefusesZeroBytesInsteadOfCuttingTheCodeOff) {
  EXPECT_TRUE(evaluate(String(std::string_view("return 1\0 + 1", 13)), {}).is_error());
  EXPECT_TRUE(evaluate_expr(String(std::string_view("1\0 + 1", 6)), {}).is_error());
  EXPECT_TRUE(resolve(String(std::string_view("json\0.dumps", 11))).is_error());
}

TEST_F(Evaluation, FindsTheNearestVariableThatPythonCanTake) {
  globals().set(String("shared"), Any(42));
  const Any scope =
      EvaluationScope(Any("me"), make_map({"a", 1, "b", 1, "c", 1}), make_map({"c", 3}), make_map({"b", 2, "c", 2}));
  const Any odd = EvaluationScope({}, {}, make_map({"broken", Error("no value"), "fine", 1, 7, "no name"}), {});
  expect_code({
      {"return (a, b, c, self)", scope,                             "(1, 2, 3, 'me')"                            },
      {"return shared, fine",    odd,                               "(42, 1)"                                    },
      {"return broken",          odd,                               "name 'broken' is not defined"               },
      {"pass",                   with_out_locals(make_map({7, 1})), "The keys of outLocals must be texts, not 7."},
  });
  EXPECT_EQ(text(evaluate_expr("(a, b, c)", scope)), "(1, 1, 3)");
  EXPECT_EQ(text(evaluate_expr("self", scope)), "name 'self' is not defined");
  globals().remove(String("shared"));
}

TEST_F(Evaluation, GivesOutLocalsBack) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"x += 1",                             "2", "None"                   },
      {"def f():\n  global x\n  x = 7\nf()", "7", "None"                   },
      {"x = 5\nraise ValueError('late')",    "1", "late"                   },
      {"del x",                              "1", "name 'x' is not defined"},
  };
  for (const auto& [code, x, result] : rows) {
    const HashMap_Generic out_locals = make_map({"x", 1});
    EXPECT_EQ(text(evaluate(code, with_out_locals(out_locals))), result) << code;
    EXPECT_EQ(repr(to_python(out_locals.get(String("x")))), x) << code;
  }
  EXPECT_FALSE(EvaluationError::cast(evaluate("del x", with_out_locals(make_map({"x", 1})))))
      << "no line of the code's";
}

TEST_F(Evaluation, SeesTheHostsModules) {
  get_module("hidden").value().setImportance(Any(10));
  get_module("visible.tools").value().setInlined();
  const auto shout = make_function("shout", "text", "", [](const String& text) { return String("{}!").arg(text); });
  EXPECT_FALSE(register_function("visible.tools", "shout", shout).is_error());
  get_module("hidden").value().setInlined();
  EXPECT_FALSE(register_function("hidden", "whisper", shout).is_error());
  expect_code({
      {"return shout('hey'), visible is None, 'visible.tools' in globals()", {}, "('hey!', False, False)"       },
      {"return whisper",                                                     {}, "name 'whisper' is not defined"},
  });
}

struct changing_number final : object_value_external {
  Any load() override { return Any(number); }
  int number = 10;
};

// The names are kept from run to run, and made anew when one of them may have changed.
TEST_F(Evaluation, SeesModulesAsTheyAreNow) {
  const Module late = get_module("late").value(), inlined = get_module("late.inlined").value();
  const auto answer = [](int number) { return make_function("answer", "", "", [number] { return number; }); };
  const auto sees = [](const char* name, const char* expected) {
    const String asked = String("str({}) if '{}' in globals() else 'nothing'").arg(name, name);
    EXPECT_EQ(text(evaluate_expr(asked, {})), std::string("'") + expected + "'") << name;
  };
  sees("answer()", "nothing");
  sees("late", "<module late>");
  late.setImportance(Any(10));
  sees("late", "nothing");
  const Any computed = make<changing_number>();
  late.setImportance(computed);
  sees("late", "nothing");
  static_cast<changing_number&>(*computed.get()).number = 9;
  sees("late", "<module late>");
  late.setImportance(Any(9));
  inlined.setInlined();
  sees("answer", "nothing");
  inlined.addCallable("answer", answer(1));
  EXPECT_EQ(text(evaluate_expr("answer()", {})), "1");
  inlined.callables().set(String("answer"), answer(2));
  EXPECT_EQ(text(evaluate_expr("answer()", {})), "2");
  inlined.callables().remove(String("answer"));
  sees("answer", "nothing");
  inlined.setInlined(false);
  EXPECT_EQ(text(evaluate("global late\ndel late", {})), "None");
  sees("late", "<module late>");
}

TEST_F(Evaluation, KeepsResultsThatComeAfterTheRunHarmless) {
  const Result<Any> late = evaluate("import sys\nreturn sys._getframe(1).f_locals['ling_store_result']", {});
  EXPECT_TRUE(is_none(I_Callable_Generic::cast(late).value()(1)));
}

TEST_F(Evaluation, EndsWhenItNeverEnds) {
  globals().set(String("again"),
                make_function("again", "code", "", [](const String& code) { return evaluate(code, {}); }));
  EXPECT_TRUE(
      evaluate("import sys\nsys.code = 'import sys\\nreturn again(sys.code)'\nreturn again(sys.code)", {}).is_error());
  globals().remove(String("again"));
}

TEST_F(Evaluation, LeavesNothingBehind) {
  expect_no_leak("evaluation", [] {
    const Any scope = with_out_locals(make_map({"x", from_python(eval("[0]").get())}));
    EXPECT_EQ(text(evaluate("def f(): return len(x)\nx = x + [1]\nreturn f()", scope)), "2");
  });
}

TEST_F(Evaluation, ResolvesDottedNames) {
  const std::pair<const char*, std::string> rows[] = {
      {"os.",                     repr(eval("__import__('os')"))                },
      {"collections.abc.Mapping", "<class 'collections.abc.Mapping'>"           },
      {"nosuchmodule.x",          "No module named 'nosuchmodule'"              },
      {"os.nosuchobject",         "Unable to find the object: os.nosuchobject." },
      {".x",                      "Empty module name"                           },
      {"not_a_module.x",          "Unable to get the module dict: not_a_module."},
  };
  static_cast<void>(run("import sys\nsys.modules['not_a_module'] = 7"));
  for (const auto& [name, expected] : rows) {
    EXPECT_EQ(text(resolve(name)), expected) << name;
    EXPECT_EQ(PyErr_Occurred(), nullptr);
  }
}

// Through the handles that hosts use.
TEST_F(Evaluation, IsWhatTheLanguageDoes) {
  const EvaluationScope scope(Any("me"), {}, make_map({"y", 41}), {});
  EXPECT_EQ(text(CPythonLanguage::evaluateExpression("y + 1", scope)), "42");
  EXPECT_EQ(text(CPythonLanguage::evaluate("return self, y", scope)), "('me', 41)");
  EXPECT_EQ(text(CPythonLanguage::evaluateExpression("python.datetime.date(2020, 2, 29).isoformat()")), "'2020-02-29'");
  const auto language = PythonLanguage::instance();
  EXPECT_TRUE(language->is_same(*PythonLanguage::instance()));
  EXPECT_TRUE(language->is_same(language->propertyValue(members::property::instance)));
  EXPECT_FALSE(PythonLanguage::cast(Any()));
  const auto general = I_Language::cast(*language);
  ASSERT_TRUE(general && PythonLanguage::cast(*general) && general->canEvaluate());
  EXPECT_EQ(text(general->evaluate("return 1", None())), "1");
}

}  // namespace
}  // namespace ling::cpython
