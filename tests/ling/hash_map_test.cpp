// HashMaps: order, equality of keys, and keys whose comparison acts up.
#include "ling/testing.h"

#include <limits>
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

// A key that decides itself what it equals, under the hash of a text or a number.
struct Mimic {
  Any model;
  int asked = 0;
};
const constinit class_definition<Mimic> mimic_class("Mimic", [](class_builder<Mimic>& c) {
  c.module("test.containers")
      .parent(I_Immutable::getClass())
      .method(Any::__hash__, "", [](const Mimic& self) { return self.model; })
      .method(Any::__equals__, "other", [](Mimic& self, const Any& other) {
        ++self.asked;
        return equal_objects(self.model, other);
      });
});

TEST(HashMap, AsksKeysThatMayEqualANumber) {
  for (const Any& number : values(5, -1, INT64_MIN, INT64_MAX, std::uint64_t{1} << 63)) {
    const Any mimic = make<object_value_native<Mimic>>(mimic_class.required(), Mimic{number});
    const HashMap_Generic map = make_map({mimic, "mimic"});
    EXPECT_TRUE(map.contains(number));
    EXPECT_EQ(text(map.get(number)), "mimic");
    map.set(number, "changed");
    EXPECT_EQ(map.length(), 1u);
    EXPECT_EQ(text(call(map, "get", number)), "changed");
    EXPECT_EQ(native_cast<Mimic>(mimic)->asked, 4) << "once for each use";
    EXPECT_TRUE(map.remove(number));
    EXPECT_FALSE(map.contains(display_text(number)));
  }
}

TEST(HashMap, TellsKeysOfDifferentKindsApart) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::uint64_t large = std::uint64_t{1} << 63;
  const std::string long_text(100, 'x');
  // No two are equal: numbers with the same bits, texts and bytes that look alike, with zero bytes and without.
  const std::vector<Any> keys =
      values(0, 1, -1, UINT64_MAX, INT64_MIN, large, INT64_MAX, true, false, 0.5, -0.5, nan, 1e300, None(), "", "0",
             "1", std::string_view("\0", 1), std::string_view("\0\0", 2), "a", std::string_view("a\0", 2), "ab", "abc",
             "abcd", "abcde", "abcdef", "abcdefg", "abcdefgh", "abcdefghi", "ä", "äö", "€", "😀", long_text,
             long_text + "y", ByteArray("a"), ByteArray(""), Tuple_Generic{1}, Tuple_Generic{"a"}, Tuple_Generic());
  HashMap_Generic map;
  for (int round = 0; round < 3; ++round) {  // the second time all are there, the third time in a larger table
    for (std::size_t i = 0; i < keys.size(); ++i) {
      map.set(keys[i], i);
    }
    for (int i = 1000; i < 1000 + round * 500; ++i) {
      map.set(i, i);
      map.set(String("{}").arg(i), i);
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
      EXPECT_EQ(text(map.get(keys[i])), std::to_string(i)) << text(keys[i]);
      EXPECT_EQ(map.contains(keys[i]), true);
    }
  }
  EXPECT_EQ(map.length(), keys.size() + 2000);
  // Equal numbers of the other kind.
  EXPECT_EQ(text(map.get(1.0)), "1");
  EXPECT_EQ(text(map.get(-0.0)), "0");
  EXPECT_EQ(text(map.get(-9223372036854775808.0)), "4");
  EXPECT_EQ(text(map.get(9223372036854775808.0)), "5");
  const HashMap_Generic floats = make_map({2.0, "two", -0.0, "zero", 9223372036854775808.0, "large", nan, "nan"});
  expect_outcomes({
      {floats.get(2), "two"},
      {floats.get(0), "zero"},
      {floats.get(large), "large"},
      {floats.get(INT64_MIN, "none"), "none"},
      {floats.get(INT64_MAX, "none"), "none"},
      {floats.get(nan, "none"), "none"},
  });
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
