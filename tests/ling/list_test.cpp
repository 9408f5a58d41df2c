// Lists, mostly through the methods that scripts call.
#include "ling/testing.h"

namespace {

using namespace ling::testing;

TEST(List, ChangesAndKeepsItsItemsWhenTheIndexIsWrong) {
  const method_row rows[] = {
      {"at", {3}, "BadArgument: Index out of range: 3, length: 3."},
      {"at", {INT64_MIN}, "BadArgument: Index out of range: -9223372036854775808, length: 3."},
      {"atOr", {-4, "none"}, "none"},
      {"set", {-1, 1}, "None", "[10, 20, 1]"},
      {"set", {-4, 1}, "BadArgument: Index out of range: -4, length: 3."},
      {"appendAt", {-1, 1}, "None", "[10, 20, 1, 30]"},
      {"appendAt", {INT64_MAX, 1}, "None", "[10, 20, 30, 1]"},
      {"appendAt", {INT64_MIN, 1}, "None", "[1, 10, 20, 30]"},
      {"extend", {Tuple_Generic{1, 2}}, "None", "[10, 20, 30, 1, 2]"},
      {"removeAt", {1, 2}, "None", "[10]"},
      {"removeAt", {1, INT64_MAX}, "BadArgument: Index out of range: 3, length: 3."},
      {"removeAt", {9, 0}, "None"},
      {"removeOne", {20.0}, "true", "[10, 30]"},
      {"removeOne", {7}, "false"},
      {"pop", {}, "30", "[10, 20]"},
      {"pop", {0}, "10", "[20, 30]"},
      {"pop", {5}, "BadArgument: Index out of range: 5, length: 3."},
      {"indexOf", {30, -1}, "2"},
      {"sliced", {1, -1}, "[20]"},
      {"sliced", {2, 1}, "[]"},
      {"concat", {HashSet_Generic()}, "[10, 20, 30]"},
      {"repeat", {2}, "[10, 20, 30, 10, 20, 30]"},
      {"repeat", {INT64_MAX}, "Error: 3 items repeated 9223372036854775807 times are too many."},
      {"__imul__", {-1}, "[]", "[]"},
      {"reverse", {}, "None", "[30, 20, 10]"},
      {"__iadd__", {Tuple_Generic{1}}, "[10, 20, 30, 1]", "[10, 20, 30, 1]"},
      {"__iadd__", {Error("lost")}, "Error: lost"},
  };
  expect_methods([] { return List_Generic{10, 20, 30}; }, rows);
  EXPECT_EQ(text(call(List_Generic(), "repeat", INT64_MAX)), "[]");
  const List_Generic list{1, 2};
  EXPECT_FALSE(is_error_result(call(list, "extend", list)));
  EXPECT_EQ(text(list), "[1, 2, 1, 2]");
}

TEST(List, SortsStablyOrNotAtAll) {
  const List_Generic numbers{3, 1.0, 2, 1, -5};
  EXPECT_FALSE(is_error_result(call(numbers, "sort")));
  EXPECT_EQ(text(numbers), "[-5, 1.0, 1, 2, 3]") << "equal items keep their order";

  const List_Generic whole{INT64_MAX, UINT64_MAX, -1, std::uint64_t{1} << 63, INT64_MIN, 0};
  EXPECT_FALSE(is_error_result(call(whole, "sort")));
  EXPECT_EQ(text(whole),
            "[-9223372036854775808, -1, 0, 9223372036854775807, 9223372036854775808, 18446744073709551615]");
  const Any twins[] = {"b", "b"};
  const List_Generic texts{twins[0], "ä", "", std::string_view("b\0", 2), twins[1], "a"};
  EXPECT_FALSE(is_error_result(call(texts, "sort")));
  EXPECT_TRUE(texts.at(2).is_same(twins[0]) && texts.at(3).is_same(twins[1]));
  EXPECT_EQ(text(texts), "[\"\", \"a\", \"b\", \"b\", \"b\\x00\", \"ä\"]");

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
  const auto change = [&](const Any&) -> Any { return changing.set(0, 1), Ordering(ordering_value::Less); };
  changing.append(make_actor(change));
  changing.append(make_actor(change));
  EXPECT_EQ(message(call(changing, "sort")), "The list was changed while it was sorted.");
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

}  // namespace
