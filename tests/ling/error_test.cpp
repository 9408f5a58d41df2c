// Errors: their parts, their classes, where they come from, and how results carry them.
#include "ling/detail/try.h"
#include "ling/testing.h"

#include <stdexcept>

namespace {

using namespace ling::testing;

TEST(Error, PartsAreReadAndWrittenAsProperties) {
  const Error error("broken");
  ASSERT_FALSE(is_error_result(error.setPropertyValue(meta_property_untyped("stack"), "line 1")));
  error.setValue(7);
  const EvaluationError located("bad", std::nullopt, 3, 4, std::nullopt);
  expect_outcomes({
      {property(error,   "stack"),  "line 1"},
      {property(error,   "value"),  "7"     },
      {property(located, "line"),   "3"     },
      {property(located, "column"), "4"     },
      {property(located, "length"), "None"  },
  });
  EXPECT_FALSE(BadArgument::cast(located));
  EXPECT_FALSE(Error::unknown().is_same(Error::unknown())) << "an unknown error is somebody's, not everybody's";
}

Result<Integer> half(std::int64_t number) { return number % 2 != 0 ? Result<Integer>(Error("odd")) : number / 2; }
Result<Integer> quarter(std::int64_t number) {
  const Integer once = TRY(half(number));
  return half(once.value());
}
Result<String> lazily(std::function<Any()> compute) { return make_computed<String>(std::move(compute)); }
Result<Integer> length(Result<String> text) {
  const String forced = TRY(std::move(text));
  return forced.length();
}

TEST(Result, PropagatesErrorsAndForcesLazyValues) {
  Any itself;
  itself = make_computed<Any>([&itself] { return itself; });
  expect_outcomes({
      {quarter(12),                                                         "3"                                           },
      {quarter(6),                                                          "Error: odd"                                  },
      {quarter(3),                                                          "Error: odd"                                  },
      {length("four"),                                                      "4"                                           },
      {length(lazily([] { return Any("five!"); })),                         "5"                                           },
      {length(lazily([] { return Any(5); })),                               "BadArgument: Expected String, got Integer: 5"},
      {length(lazily([]() -> Any { throw std::runtime_error("thrown"); })), "Error: thrown"                               },
      {internal::unwrap(itself),                                            "Error: A computed value needs itself."       },
  });
}

}  // namespace
