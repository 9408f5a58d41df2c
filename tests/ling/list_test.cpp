// Lists, mostly through the methods that scripts call.
#include "ling/testing.h"

namespace {

using namespace ling;
using namespace ling::testing;

TEST(List, ChangesAndKeepsItsItemsWhenTheIndexIsWrong) {
  const method_row rows[] = {
      {"at", {-1}, "30"},
      {"at", {3}, "BadArgument: Index out of range: 3, length: 3."},
      {"at", {INT64_MIN}, "BadArgument: Index out of range: -9223372036854775808, length: 3."},
      {"atOr", {-4, "none"}, "none"},
      {"set", {-1, 1}, "None", "[10, 20, 1]"},
      {"set", {-4, 1}, "BadArgument: Index out of range: -4, length: 3."},
      {"append", {"a"}, "None", "[10, 20, 30, \"a\"]"},
      {"appendAt", {-1, 1}, "None", "[10, 20, 1, 30]"},
      {"appendAt", {INT64_MAX, 1}, "None", "[10, 20, 30, 1]"},
      {"appendAt", {INT64_MIN, 1}, "None", "[1, 10, 20, 30]"},
      {"extend", {Tuple_Generic{1, 2}}, "None", "[10, 20, 30, 1, 2]"},
      {"extend", {5}, "BadArgument: Not an iterable: 5 (Integer)."},
      {"removeAt", {1}, "None", "[10, 30]"},
      {"removeAt", {-2, 2}, "None", "[10]"},
      {"removeAt", {1, INT64_MAX}, "BadArgument: Index out of range: 3, length: 3."},
      {"removeAt", {9, 0}, "None"},
      {"removeOne", {20.0}, "true", "[10, 30]"},
      {"removeOne", {7}, "false"},
      {"pop", {}, "30", "[10, 20]"},
      {"pop", {0}, "10", "[20, 30]"},
      {"pop", {5}, "BadArgument: Index out of range: 5, length: 3."},
      {"clear", {}, "None", "[]"},
      {"reverse", {}, "None", "[30, 20, 10]"},
      {"indexOf", {10, 1}, "-1"},
      {"indexOf", {30, -1}, "2"},
      {"contains", {"10"}, "false"},
      {"sliced", {-2}, "[20, 30]"},
      {"sliced", {1, -1}, "[20]"},
      {"sliced", {2, 1}, "[]"},
      {"concat", {HashSet_Generic()}, "[10, 20, 30]"},
      {"repeat", {2}, "[10, 20, 30, 10, 20, 30]"},
      {"repeat", {-1}, "[]"},
      {"repeat", {INT64_MAX}, "Error: 3 items repeated 9223372036854775807 times are too many."},
      {"__imul__", {0}, "[]", "[]"},
      {"__iadd__", {Tuple_Generic{1}}, "[10, 20, 30, 1]", "[10, 20, 30, 1]"},
      {"toList", {}, "[10, 20, 30]"},
  };
  expect_methods([] { return List_Generic{10, 20, 30}; }, rows);
  EXPECT_EQ(text(call(List_Generic(), "repeat", INT64_MAX)), "[]");
  const List_Generic list{1, 2};
  EXPECT_FALSE(is_error_result(call(list, "extend", list)));
  EXPECT_EQ(text(list), "[1, 2, 1, 2]");
}

TEST(List, IteratesOverTheItemsOfTheMoment) {
  const List_Generic list{1, 2};
  const Any iterator = call(list, "iter");
  list.append(3);
  EXPECT_EQ(text(call(iterator, "next")), "1");
  EXPECT_EQ(text(construct(List_Generic::getClass(), iterator)), "[2]") << "what the iterator has left";
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(StopIteration::matches(call(iterator, "next").get()));
  }
}

TEST(List, RefusesWhatIsNotOfItsType) {
  const List<Integer> list{1, 2};
  const std::string refused = "BadArgument: The item is not of the type Integer: a (String).";
  const List_Generic wrong{3, "a"};
  for (const Any& result :
       {call(list, "append", "a"), call(list, "appendAt", 0, "a"), call(list, "set", 0, "a"),
        call(list, "extend", wrong), call(list, "__iadd__", wrong), construct(List<Integer>::getClass(), wrong)}) {
    EXPECT_EQ(text(result), refused);
  }
  EXPECT_EQ(text(list), "[1, 2]") << "a refused extend adds nothing";
  EXPECT_EQ(list.elementsType(), Integer::getType());
  for (const Any& result : {call(list, "clone"), call(list, "deepClone"), call(list, "sliced", 0),
                            call(list, "concat", List_Generic{3}), construct(List<Integer>::getClass())}) {
    EXPECT_TRUE(List<Integer>::matches(result.get()));
  }
  EXPECT_FALSE(List<Integer>::matches(call(list, "concat", wrong).get()));
}

