// Order, equality and hashes, which must agree.
#include "ling/ling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using namespace ling;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double two_to_53 = 9007199254740992.0;
constexpr double two_to_63 = 9223372036854775808.0;
constexpr double two_to_64 = 18446744073709551616.0;

Any nested_tuple(int depth) {
  Any value = 1;
  for (int i = 0; i < depth; ++i) {
    value = Tuple_Generic{value};
  }
  return value;
}

HashMap_Generic map_of(std::initializer_list<std::pair<Any, Any>> pairs) {
  HashMap_Generic map;
  for (const auto& [key, value] : pairs) {
    map.set(key, value);
  }
  return map;
}

HashSet_Generic set_of(std::initializer_list<Any> items) {
  HashSet_Generic set;
  for (const Any& item : items) {
    EXPECT_FALSE(is_error_result(set.insert(item)));
  }
  return set;
}

// What has no order in one direction has none in the other; Less one way is Greater the other way.
void expect_order(const Any& a, const Any& b, ordering_value expected) {
  const auto what = [&] { return std::string(String("{} ? {}").arg(a, b).view()); };
  const ordering_value back = expected == ordering_value::Less      ? ordering_value::Greater
                              : expected == ordering_value::Greater ? ordering_value::Less
                                                                    : expected;
  EXPECT_EQ(compare_objects_value(a, b), expected) << what();
  EXPECT_EQ(compare_objects_value(b, a), back) << what();
  const auto result = compare_objects(a, b);
  ASSERT_FALSE(result.is_error()) << what();
  EXPECT_EQ(result->value(), static_cast<int>(expected)) << what();
  if (expected == ordering_value::Equal) {
    EXPECT_EQ(hash_of(Tuple_Generic{a}), hash_of(Tuple_Generic{b})) << what();
  }
}

TEST(Compare, OrdersNumbersOfAllKindsExactly) {
  // Strictly ascending.
  const Any numbers[] = {-inf,
                         -two_to_64,
                         INT64_MIN,
                         -two_to_53 - 2,
                         -9007199254740993,
                         -two_to_53,
                         -1.5,
                         -1,
                         0,
                         std::numeric_limits<double>::denorm_min(),
                         1,
                         1.5,
                         two_to_53,
                         9007199254740993,
                         two_to_53 + 2,
                         std::nextafter(two_to_63, 0),
                         INT64_MAX,
                         two_to_63,
                         std::uint64_t{INT64_MAX} + 2,
                         UINT64_MAX,
                         two_to_64,
                         inf};
  for (std::size_t i = 0; i < std::size(numbers); ++i) {
    for (std::size_t j = i + 1; j < std::size(numbers); ++j) {
      expect_order(numbers[i], numbers[j], ordering_value::Less);
    }
    expect_order(numbers[i], nan, ordering_value::Incomparable);
  }
}

TEST(Compare, FindsEqualValuesOfOneHash) {
  const std::pair<Any, Any> pairs[] = {
      {1,                                             1.0                               },
      {0,                                             -0.0                              },
      {70000,                                         70000                             },
      {std::uint64_t{1} << 63,                        two_to_63                         },
      {INT64_MIN,                                     -two_to_63                        },
      {9007199254740992,                              two_to_53                         },
      {Any(),                                         None()                            },
      {"text",                                        String("text")                    },
      {ByteArray("ab"),                               ByteArray("ab")                   },
      {Tuple_Generic({1, "a"}),                       Tuple_Generic({1.0, "a"})         },
      {Tuple_Generic({List_Generic{1}}),              Tuple_Generic({List_Generic{1.0}})},
      {List_Generic({1, List_Generic{2}}),            List_Generic({1, List_Generic{2}})},
      {map_of({{1, "a"}, {"b", 2}}),                  map_of({{"b", 2.0}, {1.0, "a"}})  },
      {set_of({1, "a"}),                              set_of({"a", 1.0})                },
      {make_computed<Integer>([] { return Any(5); }), 5                                 },
  };
  for (const auto& [a, b] : pairs) {
    expect_order(a, b, ordering_value::Equal);
  }
}

TEST(Compare, OrdersTextsAndRowsItemByItem) {
  const std::pair<Any, Any> pairs[] = {
      {false,                  true                 },
      {"",                     "a"                  },
      {"Z",                    "a"                  },
      {"z",                    "é"                 },
      {"\uFFFF",               "\U00010000"         },
      {ByteArray("\x7f"),      ByteArray("\x80")    },
      {Tuple_Generic(),        Tuple_Generic{0}     },
      {Tuple_Generic({1, 2}),  Tuple_Generic({1, 3})},
      {List_Generic({1, "b"}), List_Generic({2, 0}) },
  };
  for (const auto& [less, greater] : pairs) {
    expect_order(less, greater, ordering_value::Less);
  }
}

