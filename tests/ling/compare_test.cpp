// Order, equality and hashes, which must agree.
#include "ling/testing.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using namespace ling::testing;
using enum ordering_value;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double two_to_53 = 9007199254740992.0;
constexpr double two_to_63 = 9223372036854775808.0;
constexpr double two_to_64 = 18446744073709551616.0;

// What has no order in one direction has none in the other; Less one way is Greater the other way.
void expect_order(const Any& a, const Any& b, ordering_value expected) {
  SCOPED_TRACE(text(Tuple_Generic{a, b}));
  const ordering_value back = expected == Less ? Greater : expected == Greater ? Less : expected;
  EXPECT_EQ(compare_objects_value(a, b), expected);
  EXPECT_EQ(compare_objects_value(b, a), back);
  const auto result = compare_objects(a, b);
  ASSERT_FALSE(result.is_error());
  EXPECT_EQ(result->value(), static_cast<int>(expected));
  if (expected == Equal) {
    EXPECT_EQ(hash_of(Tuple_Generic{a}), hash_of(Tuple_Generic{b}));
  }
}

TEST(Compare, OrdersNumbersOfAllKindsExactly) {
  const auto ascending = values(-inf, -two_to_64, INT64_MIN, -two_to_53 - 2, -9007199254740993, -two_to_53, -1.5, -1, 0,
                                std::numeric_limits<double>::denorm_min(), 1, 1.5, two_to_53, 9007199254740993,
                                two_to_53 + 2, std::nextafter(two_to_63, 0), INT64_MAX, two_to_63,
                                std::uint64_t{INT64_MAX} + 2, UINT64_MAX, two_to_64, inf);
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    for (std::size_t j = i + 1; j < ascending.size(); ++j) {
      expect_order(ascending[i], ascending[j], Less);
    }
    expect_order(ascending[i], nan, Incomparable);
  }
}

TEST(Compare, FollowsContent) {
  const std::tuple<Any, Any, ordering_value> pairs[] = {
      {1,                                             1.0,                                     Equal       },
      {0,                                             -0.0,                                    Equal       },
      {std::uint64_t{1} << 63,                        two_to_63,                               Equal       },
      {INT64_MIN,                                     -two_to_63,                              Equal       },
      {Any(),                                         None(),                                  Equal       },
      {Tuple_Generic({List_Generic{1}, "a"}),         Tuple_Generic({List_Generic{1.0}, "a"}), Equal       },
      {List_Generic({1, List_Generic{2}}),            List_Generic({1, List_Generic{2}}),      Equal       },
      {make_map({1, "a", "b", 2}),                    make_map({"b", 2.0, 1.0, "a"}),          Equal       },
      {make_set({1, "a"}),                            make_set({"a", 1.0}),                    Equal       },
      {make_computed<Integer>([] { return Any(5); }), 5,                                       Equal       },
      {false,                                         true,                                    Less        },
      {"",                                            "a",                                     Less        },
      {"\uFFFF",                                      "\U00010000",                            Less        },
      {ByteArray("\x7f"),                             ByteArray("\x80"),                       Less        },
      {List_Generic({1, "b"}),                        List_Generic({2, 0}),                    Less        },
      {1,                                             "1",                                     Incomparable},
      {1,                                             true,                                    Incomparable},
      {None(),                                        Undefined(),                             Incomparable},
      {None(),                                        false,                                   Incomparable},
      {"ab",                                          ByteArray("ab"),                         Incomparable},
      {Tuple_Generic{1},                              List_Generic{1},                         Incomparable},
      {Tuple_Generic{1},                              Tuple_Generic{"1"},                      Incomparable},
      {make_map({1, 2}),                              make_map({1, 3}),                        Incomparable},
      {make_set({1}),                                 make_set({2}),                           Incomparable},
      {Error("same"),                                 Error("same"),                           Incomparable},
      {Integer::getClass(),                           Float::getClass(),                       Incomparable},
  };
  for (const auto& [a, b, expected] : pairs) {
    expect_order(a, b, expected);
  }
  const Any number = nan;
  EXPECT_EQ(compare_objects_value(number, number), Incomparable);
}

