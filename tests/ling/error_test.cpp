// Errors: their parts, their classes, where they come from, and how results carry them.
#include "ling/detail/try.h"
#include "ling/testing.h"

#include <stdexcept>

namespace {

using namespace ling::testing;

TEST(Error, PartsAreReadAndWrittenAsProperties) {
  const Error error("broken");
  ASSERT_FALSE(is_error_result(error.setPropertyValue(meta_property_untyped("stack"), "line 1")));
  error.setValue(make_computed<Any>([] { return Any(7); }));
  const Any located = construct(EvaluationError::getClass(), "bad", None(), 3, 4);
  expect_outcomes({
      {property(error,   "stack"),  "line 1"},
      {property(located, "line"),   "3"     },
      {property(located, "column"), "4"     },
      {property(located, "length"), "None"  },
  });
  EXPECT_TRUE(error.value().is_same(7)) << "a lazy value is forced";
  EXPECT_FALSE(BadArgument::cast(located));
  EXPECT_FALSE(Error::unknown().is_same(Error::unknown())) << "an unknown error is somebody's, not everybody's";
}

TEST(Error, ShowsItsCauseAsAnError) {
  const std::pair<std::exception_ptr, const char*> causes[] = {
      {nullptr,                                               "None"                     },
      {std::make_exception_ptr(BadArgument("the very one")),  "BadArgument: the very one"},
      {std::make_exception_ptr(std::runtime_error("broken")), "Error: broken"            },
      {std::make_exception_ptr(5),                            "Error: Unknown error."    },
  };
  for (const auto& [cause, shown] : causes) {
    const Error error("broken");
    error.setCause(cause);
    EXPECT_EQ(text(property(error, "cause")), shown);
  }
}

TEST(Error, ThatAllShareTakesNothingFromAnybody) {
  const Error shared = Error::outOfMemory();
  shared.setStack("here");
  shared.setValue(List_Generic{1});
  shared.setCause(std::make_exception_ptr(5));
  EXPECT_TRUE(shared.stack().empty() && is_none(shared.value()) && shared.cause() == nullptr);
}

// Who has no way to report these must not go on as if nothing had happened.
TEST(Error, ThatCannotBeToleratedIsThrownByWhomeverCannotReturnIt) {
  Any answer;
  const auto answers =
      method_builder_base("answers", "all...", "", {}, true).body([&](const Variadic&) { return answer; });
  auto& of_class = *new object_value_class("Stopping");
  of_class.add_parent_unsafe(I_Immutable::getClass().object());
  for (const char* name : {"__compare__", "__hash__", "__display__", "__ownProperties__"}) {
    of_class.add_method_unsafe(name, answers);
  }
  for (const char* name : {"__length__", "canEvaluate", "keysType"}) {
    of_class.add_property_unsafe(name, Property(answers, ""));
  }
  const Any value = of_class.allocate_instance();
  const HashMap_Generic map;
  const HashSet_Generic set;
  const std::function<void()> uses[] = {
      [&] { (void)Boolean::from(value); },
      [&] { (void)Boolean::from(make_computed<Any>([&] { return answer; })); },
      [&] { (void)compare_objects_value(value, 1); },
      [&] { (void)hash_of(value); },
      [&] { (void)display_text(value); },
      [&] { (void)own_properties_of(value); },
      [&] { (void)I_Language::unchecked(value).canEvaluate(); },
      [&] { (void)I_Map_Generic::unchecked(value).keysType(); },
      [&] { (void)map.contains(value); },
      [&] { (void)map.get(value); },
      [&] { map.set(value, 1); },
      [&] { (void)map.remove(value); },
      [&] { (void)set.contains(value); },
      [&] { (void)set.remove(value); },
  };
  for (const auto& use : uses) {
    SCOPED_TRACE(&use - uses);
    answer = Error::interruption("stop");
    EXPECT_THROW(use(), Error);
    answer = Error::outOfMemory("exhausted");
    EXPECT_THROW(use(), std::bad_alloc);
  }
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
