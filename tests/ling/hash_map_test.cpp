// HashMaps: order, equality of keys, and keys whose comparison acts up.
#include "ling/container_testing.h"

#include <random>

namespace {

using namespace ling;
using namespace ling::testing;

HashMap_Generic make_map(std::initializer_list<std::pair<Any, Any>> pairs) {
  HashMap_Generic map;
  for (const auto& [key, value] : pairs) {
    map.set(key, value);
  }
  return map;
}

TEST(HashMap, AnswersTheMethodsOfScripts) {
  struct row {
    const char* method;
    std::vector<Any> arguments;
    const char* map;  // afterwards, starting from {"a": 1, "b": 2}
    const char* result;
  };
  const row rows[] = {
      {"get",      {"a"},                              "{\"a\": 1, \"b\": 2}",           "1"                                         },
      {"get",      {"c"},                              "{\"a\": 1, \"b\": 2}",           "Key not found: c."                         },
      {"get",      {"c", None()},                      "{\"a\": 1, \"b\": 2}",           "None"                                      },
      {"set",      {"a", 3},                           "{\"a\": 3, \"b\": 2}",           "None"                                      },
      {"set",      {None(), 3},                        "{\"a\": 1, \"b\": 2, None: 3}",  "None"                                      },
      {"remove",   {"a"},                              "{\"b\": 2}",                     "1"                                         },
      {"remove",   {"c"},                              "{\"a\": 1, \"b\": 2}",           "Key not found: c."                         },
      {"contains", {"b"},                              "{\"a\": 1, \"b\": 2}",           "true"                                      },
      {"contains", {2},                                "{\"a\": 1, \"b\": 2}",           "false"                                     },
      {"clear",    {},                                 "{}",                             "None"                                      },
      {"update",   {make_map({{"b", 5}, {"c", 6}})},   "{\"a\": 1, \"b\": 5, \"c\": 6}", "None"                                      },
      {"pairs",    {},                                 "{\"a\": 1, \"b\": 2}",           "[(\"a\", 1), (\"b\", 2)]"                  },
      {"toList",   {},                                 "{\"a\": 1, \"b\": 2}",           "[\"a\", \"b\"]"                            },
      {"clone",    {},                                 "{\"a\": 1, \"b\": 2}",           "{\"a\": 1, \"b\": 2}"                      },
      {"set",      {List_Generic{1, 2}, 0},            "{\"a\": 1, \"b\": 2}",           "The key is not immutable: [1, 2] (List)."  },
      {"get",      {Tuple_Generic{1, List_Generic()}}, "{\"a\": 1, \"b\": 2}",           "The key is not immutable: (1, []) (Tuple)."},
  };
  for (const row& each : rows) {
    SCOPED_TRACE(each.method);
    const HashMap_Generic map = make_map({
        {"a", 1},
        {"b", 2}
    });
    const Any result = call_method(map, meta_method_untyped(each.method), each.arguments);
    EXPECT_EQ(is_error_result(result) ? message(result) : text(result), each.result);
    EXPECT_EQ(text(map), each.map);
  }
}

TEST(HashMap, TakesEqualKeysForOneKey) {
  HashMap_Generic map;
  const auto once = [] { return Tuple_Generic{"a", Tuple_Generic{1}}; };
  for (const Any& key : {Any(1), Any(1.0), Any(), Any(None()), Any(once()), Any(once()), Any("a"), Any("a")}) {
    map.set(key, key);
  }
  EXPECT_EQ(map.length(), 4u);
  EXPECT_EQ(text(map.get(1)), "1.0");
  EXPECT_EQ(text(call(map, "toList")), "[1, None, (\"a\", (1,)), \"a\"]") << "the first of equal keys stays";
  map.set(true, 1);
  EXPECT_EQ(map.length(), 5u) << "true is no number";

  HashMap_Generic lazy;
  lazy.set(make_computed<Any>([] { return Any("a"); }), 1);
  EXPECT_EQ(text(lazy.get("a")), "1");
}

// Against the plainest thing that keeps order.
TEST(HashMap, KeepsOrderThroughGrowthAndRemoval) {
  HashMap_Generic map;
  std::vector<std::pair<int, int>> model;
  std::mt19937 random(1);
  const auto in_model = [&](int key) {
    return std::find_if(model.begin(), model.end(), [&](const auto& each) { return each.first == key; });
  };
  for (int step = 0; step < 30000; ++step) {
    const int key = static_cast<int>(random() % 500);
    const bool shrinking = step / 3000 % 2 == 1;  // periods of growth and of removal, so that gaps get closed
    if (random() % 10 < (shrinking ? 8u : 3u)) {
      const auto place = in_model(key);
      ASSERT_EQ(map.remove(key), place != model.end());
      if (place != model.end()) {
        model.erase(place);
      }
    } else if (const auto place = in_model(key); place != model.end()) {
      place->second = step;
      map.set(key, step);
    } else {
      model.emplace_back(key, step);
      map.set(key, step);
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

TEST(HashMap, RefusesWhatIsNotOfItsTypes) {
  const HashMap<String, Integer> map;
  const std::string bad_key = "The key is not of the type String: 1 (Integer).";
  const std::string bad_value = "The value is not of the type Integer: b (String).";
  EXPECT_EQ(message(call(map, "set", 1, 1)), bad_key);
  EXPECT_EQ(message(call(map, "set", "a", "b")), bad_value);
  EXPECT_EQ(message(call(map, "extend",
                         make_map({
                             {"a", "b"}
  }))),
            bad_value);
  EXPECT_EQ(message(construct(map.getClass(), make_map({
                                                  {1, 1}
  }))),
            bad_key);
  EXPECT_TRUE(BadArgument::matches(construct(HashMap_Generic::getClass(), 5).get())) << "a map is made of a map";
  EXPECT_EQ(map.keysType(), String::getType());
  EXPECT_EQ(map.valuesType(), Integer::getType());
  EXPECT_EQ(map.length(), 0u);
  EXPECT_TRUE((HashMap<String, Integer>::matches(call(map, "clone").get())));
  EXPECT_TRUE((HashMap<String, Integer>::matches(call(map, "deepClone").get())));
}

TEST(HashMap, ClonesValuesDeeplyAndItselfOnce) {
  const HashMap_Generic map = make_map({
      {"list", List_Generic{1}}
  });
  map.set("self", map);
  const auto copy = HashMap_Generic::unchecked(call(map, "deepClone"));
  EXPECT_FALSE(copy.get("list").is_same(map.get("list")));
  EXPECT_TRUE(copy.get("self").is_same(copy));
  map.object().clear();
  copy.object().clear();
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
  const Any first = make_actor(meddle);
  const Any second = make_actor(meddle);
  const Any third = make_actor(meddle);
  for (const Any& key : {first, second, third}) {
    map.set(key, key);
  }
  EXPECT_EQ(comparisons, 3) << "each pair of keys is compared once, however often the search starts again";
  for (const Any& key : {first, second, third}) {
    EXPECT_TRUE(map.get(key).is_same(key));
  }
  map.object().clear();  // the keys hold nothing, but their functions refer to the map
}

TEST(HashMap, FindsAnEqualKeyThatMovedWhileItWasCompared) {
  const HashMap_Generic map;
  const auto equal_and_meddle = [&](const Any&) -> Any {
    map.remove("first");  // changes the table
    return Ordering(ordering_value::Equal);
  };
  map.set("first", 0);
  map.set(make_actor(equal_and_meddle), "found");
  EXPECT_EQ(text(map.get(make_actor({}), "lost")), "found");
  EXPECT_EQ(map.length(), 1u);
}

TEST(HashMap, DoesNotFindAnEqualKeyThatWasRemovedWhileItWasCompared) {
  const HashMap_Generic map;
  const Any key = make_actor([&](const Any&) -> Any {
    map.object().clear();
    return Ordering(ordering_value::Equal);
  });
  map.set(key, 1);
  EXPECT_FALSE(is_error_result(call(map, "set", make_actor({}), 2)));
  EXPECT_EQ(text(property(map, "values")), "[2]");
  map.object().clear();
}

TEST(HashMap, ReportsErrorsOfComparing) {
  const HashMap_Generic map;
  map.set(make_actor([](const Any&) -> Any { return Error("no comparison today"); }), 1);
  const Any other = make_actor({});
  EXPECT_EQ(message(call(map, "get", other, 0)), "no comparison today");
  EXPECT_EQ(message(call(map, "set", other, 0)), "no comparison today");
  EXPECT_EQ(message(call(map, "remove", other)), "no comparison today");
  EXPECT_EQ(message(call(map, "contains", other)), "no comparison today");
  EXPECT_EQ(map.length(), 1u);
}

TEST(HashMap, DestroysKeysAndValuesAfterUnlocking) {
  const std::function<void(const HashMap_Generic&)> removals[] = {
      [](const HashMap_Generic& map) { map.remove("key"); },
      [](const HashMap_Generic& map) { map.set("key", 1); },
      [](const HashMap_Generic& map) { map.object().clear(); },
  };
  for (const auto& remove : removals) {
    const HashMap_Generic map;
    int deaths = 0;
    map.set("key", make_mortal([&] { map.set("dead", ++deaths); }));
    remove(map);
    EXPECT_EQ(deaths, 1);
  }
}

}  // namespace
