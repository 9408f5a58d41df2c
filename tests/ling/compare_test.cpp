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
  EXPECT_EQ(text(equal_objects(a, b)), expected == Equal ? "true" : "false");
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
      {1,                                                          1.0,                                       Equal       },
      {std::uint64_t{1} << 63,                                     two_to_63,                                 Equal       },
      {INT64_MIN,                                                  -two_to_63,                                Equal       },
      {Any(),                                                      None(),                                    Equal       },
      {Tuple_Generic({List_Generic{1}, "a"}),                      Tuple_Generic({List_Generic{1.0}, "a"}),   Equal       },
      {List_Generic({1, List_Generic{2}}),                         List_Generic({1, List_Generic{2}}),        Equal       },
      {make_map({1, "a", "b", 2}),                                 make_map({"b", 2.0, 1.0, "a"}),            Equal       },
      {make_set({1, "a"}),                                         make_set({"a", 1.0}),                      Equal       },
      {Tuple_Generic{make_computed<Any>([] { return Any(5.0); })}, Tuple_Generic{5},                          Equal       },
      {Tuple_Generic{*Date::from(2024, 2, 29)},                    Tuple_Generic{*Date::from(2024, 2, 29)},   Equal       },
      {false,                                                      true,                                      Less        },
      {"\uFFFF",                                                   "\U00010000",                              Less        },
      {ByteArray("\x7f"),                                          ByteArray("\x80"),                         Less        },
      {List_Generic({1, "b"}),                                     List_Generic({2, 0}),                      Less        },
      {1,                                                          "1",                                       Incomparable},
      {1,                                                          true,                                      Incomparable},
      {None(),                                                     Undefined(),                               Incomparable},
      {"ab",                                                       ByteArray("ab"),                           Incomparable},
      {Tuple_Generic{1},                                           List_Generic{1},                           Incomparable},
      {make_map({1, 2}),                                           make_map({1, 2, 3, 4}),                    Incomparable},
      {make_map({1, 2}),                                           make_map({1, 3}),                          Incomparable},
      {make_set({1}),                                              make_set({1, 2}),                          Incomparable},
      {Error("same"),                                              Error("same"),                             Incomparable},
      {Error("an item"),                                           make_computed<Any>([] { return Any(5); }), Incomparable},
      {Integer::getClass(),                                        Float::getClass(),                         Incomparable},
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

// Compared by its amount.
Any coin(std::int64_t amount) {
  return make_actor([amount](const Any& other) { return compare_objects(amount, other); });
}
// Answers every comparison the same.
Any answering(const Any& answer) {
  return make_actor([answer](const Any&) { return answer; });
}

TEST(Compare, AsksInstancesOnEitherSide) {
  expect_order(coin(5), coin(5), Equal);
  expect_order(Tuple_Generic{coin(9)}, Tuple_Generic{7.5}, Greater);
  expect_order(answering(Undefined()), "x", Incomparable);
  expect_order(answering(-1000), answering(Undefined()), Less);
  EXPECT_EQ(compare_objects_value(answering(-1), answering(-1)), Less) << "the left one is asked first";
  const Any broken = answering(Error("worthless"));
  for (const Any& result : values(compare_objects(List_Generic{broken}, List_Generic{1}),
                                  compare_objects(make_map({broken, 1}), make_map({coin(5), 1})),
                                  compare_objects(make_map({1, broken}), make_map({1, 1})),
                                  compare_objects(make_set({broken}), make_set({coin(5)})))) {
    EXPECT_EQ(message(result), "worthless");
  }
  EXPECT_EQ(message(compare_objects(1, answering("nonsense"))),
            "The method '__compare__' of test.containers.Actor returned ling.String instead of an Ordering.");
  EXPECT_EQ(compare_objects_value(1, answering("nonsense")), Incomparable);
}