TEST(List, SortsStablyOrNotAtAll) {
  const List_Generic numbers{3, 1.0, 2, 1, -5};
  EXPECT_FALSE(is_error_result(call(numbers, "sort")));
  EXPECT_EQ(text(numbers), "[-5, 1.0, 1, 2, 3]") << "equal items keep their order";

  const List_Generic mixed{3, "a", 1};
  EXPECT_EQ(message(call(mixed, "sort")), "Cannot be compared: a (String) and 3 (Integer).");
  EXPECT_EQ(text(mixed), "[3, \"a\", 1]");

  std::vector<Any> liars;
  for (int i = 0; i < 100; ++i) {
    liars.push_back(make_actor([](const Any&) -> Any { return Ordering(ordering_value::Less); }));
  }
  const List_Generic contradictory(std::move(liars));
  EXPECT_FALSE(is_error_result(call(contradictory, "sort")));
  EXPECT_EQ(contradictory.length(), 100u);

  const List_Generic changing;
  const auto grow = [&](const Any&) -> Any { return changing.append(1), Ordering(ordering_value::Less); };
  changing.append(make_actor(grow));
  changing.append(make_actor(grow));
  EXPECT_EQ(message(call(changing, "sort")), "The list was changed while it was sorted.");
}

TEST(List, ReportsErrorsOfComparing) {
  const List_Generic list{1, make_actor([](const Any&) -> Any { return Error("no comparison today"); }), 2};
  for (const char* method : {"indexOf", "contains", "removeOne"}) {
    EXPECT_EQ(message(call(list, method, 2)), "no comparison today") << method;
  }
}

TEST(List, RemovesTheItemThatWasComparedWhenOthersChangeIt) {
  const List_Generic list;
  list.append(make_actor([&](const Any&) -> Any {
    EXPECT_FALSE(list.object().insert(0, "new").is_error());
    return Ordering(ordering_value::Equal);
  }));
  list.append(2);
  EXPECT_EQ(text(call(list, "removeOne", 5)), "true");
  EXPECT_EQ(text(list), "[\"new\", 2]");
}

// A destructor that looks at the list finds it unlocked, and without the item.
TEST(List, DestroysItemsAfterUnlocking) {
  const std::function<void(const List_Generic&)> removals[] = {
      [](const List_Generic& list) { call(list, "set", 0, None()); },
      [](const List_Generic& list) { call(list, "pop", 0); },
      [](const List_Generic& list) { call(list, "removeAt", 0); },
      [](const List_Generic& list) { call(list, "removeOne", list.at(0)); },
      [](const List_Generic& list) { call(list, "clear"); },
      [](const List_Generic& list) { call(list, "__imul__", 0); },
  };
  for (const auto& remove : removals) {
    const List_Generic list;
    int deaths = 0;
    list.append(make_mortal([&] { deaths += is_none(list.object().at_or(0, None())) ? 1 : 100; }));
    remove(list);
    EXPECT_EQ(deaths, 1);
  }
}

TEST(List, ClonesWithAllItHolds) {
  const List_Generic inner{1};
  const List_Generic list{inner, inner, Tuple_Generic{inner}, Error("an item like any other")};
  list.append(list);
  const auto copy = List_Generic::unchecked(call(list, "deepClone"));
  ASSERT_EQ(copy.length(), 5u) << message(copy);
  EXPECT_FALSE(copy.at(0).is_same(inner));
  EXPECT_TRUE(copy.at(0).is_same(copy.at(1))) << "what was one list stays one list";
  EXPECT_TRUE(Tuple_Generic::unchecked(copy.at(2)).at(0).is_same(copy.at(0)));
  EXPECT_TRUE(copy.at(3).is_same(list.at(3)));
  EXPECT_TRUE(copy.at(4).is_same(copy)) << "a list in itself";
  EXPECT_TRUE(List_Generic::unchecked(call(list, "clone")).at(0).is_same(inner));

  List_Generic deep{1};
  for (int i = 0; i < 100000; ++i) {
    const List_Generic outer;
    outer.append(deep);
    deep = outer;
  }
  EXPECT_EQ(message(call(deep, "deepClone")), "A List is nested too deeply to be cloned: more than 200 levels.");
  list.object().clear();
  copy.object().clear();  // or they keep themselves alive
}

}  // namespace