TEST(Compare, GivesNoOrderToValuesThatHaveNone) {
  const std::pair<Any, Any> pairs[] = {
      {1,                   "1"               },
      {1,                   true              },
      {None(),              Undefined()       },
      {None(),              false             },
      {"ab",                ByteArray("ab")   },
      {Tuple_Generic{1},    List_Generic{1}   },
      {Tuple_Generic{1},    Tuple_Generic{"1"}},
      {map_of({{1, 2}}),    map_of({{1, 3}})  },
      {map_of({{1, 2}}),    map_of({})        },
      {set_of({1}),         set_of({2})       },
      {Error("same"),       Error("same")     },
      {Integer::getClass(), Float::getClass() },
      {nan,                 nan               },
  };
  for (const auto& [a, b] : pairs) {
    expect_order(a, b, ordering_value::Incomparable);
  }
  const Any number = nan;
  EXPECT_EQ(compare_objects_value(number, number), ordering_value::Incomparable);
  EXPECT_NE(hash_of("1"), hash_of(1));
  EXPECT_NE(hash_of(Tuple_Generic({1, 2})), hash_of(Tuple_Generic({2, 1})));
}

TEST(Compare, EndsDeepNestingWithAnError) {
  const Any a = nested_tuple(100000);
  const Any b = nested_tuple(100000);
  const auto result = compare_objects(a, b);
  ASSERT_TRUE(result.is_error());
  EXPECT_EQ(result.error().message(), "[compare_objects] The values are nested too deeply.");
  EXPECT_EQ(hash_of(a), hash_of(b));
  List_Generic left;
  left.append(left);
  List_Generic right;
  right.append(right);
  EXPECT_TRUE(compare_objects(left, right).is_error());
  EXPECT_EQ(compare_objects_value(left, left), ordering_value::Equal);
  left.object().clear();
  right.object().clear();
}

// Tuples that hold the one below twice: as many paths as there are atoms in the world.
TEST(Hash, DoesNotWalkSharedItemsWithoutEnd) {
  Any value = 1;
  for (int i = 0; i < 200; ++i) {
    value = Tuple_Generic{value, value};
  }
  EXPECT_EQ(hash_of(value), hash_of(value));
}

TEST(Hash, SpreadsSmallIntegersOverSmallTables) {
  std::vector<int> buckets(64);
  for (int i = 0; i < 1024; ++i) {
    ++buckets[hash_of(i * 64) % buckets.size()];
  }
  EXPECT_LT(*std::max_element(buckets.begin(), buckets.end()), 40) << "16 each would be even";
}

// Compared by its amount; `kind` says how it answers.
struct Coin {
  std::int64_t amount = 0;
  std::string kind;
};
constinit const class_definition<Coin> coin_class("Coin", [](class_builder<Coin>& c) {
  c.module("test.compare")
      .constructor("amount, kind", "",
                   [](std::int64_t amount, const std::string& kind) {
                     return Coin{amount, kind};
                   },
                   {"ordering"})
      .method(Any::__compare__, "other",
              [](const Coin& self, const Any& other) -> Any {
                const Coin* coin = native_cast<Coin>(other);
                const Any amount = coin != nullptr ? Any(coin->amount) : other;
                if (self.kind == "ordering") {
                  return compare_objects(self.amount, amount);
                }
                return self.kind == "sign"    ? Any(std::int64_t{-1000})
                       : self.kind == "none"  ? Any(Undefined())
                       : self.kind == "error" ? Any(Error("worthless"))
                                              : Any("nonsense");
              })
      .method(Any::__hash__, "", [](const Coin& self) { return self.amount; });
});

TEST(Compare, AsksInstancesOnEitherSide) {
  const Class_Generic coin(coin_class.required());
  expect_order(coin(5), coin(5), ordering_value::Equal);
  expect_order(coin(5), 7.5, ordering_value::Less);
  expect_order(Tuple_Generic{coin(9)}, Tuple_Generic{7}, ordering_value::Greater);
  expect_order(coin(5, "none"), "x", ordering_value::Incomparable);
  EXPECT_EQ(compare_objects_value(coin(5, "none"), coin(5)), ordering_value::Equal) << "the right one knows";
  EXPECT_EQ(compare_objects_value(coin(5, "sign"), coin(5)), ordering_value::Less);
  EXPECT_EQ(compare_objects(List_Generic{coin(5, "error")}, List_Generic{1}).error().message(), "worthless");
  EXPECT_EQ(compare_objects(1, coin(5, "wrong")).error().message(),
            "The method '__compare__' of test.compare.Coin returned ling.String instead of an Ordering.");
  EXPECT_EQ(compare_objects_value(1, coin(5, "wrong")), ordering_value::Incomparable);
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

TEST(Compare, BoundsRecursionThroughMetaMethods) {
  const Class_Generic link(link_class.required());
  Any a = link(1);
  Any b = link(1);
  EXPECT_EQ(hash_of(a), hash_of(b));
  for (int i = 0; i < 100000; ++i) {
    a = link(a);
    b = link(b);
  }
  EXPECT_TRUE(compare_objects(a, b).is_error());
  EXPECT_EQ(hash_of(a), hash_of(b));
  EXPECT_EQ(display(a).value(), "<test.compare.Link>");
}

}  // namespace
