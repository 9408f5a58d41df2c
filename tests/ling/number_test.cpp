// Numbers, booleans and the other shared objects: representation, construction by scripts, truth.
#include "ling/testing.h"

#include <limits>

namespace {

using namespace ling::testing;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// Shared objects serve other libraries' static initialisers and exit handlers: this one runs among the first and its
// destructor among the last. No check framework there; a crash is the failure.
struct early_and_late {
  std::vector<Any> values{None(), Undefined(), true, false, String(), "text", 7, 70000, 2.5, Ordering::fromSign(-1)};
  ~early_and_late() { (void)display_text(Tuple_Generic(std::move(values))); }
} const early;

TEST(SharedObjects, AreTheSameEverywhereAndAtAnyTime) {
  EXPECT_EQ(text(Tuple_Generic(early.values)), "(None, Undefined, true, false, \"\", \"text\", 7, 70000, 2.5, Less)");
  EXPECT_TRUE(Any(-128).is_same(Any(-128)));
  EXPECT_TRUE(Any(1023).is_same(Any(std::uint8_t{255} + 768u)));
  EXPECT_FALSE(Any(1024).is_same(Any(1024)));
  EXPECT_TRUE(Any(true).is_same(Boolean(true)));
  EXPECT_EQ(object_id(Any()), object_id(None()));
  EXPECT_EQ(Any(5).get()->reference_count(), 1u);
}

TEST(Integer, HasOneRepresentationPerNumber) {
  EXPECT_TRUE(Integer(std::uint64_t{INT64_MAX}).is_signed());
  EXPECT_FALSE(Integer(std::uint64_t{INT64_MAX} + 1).is_signed());
  EXPECT_TRUE(Integer::matches(Any(UINT64_MAX).get()));
  EXPECT_FALSE(Int64::matches(Any(UINT64_MAX).get()));
  EXPECT_FALSE(Int32::matches(Any(std::int64_t{INT32_MIN} - 1).get()));
}

TEST(Numbers, AreMadeByScripts) {
  const Class_Generic integer = Integer::getClass();
  const Class_Generic real = Float::getClass();
  const Class_Generic bytes = ByteArray::getClass();
  const Class_Generic ordering = Ordering::getClass();
  expect_outcomes({
      {integer("18446744073709551615"), "18446744073709551615"},
      {integer("18446744073709551616"), "Error: The number '18446744073709551616' is out of the range of Integer."},
      {integer("-9223372036854775809"), "Error: The number '-9223372036854775809' is out of the range of Integer."},
      {integer(" +5\n"), "5"},
      {integer("+-5"), "Error: The text '+-5' is not a number for Integer."},
      {integer("12x"), "Error: The text '12x' is not a number for Integer."},
      {real("1e999"), "Error: The number '1e999' is out of the range of Float."},
      {real(UINT64_MAX), "1.8446744073709552e+19"},
      {real(-1), "-1.0"},
      {call(inf, "isInteger"), "false"},
      {construct(String::getClass(), 5), "5"},
      {bytes(List_Generic{0, 255}), "b\"\\x00\\xff\""},
      {bytes(List_Generic{0, 256}),
       "BadArgument: The item 256 at index 1 is not a byte: an Integer from 0 to 255 was expected."},
      {property(ordering, "Greater"), "Greater"},
      {property(Ordering::fromSign(-5), "value"), "-1"},
      {ordering(1), "Error: The class ling.Ordering has no constructor."},
  });
}

Any crate(const Any& length) {
  auto& of_class = *new object_value_class("Crate");
  of_class.add_property_unsafe("__length__", Property::constant(length));
  return of_class.allocate_instance();
}

TEST(Boolean, TellsTheTruthOfAnyValue) {
  // A length that cannot be told is not 0.
  for (const Any& value : values(true, 1, -1, UINT64_MAX, 0.5, inf, nan, "x", ByteArray("x"), Tuple_Generic{None()},
                                 List_Generic{None()}, make_map({"k", 1}), Error("an error is something"),
                                 Integer::getClass(), crate(2), crate(Error("uncounted")))) {
    EXPECT_TRUE(Boolean::from(value).value()) << text(value);
  }
  const Any lazy = make_computed<Integer>([] { return Any(0); });
  for (const Any& value : values(Any(), None(), Undefined(), false, 0, 0.0, -0.0, "", ByteArray(), Tuple_Generic(),
                                 List_Generic(), HashMap_Generic(), HashSet_Generic(), lazy, crate(0))) {
    EXPECT_FALSE(Boolean::from(value).value()) << text(value);
  }
}

}  // namespace
