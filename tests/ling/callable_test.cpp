// Calls: argument conversion, defaults, names, variadics, overloads, bound methods, exceptions.
#include "ling/ling.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace ling;

struct outcome_case {
  Any outcome;
  const char* expected;  // display text, or the message of the error
};

void expect(std::initializer_list<outcome_case> cases) {
  for (const outcome_case& each : cases) {
    const String text =
        is_error_result(each.outcome) ? Error::unchecked(each.outcome).message() : display_text(each.outcome);
    EXPECT_EQ(text.view(), each.expected);
  }
}

TEST(Callable, ConvertsArgumentsAndResults) {
  const auto narrow = make_function("narrow", "a", "", [](std::int8_t a) { return int{a}; });
  const auto wide = make_function("wide", "a", "", [](std::uint64_t a) { return a; });
  const auto real = make_function("real", "a", "", [](double a) { return a; });
  const auto maybe =
      make_function("maybe", "a", "", [](std::optional<std::string> a) { return a.value_or("nothing"); });
  const auto flag = make_function("flag", "a", "", [](bool a) { return !a; });
  const auto list = make_function("list", "a", "", [](std::string_view a) {
    return std::vector<int>{int(a.size()), 2};
  });
  const auto any = make_function("any", "a", "", [](const Any& a) { return a; });
  const auto none = make_function("none", "", "", [] {});
  const auto fails = make_function("fails", "", "", []() -> Result<Integer> { return Error("it failed"); });
  const auto lazy = make_computed<Any>([] { return Any(41); });
  expect({
      {narrow(-128),     "-128"                                                                       },
      {narrow(128),      "Bad call of 'narrow': the argument 'a' must be Integer, not Integer: 128"   },
      {narrow(true),     "Bad call of 'narrow': the argument 'a' must be Integer, not Boolean: true"  },
      {narrow(lazy),     "41"                                                                         },
      {wide(UINT64_MAX), "18446744073709551615"                                                       },
      {wide(-1),         "Bad call of 'wide': the argument 'a' must be Integer, not Integer: -1"      },
      {real(2),          "2.0"                                                                        },
      {real("2"),        "Bad call of 'real': the argument 'a' must be Float, not String: 2"          },
      {maybe(None()),    "nothing"                                                                    },
      {maybe("text"),    "text"                                                                       },
      {maybe(1),         "Bad call of 'maybe': the argument 'a' must be String | None, not Integer: 1"},
      {flag(false),      "true"                                                                       },
      {list("four"),     "[4, 2]"                                                                     },
      {none(),           "None"                                                                       },
      {fails(),          "it failed"                                                                  },
      {none(1),          "Bad call of 'none': expected 0 arguments, got 1."                           },
  });
  EXPECT_TRUE(any(lazy).is_same(lazy)) << "an Any parameter gets the lazy value itself";
}

TEST(Callable, ThrownExceptionsBecomeErrors) {
  const auto throws = make_function("throws", "what", "", [](int what) {
    switch (what) {
      case 0:
        throw std::runtime_error("broken");
      case 1:
        throw 5;
      default:
        throw Error("the very one");
    }
  });
  const auto error = Error::unchecked(throws(0));
  EXPECT_EQ(error.message(), "broken");
  EXPECT_TRUE(error.cause());
  EXPECT_TRUE(Error::unchecked(throws(1)).cause());
  EXPECT_FALSE(Error::unchecked(throws(2)).cause());
}

TEST(Callable, DefaultsNamesAndVariadics) {
  const auto f = make_function("f", "a, b, c", "", [](int a, int b, int c) { return a * 100 + b * 10 + c; }, {2, 3});
  const auto rest = make_function("rest", "a, more...", "", [](int a, const Variadic& more) {
    return std::vector<std::size_t>{static_cast<std::size_t>(a), more.length()};
  });
  const auto named = [&](std::vector<Any> positional, std::vector<named_argument> names) {
    return f.object().call_named(positional, names);
  };
  expect({
      {f(1), "123"},
      {f(1, 9), "193"},
      {f(), "Bad call of 'f': expected 1 to 3 arguments, got 0."},
      {named({1}, {{"c", 9}}), "129"},
      {named({}, {{"c", 9}, {"a", 4}}), "429"},
      {named({1}, {{"a", 1}}), "Bad call of 'f': the argument 'a' is given twice."},
      {named({1}, {{"d", 1}}), "Bad call of 'f': no parameter is named 'd'."},
      {named({}, {{"b", 1}}), "Bad call of 'f': the argument 'a' is missing."},
      {rest(5), "[5, 0]"},
      {rest(5, "x", 2.5), "[5, 2]"},
      {rest(), "Bad call of 'rest': expected at least 1 argument, got 0."},
  });
  HashMap_Generic wrong;
  wrong.set(1, 2);
  EXPECT_EQ(Error::unchecked(f.callWithNamed(wrong)).message(),
            "Bad call of 'f': the name of an argument is not a String: 1.");
  EXPECT_EQ(f.signature().value().toString(), "(a: Integer, b: Integer = 2, c: Integer = 3) -> Integer");
  EXPECT_EQ(rest.signature().value().toString(), "(a: Integer, more...) -> List");
  const auto wrong_text = make_function("wrong", "a, b", "", [](int a) { return a; });
  EXPECT_TRUE(wrong_text.signature().is_error());
}

TEST(Callable, BoundMethodsPassTheirReceiver) {
  const auto join = make_function(
      "join", "self, a, b", "",
      [](const String& self, const String& a, const String& b) { return String("{}{}{}").arg(self, a, b); }, {"!"});
  const auto bound = join.bindInstance("x");
  EXPECT_EQ(display_text(bound("y")), "xy!");
  EXPECT_EQ(bound.signature().value().toString(), "(a: String, b: String = \"!\") -> String");
  const named_argument name[] = {
      {"b", "?"}
  };
  const Any positional[] = {"y"};
  EXPECT_EQ(display_text(bound.object().call_named(positional, name)), "xy?");
  const auto many =
      make_function("many", "self, rest...", "", [](const String&, const Variadic& rest) { return rest.length(); });
  const std::vector<Any> twenty(20, Any(1));
  EXPECT_EQ(display_text(many.bindInstance("x").callWith(twenty)), "20")
      << "more arguments than fit beside the receiver";
}

TEST(Multimethod, ChoosesTheNearestOverload) {
  const auto overload = [](auto function, const char* signature) {
    return make_function("f", signature, "", function);
  };
  const auto f = I_Callable_Generic::unchecked(make<object_value_multimethod>(
      "f",
      std::vector{overload([](double) { return "float"; }, "a"), overload([](std::int64_t) { return "integer"; }, "a"),
                  overload([](const Any&) { return "any"; }, "a"), overload([](int, int) { return "two"; }, "a, b"),
                  overload([](const Variadic&) { return "rest"; }, "all...")}));
  expect({
      {f(1), "integer"},
      {f(1.5), "float"},
      {f("x"), "any"},
      {f(1, 2), "two"},
      {f(1, "x"), "rest"},
      {f(), "rest"}
  });
  const auto strict = I_Callable_Generic::unchecked(make<object_value_multimethod>(
      "strict", std::vector{overload([](bool) { return 1; }, "a"), overload([](const String&) { return 2; }, "b")}));
  expect({
      {strict(1),
       "No overload of 'strict' takes (Integer); there are:\n  (a: Boolean) -> Integer\n  (b: String) -> Integer"}
  });
  const named_argument name[] = {
      {"b", "text"}
  };
  EXPECT_EQ(display_text(strict.object().call_named({}, name)), "2");
}

}  // namespace
