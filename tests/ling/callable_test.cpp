// Calls: argument conversion, defaults, names, variadics, overloads, bound methods, exceptions.
#include "ling/testing.h"

#include <stdexcept>

namespace {

using namespace ling::testing;

TEST(Callable, ConvertsArgumentsAndResults) {
  const auto narrow = make_function("narrow", "a", "", [](std::int8_t a) { return int{a}; });
  const auto wide = make_function("wide", "a", "", [](std::uint64_t a) { return a; });
  const auto real = make_function("real", "a", "", [](double a) { return a; });
  const auto maybe =
      make_function("maybe", "a", "", [](std::optional<std::string> a) { return a.value_or("nothing"); });
  const auto list = make_function("list", "a", "", [](std::string_view a) {
    return std::vector<int>{int(a.size()), 2};
  });
  const auto any = make_function("any", "a", "", [](const Any& a) { return a; });
  const auto none = make_function("none", "", "", [] {});
  struct undescribed {};
  const auto unknown = make_function("unknown", "", "", [] { return undescribed(); });
  const auto fails = make_function("fails", "", "", []() -> Result<Integer> { return Error("it failed"); });
  const auto lazy = make_computed<Any>([] { return Any(41); });
  expect_outcomes({
      {narrow(-128),     "-128"                                                                                    },
      {narrow(128),      "BadArgument: Bad call of 'narrow': the argument 'a' must be Integer, not Integer: 128"   },
      {narrow(lazy),     "41"                                                                                      },
      {wide(UINT64_MAX), "18446744073709551615"                                                                    },
      {wide(-1),         "BadArgument: Bad call of 'wide': the argument 'a' must be Integer, not Integer: -1"      },
      {real(-1),         "-1.0"                                                                                    },
      {real("2"),        "BadArgument: Bad call of 'real': the argument 'a' must be Float, not String: 2"          },
      {maybe(None()),    "nothing"                                                                                 },
      {maybe(1),         "BadArgument: Bad call of 'maybe': the argument 'a' must be String | None, not Integer: 1"},
      {list("four"),     "[4, 2]"                                                                                  },
      {none(1),          "BadArgument: Bad call of 'none': expected 0 arguments, got 1."                           },
      {fails(),          "Error: it failed"                                                                        },
  });
  EXPECT_TRUE(message(unknown()).starts_with("No class is described for the C++ type "));
  EXPECT_TRUE(any(lazy).is_same(lazy)) << "an Any parameter gets the lazy value itself";
}

TEST(Callable, ThrownExceptionsBecomeErrors) {
  const auto throws = make_function("throws", "what", "", [](int what) {
    if (what == 0) throw std::runtime_error("broken");
    if (what == 1) throw 5;
    throw Error("the very one");
  });
  EXPECT_EQ(message(throws(0)), "broken");
  for (const int what : {0, 1, 2}) {
    EXPECT_EQ(Error::unchecked(throws(what)).cause() != nullptr, what < 2);
  }
}

TEST(Callable, DefaultsNamesAndVariadics) {
  const auto f = make_function("f", "a, b, c", "", [](int a, int b, int c) { return a * 100 + b * 10 + c; }, {2, 3});
  const auto rest = make_function("rest", "a, more...", "", [](int a, const Variadic& more) {
    return std::vector<std::size_t>{static_cast<std::size_t>(a), more.length()};
  });
  const std::vector<named_argument> named_variadic = {
      {"a",    1},
      {"more", 2}
  };
  const auto named = [&](std::vector<Any> positional, std::vector<named_argument> names) {
    return f.object().call_named(positional, names);
  };
  expect_outcomes({
      {f(1), "123"},
      {f(), "BadArgument: Bad call of 'f': expected 1 to 3 arguments, got 0."},
      {named({}, {{"c", 9}, {"a", 4}}), "429"},
      {named({1}, {{"a", 1}}), "BadArgument: Bad call of 'f': the argument 'a' is given twice."},
      {named({1}, {{"d", 1}}), "BadArgument: Bad call of 'f': no parameter is named 'd'."},
      {named({}, {{"b", 1}}), "BadArgument: Bad call of 'f': the argument 'a' is missing."},
      {f.callWithNamed(make_map({1, 2})), "BadArgument: Bad call of 'f': the name of an argument is not a String: 1."},
      {rest(5, "x", 2.5), "[5, 2]"},
      {rest(1), "[1, 0]"},
      {rest.object().call_named({}, named_variadic), "BadArgument: Bad call of 'rest': no parameter is named 'more'."},
      {rest(), "BadArgument: Bad call of 'rest': expected at least 1 argument, got 0."},
  });
}

TEST(Callable, BoundMethodsPassTheirReceiver) {
  const auto join = make_function(
      "join", "self, a, b", "",
      [](const String& self, const String& a, const String& b) { return String("{}{}{}").arg(self, a, b); }, {"!"});
  const auto bound = join.bindInstance("x");
  const named_argument name = {"b", "?"};
  const Any positional = "y";
  const auto many =
      make_function("many", "self, rest...", "", [](const String&, const Variadic& rest) { return rest.length(); });
  const std::vector<Any> twenty(20, Any(1));  // more than fit beside the receiver
  expect_outcomes({
      {bound("y"), "xy!"},
      {bound.object().call_named({&positional, 1}, {&name, 1}), "xy?"},
      {many.bindInstance("x").callWith(twenty), "20"},
  });
}

TEST(Multimethod, ChoosesTheNearestOverload) {
  const auto overload = [](const char* signature, auto function) {
    return make_function("f", signature, signature, function);
  };
  const auto multimethod = [](std::vector<I_Callable_Generic> overloads) {
    return I_Callable_Generic::unchecked(make<object_value_multimethod>("f", std::move(overloads)));
  };
  const auto f = multimethod({
      overload("a", [](double) { return "float"; }),
      overload("a", [](std::int64_t) { return "integer"; }),
      overload("a", [](const Any&) { return "any"; }),
      overload("a, b", [](int, int) { return "two"; }),
      overload("all...", [](const Variadic&) { return "rest"; }),
  });
  const auto g = multimethod({
      overload("b", [](const String&) { return "one"; }),
      overload("a, b", [](int, const String&) { return "two"; }),
      overload("a", [](const Any&) { return "any"; }),
      overload("a", [](double) { return "float"; }),
  });
  const auto strict =
      multimethod({overload("a", [](bool) { return 1; }), overload("b", [](const String&) { return 2; })});
  const named_argument a = {"a", 1}, b = {"b", "text"};
  const Any one = 1;
  expect_outcomes({
      {f(1), "integer"},
      {f(1.5), "float"},
      {f("x"), "any"},
      {f(1, "x"), "rest"},
      {f(), "rest"},
      {g(1), "float"},
      {g(true), "any"},
      {g.object().call_named({}, {&b, 1}), "one"},
      {g.object().call_named({&one, 1}, {&b, 1}), "two"},
      {g.object().call_named({}, {&a, 1}), "any"},
      {strict.bindInstance(true)(), "1"}, // functions, each of which takes it as its first argument
      {g.doc(), "b\na, b\na\na"},
      {strict(1),
       "BadArgument: No overload of 'f' takes (Integer); there are:\n  (a: Boolean) -> Integer\n  (b: String) -> "
       "Integer"},
  });
}

}  // namespace
