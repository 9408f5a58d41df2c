// Errors: their parts, their classes, where they come from, and how results carry them.
#include "ling/detail/try.h"
#include "ling/ling.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace ling;

constinit const class_definition<Error> stock_error("StockError", [](class_builder<Error>& c) {
  c.module("test.errors").parent(Error::getClass());
});

String get(const Any& value, const char* property) {
  return display_text(value.propertyValue(meta_property_untyped(property)));
}

TEST(Error, PartsAreReadAndWrittenAsProperties) {
  const Error error("broken");
  EXPECT_EQ(get(error, "message"), "broken");
  EXPECT_EQ(get(error, "cause"), "None");
  ASSERT_FALSE(is_error_result(error.setPropertyValue(meta_property_untyped("stack"), "line 1")));
  error.setValue(7);
  EXPECT_EQ(get(error, "stack"), "line 1");
  EXPECT_EQ(get(error, "value"), "7");
  const EvaluationError located("bad", std::nullopt, 3, 4, std::nullopt);
  const struct {
    const char* property;
    const char* value;
  } cases[] = {
      {"message", "bad" },
      {"offset",  "None"},
      {"line",    "3"   },
      {"column",  "4"   },
      {"length",  "None"}
  };
  for (const auto& each : cases) {
    EXPECT_EQ(get(located, each.property), each.value) << each.property;
  }
  EXPECT_FALSE(Error::unknown().is_same(Error::unknown())) << "an unknown error is somebody's, not everybody's";
}

TEST(Error, DescendantsAreErrorsOfTheirClass) {
  const Class_Generic of_class(stock_error.required());
  const Any error = of_class("none left");
  EXPECT_TRUE(is_error_result(error));
  EXPECT_EQ(class_of(error), of_class);
  EXPECT_EQ(Error::unchecked(error).message(), "none left");
  EXPECT_FALSE(BadArgument::cast(error));
  EXPECT_TRUE(StopIteration::cast(StopIteration()));
  EXPECT_TRUE(BadArgument::cast(BadArgument("x")));
  EXPECT_TRUE(EvaluationError::cast(EvaluationError::getClass()("m", 1, 2)));
}

Result<Integer> half(std::int64_t number) {
  if (number % 2 != 0) {
    return Error("odd");
  }
  return number / 2;
}
Result<Integer> quarter(std::int64_t number) {
  const Integer once = TRY(half(number));
  const Integer twice = TRY(half(once.value()));
  return twice;
}
Result<String> lazily(std::function<Any()> compute) { return make_computed<String>(std::move(compute)); }
Result<Integer> length(Result<String> text) {
  const String forced = TRY(std::move(text));
  return forced.length();
}

TEST(Result, PropagatesErrorsAndForcesLazyValues) {
  EXPECT_EQ(quarter(12).value().value(), 3);
  EXPECT_EQ(quarter(6).error().message(), "odd");
  EXPECT_EQ(length("four").value().value(), 4);
  EXPECT_EQ(length(lazily([] { return Any("five!"); })).value().value(), 5);
  EXPECT_EQ(length(lazily([] { return Any(5); })).error().message(), "Expected String, got Integer: 5");
  EXPECT_EQ(length(lazily([]() -> Any { throw std::runtime_error("thrown"); })).error().message(), "thrown");
  Any itself;
  itself = make_computed<Any>([&itself] { return itself; });
  EXPECT_TRUE(is_error_result(internal::unwrap(itself))) << "a value that yields itself ends in an error";
}

}  // namespace