// In order by its rank alone; equal when the name is the same, too. `kind` says what it answers instead.
struct Card {
  std::int64_t rank = 0;
  std::string name;
  std::string kind;
};
constinit const class_definition<Card> card_class("Card", [](class_builder<Card>& c) {
  c.module("test.compare")
      .parent(I_Immutable::getClass())
      .method(Any::__compare__, "other",
              [](const Card& self, const Any& other) -> Any {
                const Card* card = native_cast<Card>(other);
                return card == nullptr            ? Any(Undefined())
                       : self.kind == "unordered" ? Any(Error("no order"))
                                                  : Any(Ordering::fromSign(self.rank - card->rank));
              })
      .method(Any::__equals__, "other",
              [](const Card& self, const Any& other) -> Any {
                const Card* card = native_cast<Card>(other);
                return self.kind == "error"   ? Any(Error("worn out"))
                       : self.kind == "wrong" ? Any(0)
                       : card == nullptr || self.kind == "unsure"
                           ? Any(Undefined())
                           : Any(self.rank == card->rank && self.name == card->name);
              })
      .method(Any::__hash__, "",
              [](const Card& self) { return self.kind == "unhashable" ? Any(Error("no hash")) : Any(self.rank); });
});
Any card(std::int64_t rank, const char* name, const char* kind = "") {
  return make<object_value_native<Card>>(card_class.required(), Card{rank, name, kind});
}

// Says only what it equals: another one, and texts that are its name.
struct Label {
  std::string name;
};
constinit const class_definition<Label> label_class("Label", [](class_builder<Label>& c) {
  c.module("test.compare")
      .parent(I_Immutable::getClass())
      .method(Any::__equals__, "other", [](const Label& self, const Any& other) -> Any {
        const Label* label = native_cast<Label>(other);
        const auto text = String::cast(other);
        return label != nullptr ? Any(label->name == self.name)
               : text           ? Any(*text == String(self.name))
                                : Any(Undefined());
      });
});
Any label(const char* name) { return make<object_value_native<Label>>(label_class.required(), Label{name}); }

TEST(Equality, IsNotOrder) {
  const Any ace = card(1, "ace"), joker = card(1, "joker"), two = card(2, "two");
  const auto lazy = [](const Any& value) { return make_computed<Any>([value] { return value; }); };
  const std::tuple<Any, Any, bool, ordering_value> rows[] = {
      {ace, card(1, "ace"), true, Equal},
      {ace, joker, false, Equal},
      {lazy(ace), lazy(card(1, "ace")), true, Equal},
      {card(1, "ace", "unordered"), card(1, "ace"), true, Incomparable},
      {card(1, "ace", "unsure"), card(1, "ace", "unsure"), false, Equal},
 // In containers nothing is Equal that is not equal.
      {List_Generic{ace}, List_Generic{card(1, "ace")}, true, Equal},
      {List_Generic{ace}, List_Generic{joker}, false, Incomparable},
      {List_Generic{lazy(ace)}, List_Generic{joker}, false, Incomparable},
      {List_Generic({ace, two}), List_Generic({card(1, "ace"), ace}), false, Greater},
      {make_map({1, ace}), make_map({1, card(1, "ace")}), true, Equal},
      {List_Generic({ace, two}), List_Generic({ace, two, two}), false, Less},
      {make_map({1, ace}), make_map({1, joker}), false, Incomparable},
      {make_map({ace, 1}), make_map({joker, 1}), false, Incomparable},
      {make_set({ace, joker}), make_set({joker, card(1, "ace")}), true, Equal},
 // Without `__compare__` there is equality all the same, whoever is asked first.
      {label("a"), label("a"), true, Equal},
      {"a", label("a"), true, Equal},
      {label("a"), "b", false, Incomparable},
      {label("a"), ace, false, Incomparable},
      {coin(5), 5, true, Equal},
      {label("a"), coin(5), false, Incomparable},
  };
  for (const auto& [a, b, equal, order] : rows) {
    SCOPED_TRACE(text(Tuple_Generic{a, b}));
    EXPECT_EQ(text(equal_objects(a, b)), equal ? "true" : "false");
    EXPECT_EQ(text(equal_objects(b, a)), equal ? "true" : "false");
    EXPECT_EQ(compare_objects_value(a, b), order);
  }
}

