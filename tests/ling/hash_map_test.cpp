// HashMaps: order, equality of keys, and keys whose comparison acts up.
#include "ling/testing.h"

#include <random>

namespace {

using namespace ling::testing;

TEST(HashMap, AnswersTheMethodsOfScripts) {
  const method_row rows[] = {
      {"get", {"c"}, "Error: Key not found: c."},
      {"set", {"a", 3}, "None", "{\"a\": 3, \"b\": 2}"},
      {"set", {None(), 3}, "None", "{\"a\": 1, \"b\": 2, None: 3}"},
      {"remove", {"a"}, "1", "{\"b\": 2}"},
      {"clear", {}, "None", "{}"},
      {"update", {make_map({"b", 5, "c", 6})}, "None", "{\"a\": 1, \"b\": 5, \"c\": 6}"},
      {"pairs", {}, "[(\"a\", 1), (\"b\", 2)]"},
      {"set", {List_Generic{1, 2}, 0}, "BadArgument: The key is not immutable: [1, 2] (List)."},
      {"get", {Error("lost")}, "Error: lost"},
      {"get", {Tuple_Generic{1, List_Generic()}}, "BadArgument: The key is not immutable: (1, []) (Tuple)."},
  };
  expect_methods([] { return make_map({"a", 1, "b", 2}); }, rows);
}

TEST(HashMap, TakesEqualKeysForOneKey) {
  HashMap_Generic map;
  const auto once = [] { return Tuple_Generic{"a", Tuple_Generic{1}}; };
  const Any lazy = make_computed<Any>([] { return Any("a"); });
  for (const Any& key : values(1, 1.0, Any(), None(), once(), once(), "a", lazy, true)) {
    map.set(key, key);
  }
  EXPECT_EQ(text(map.get(1)), "1.0");
  EXPECT_TRUE(map.get("a").is_same(lazy));
  EXPECT_EQ(text(call(map, "toList")), "[1, None, (\"a\", (1,)), \"a\", true]") << "the first of equal keys stays";
}

// Against the plainest thing that keeps order.
TEST(HashMap, KeepsOrderThroughGrowthAndRemoval) {
  HashMap_Generic map;
  std::vector<std::pair<int, int>> model;
  std::mt19937 random(1);
  const auto in_model = [&](int key) {
    return std::find_if(model.begin(), model.end(), [&](const auto& each) { return each.first == key; });
  };
  for (int step = 0; step < 30'000; ++step) {
    const int key = static_cast<int>(random() % 500);
    const bool shrinking = step / 3000 % 2 == 1;  // periods of growth and of removal, so that gaps get closed
    const auto place = in_model(key);
    const bool known = place != model.end();
    if (random() % 10 < (shrinking ? 8u : 3u)) {
      ASSERT_EQ(map.remove(key), known);
      if (known) model.erase(place);
    } else {
      map.set(key, step);
      known ? place->second = step : model.emplace_back(key, step).second;
    }
    ASSERT_EQ(map.length(), model.size());
  }
  const auto pairs = map.copyPairs();
  ASSERT_EQ(pairs.size(), model.size());
  for (std::size_t i = 0; i < model.size(); ++i) {
    EXPECT_EQ(Integer::unchecked(pairs[i].first).value(), model[i].first);
    EXPECT_EQ(Integer::unchecked(map.get(model[i].first)).value(), model[i].second);
  }
}

// A key may do anything while it is compared: the map is not locked then.
TEST(HashMap, LetsKeysUseTheMapWhileTheyAreCompared) {
  const HashMap_Generic map;
  int comparisons = 0;
  const auto meddle = [&](const Any&) -> Any {
    map.set(comparisons, "set while comparing");
    for (int i = 0; i < 100; ++i) {  // enough to move every entry
      map.set(1000 + i, comparisons);
      map.remove(1000 + i);
    }
    return Ordering(++comparisons > 1000 ? ordering_value::Equal : ordering_value::Less);
  };
  const Any keys[] = {make_actor(meddle), make_actor(meddle), make_actor(meddle)};
  for (const Any& key : keys) {
    map.set(key, key);
  }
  EXPECT_EQ(comparisons, 3) << "each pair of keys is compared once, however often the search starts again";
  for (const Any& key : keys) {
    EXPECT_TRUE(map.get(key).is_same(key));
  }
  map.object().clear();  // the keys hold nothing, but their functions refer to the map
}

TEST(HashMap, FindsAnEqualKeyIfItMovedWhileItWasComparedButNotIfItWasRemoved) {
  const HashMap_Generic map;
  map.set("first", 0);
  map.set(make_actor([&](const Any&) -> Any {
            map.remove("first");  // changes the table
            return Ordering(ordering_value::Equal);
          }),
          "found");
  EXPECT_EQ(text(map.get(make_actor({}), "lost")), "found");
  EXPECT_EQ(map.length(), 1u);
  map.object().clear();

  Any key;
  for (const std::function<void()>& remove :
       {std::function([&] { map.object().clear(); }), std::function([&] { map.remove(key); })}) {
    key = make_actor([&](const Any&) -> Any {
      remove();
      return Ordering(ordering_value::Equal);
    });
    map.set(key, 1);
    EXPECT_FALSE(is_error_result(call(map, "set", make_actor({}), 2)));
    EXPECT_EQ(text(property(map, "values")), "[2]");
    map.object().clear();
  }
}

}  // namespace