TEST(Hash, SpreadsAndEnds) {
  EXPECT_NE(hash_of("1"), hash_of(1));
  EXPECT_NE(hash_of(Tuple_Generic({1, 2})), hash_of(Tuple_Generic({2, 1})));
  std::vector<int> buckets(64);
  for (int i = 0; i < 1024; ++i) {
    ++buckets[hash_of(i * 64) % buckets.size()];
  }
  EXPECT_LT(*std::max_element(buckets.begin(), buckets.end()), 40) << "16 each would be even";
  // Tuples that hold the one below twice: as many paths as there are atoms in the world.
  Any value = 1;
  for (int i = 0; i < 200; ++i) {
    value = Tuple_Generic{value, value};
  }
  EXPECT_EQ(hash_of(value), hash_of(value));
}

// Compared by its amount; `kind` says how it answers.
struct Coin {
  std::int64_t amount = 0;
  std::string kind;
};
constinit const class_definition<Coin> coin_class("Coin", [](class_builder<Coin>& c) {
  c.module("test.compare")
      .method(Any::__compare__, "other",
              [](const Coin& self, const Any& other) -> Any {
                const Coin* coin = native_cast<Coin>(other);
                return self.kind == "sign"    ? Any(std::int64_t{-1000})
                       : self.kind == "none"  ? Any(Undefined())
                       : self.kind == "error" ? Any(Error("worthless"))
                       : self.kind == "wrong" ? Any("nonsense")
                                              : compare_objects(self.amount, coin ? Any(coin->amount) : other);
              })
      .method(Any::__hash__, "", [](const Coin& self) { return self.amount; });
});
Any coin(std::int64_t amount, const char* kind = "ordering") {
  return make<object_value_native<Coin>>(coin_class.required(), Coin{amount, kind});
}

TEST(Compare, AsksInstancesOnEitherSide) {
  expect_order(coin(5), coin(5), Equal);
  expect_order(coin(5), 7.5, Less);
  expect_order(Tuple_Generic{coin(9)}, Tuple_Generic{7}, Greater);
  expect_order(coin(5, "none"), "x", Incomparable);
  EXPECT_EQ(compare_objects_value(coin(5, "none"), coin(5)), Equal) << "the right one knows";
  EXPECT_EQ(compare_objects_value(coin(5, "sign"), coin(5)), Less);
  EXPECT_EQ(message(compare_objects(List_Generic{coin(5, "error")}, List_Generic{1})), "worthless");
  EXPECT_EQ(message(compare_objects(1, coin(5, "wrong"))),
            "The method '__compare__' of test.compare.Coin returned ling.String instead of an Ordering.");
  EXPECT_EQ(compare_objects_value(1, coin(5, "wrong")), Incomparable);
}

// A chain that compares link by link, as deep as the data goes.
struct Link {
  Any next;
};
constinit const class_definition<Link> link_class("Link", [](class_builder<Link>& c) {
  c.module("test.compare").constructor("next", "", [](const Any& next) { return Link{next}; });
  c.method(Any::__compare__, "other",
           [](const Link& self, const Link& other) { return compare_objects(self.next, other.next); });
  c.method(Any::__hash__, "", [](const Link& self) { return hash_of(self.next); });
  c.method(Any::__display__, "", [](const Link& self) { return display(self.next); });
});

TEST(Compare, BoundsRecursionThroughDataAndMetaMethods) {
  const Class_Generic link(link_class.required());
  Any links[] = {link(1), link(1)};
  Any tuples[] = {1, 1};
  for (int i = 0; i < 100000; ++i) {
    for (const int side : {0, 1}) {
      links[side] = link(links[side]);
      tuples[side] = Tuple_Generic{tuples[side]};
    }
  }
  EXPECT_TRUE(compare_objects(links[0], links[1]).is_error());
  EXPECT_EQ(hash_of(links[0]), hash_of(links[1]));
  EXPECT_EQ(display(links[0]).value(), "<test.compare.Link>");
  EXPECT_EQ(message(compare_objects(tuples[0], tuples[1])), "[compare_objects] The values are nested too deeply.");
  EXPECT_EQ(hash_of(tuples[0]), hash_of(tuples[1]));

  const List_Generic left;
  const List_Generic right;
  left.append(left);
  right.append(right);
  EXPECT_TRUE(compare_objects(left, right).is_error());
  EXPECT_EQ(compare_objects_value(left, left), Equal);
  left.object().clear();
  right.object().clear();
}

}  // namespace