TEST(Equality, IsWhatContainersGoBy) {
  const Any ace = card(1, "ace"), joker = card(1, "joker", "unordered"), other_ace = card(1, "ace");
  const List_Generic list{joker, List_Generic{joker}, ace};
  EXPECT_EQ(text(call(list, "indexOf", other_ace)), "2");
  EXPECT_EQ(text(call(list, "contains", card(2, "ace"))), "false");
  EXPECT_EQ(text(call(list, "contains", List_Generic{other_ace})), "false");
  EXPECT_EQ(text(call(list, "removeOne", other_ace)), "true");
  EXPECT_TRUE(list.at(0).is_same(joker) && list.length() == 2);
  const HashMap_Generic map = make_map({joker, "joker", ace, "ace"});
  EXPECT_EQ(text(map.get(other_ace)), "ace");
  EXPECT_TRUE(make_set({label("a")}).contains(label("a"))) << "without a hash of their own";
  EXPECT_FALSE(make_set({-1}).contains(UINT64_MAX)) << "the same bits";
  EXPECT_EQ(map.length(), 2u);
}

TEST(Equality, FailsWithTheErrorOfWhoeverIsAsked) {
  EXPECT_EQ(message(equal_objects(card(1, "", "error"), 1)), "worn out");
  EXPECT_EQ(message(equal_objects(List_Generic{1}, List_Generic{card(1, "", "error")})), "worn out");
  EXPECT_EQ(message(call(List_Generic{card(1, "", "error")}, "contains", 1)), "worn out");
  EXPECT_EQ(message(equal_objects(1, card(1, "", "wrong"))),
            "The method '__equals__' of test.compare.Card returned ling.Integer instead of a Boolean.");
  EXPECT_EQ(message(equal_objects(1, make_computed<Any>([] { return Any(Error("late")); }))), "late");
  const Any unhashable = card(1, "", "unhashable");
  EXPECT_EQ(message(call(make_map({}), "set", unhashable, 1)), "no hash");
  EXPECT_EQ(message(call(make_set({1}), "contains", Tuple_Generic{unhashable})), "no hash");
  EXPECT_EQ(hash_of(unhashable), hash_of(card(2, "", "unhashable"))) << "a hash cannot fail";
}

TEST(Equality, OfMethodsIsThatOfTheirReceivers) {
  const std::vector<I_Callable_Generic> functions = {
      method_builder_base("f", "self", "", {}, true).body([](const Any&) { return 1; }),
      make_function("f", "", "", [] { return 2; })};
  const auto overloaded = [](const char* name, std::vector<I_Callable_Generic> all) {
    return I_Callable_Generic::unchecked(make<object_value_multimethod>(name, std::move(all)));
  };
  const I_Callable_Generic overloads = overloaded("f", functions);
  expect_order(overloads, overloaded("f", functions), Equal);
  expect_order(overloads, overloaded("g", functions), Incomparable);
  expect_order(overloads, overloaded("f", {functions[0]}), Incomparable);
  const I_Callable_Generic plain = make_function("g", "self", "", [](const Any&) { return 1; });
  const Any one = List_Generic{1}, equal_one = List_Generic{1};
  for (const I_Callable_Generic& method : {plain, overloads, plain.bindInstance(1)}) {
    const Any bound = method.bindInstance(one);
    expect_order(bound, method.bindInstance(one), Equal);
    expect_order(bound, method.bindInstance(equal_one), Incomparable);
    expect_order(bound, method, Incomparable);
    EXPECT_EQ(hash_of(bound), hash_of(method.bindInstance(one)));
    EXPECT_NE(hash_of(bound), hash_of(method.bindInstance(equal_one)));
    EXPECT_EQ(text(call(make_set({bound}), "remove", method.bindInstance(one))), "true");
  }
  EXPECT_EQ(text(overloads.bindInstance(one)), "<method f>");
  EXPECT_EQ(text(overloads.bindInstance(one)()), "1");
}

// One of several objects that stand for one thing.
class stand_in final : public object_value_instance {
 public:
  explicit stand_in(const int& thing) : object_value_instance(label_class.required()), thing_(&thing) {}
  std::uintptr_t identity() const noexcept override { return reinterpret_cast<std::uintptr_t>(thing_); }

 private:
  const int* const thing_;
};

TEST(Identity, IsThatOfWhatAnObjectStandsFor) {
  const int things[] = {1, 2};
  const Any one = make<stand_in>(things[0]), again = make<stand_in>(things[0]), other = make<stand_in>(things[1]);
  EXPECT_EQ(object_id(one), object_id(again));
  EXPECT_NE(object_id(one), object_id(other));
  const I_Callable_Generic method = make_function("g", "self", "", [](const Any&) { return 1; });
  expect_order(method.bindInstance(one), method.bindInstance(again), Equal);
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
