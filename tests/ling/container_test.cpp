// What lists, maps and sets have in common: types, clones, comparisons that fail, and the death of what they held.
#include "ling/testing.h"

namespace {

using namespace ling::testing;

TEST(Containers, RefuseWhatIsNotOfTheirType) {
  const Type integer[] = {Integer::getType()};
  const Class_Generic set_class = generic_instance(HashSet_Generic::getClass(), integer);
  const List<Integer> list{1, 2};
  const HashMap<String, Integer> map;
  const Any set = construct(set_class, list);
  const List_Generic wrong{3, "a"};
  const std::pair<std::string, std::vector<Any>> cases[] = {
      {"The item is not of the type Integer: a (String).",
       {call(list, "append", "a"), call(list, "appendAt", 0, "a"), call(list, "set", 0, "a"),
        call(list, "extend", wrong), call(list, "__iadd__", wrong), construct(list.getClass(), wrong)}           },
      {"The key is not of the type String: 1 (Integer).",
       {call(map, "set", 1, 1), construct(map.getClass(), make_map({1, 1}))}                                     },
      {"The value is not of the type Integer: a (String).",
       {call(map, "set", "k", "a"), call(map, "extend", make_map({"k", "a"}))}                                   },
      {"The value of a set is not of the type Integer: a (String).",
       {call(set, "insert", "a"), call(set, "extend", List_Generic{"a"}), call(set, "__or__", List_Generic{"a"})}},
  };
  for (const auto& [fault, results] : cases) {
    for (const Any& result : results) {
      EXPECT_EQ(text(result), "BadArgument: " + fault);
    }
  }
  EXPECT_EQ(text(Tuple_Generic{list, map, set}), "([1, 2], {}, {1, 2})") << "a refused extend adds nothing";
  EXPECT_TRUE(BadArgument::matches(construct(HashMap_Generic::getClass(), 5).get())) << "a map is made of a map";
}

TEST(Containers, PassTheirTypeOn) {
  const List<Integer> list{1, 2};
  const HashMap<String, Integer> map;
  EXPECT_EQ(list.elementsType(), Integer::getType());
  EXPECT_EQ(map.keysType(), String::getType());
  EXPECT_EQ(map.valuesType(), Integer::getType());
  for (const Any& result : {call(list, "clone"), call(list, "deepClone"), call(list, "sliced", 0),
                            call(list, "concat", List_Generic{3}), construct(list.getClass())}) {
    EXPECT_TRUE(List<Integer>::matches(result.get()));
  }
  EXPECT_FALSE(List<Integer>::matches(call(list, "concat", List_Generic{"a"}).get()));
  EXPECT_TRUE((HashMap<String, Integer>::matches(call(map, "deepClone").get())));
}

TEST(Containers, ReportErrorsOfComparing) {
  const Any key = make_actor([](const Any&) -> Any { return Error("no comparison today"); });
  const Any other = make_actor({});
  const List_Generic list{1, key, 2};
  const HashMap_Generic map = make_map({key, 1});
  for (const Any& result :
       {call(list, "indexOf", 2), call(list, "contains", 2), call(list, "removeOne", 2), call(map, "get", other, 0),
        call(map, "set", other, 0), call(map, "remove", other), call(map, "contains", other)}) {
    EXPECT_EQ(message(result), "no comparison today");
  }
  EXPECT_EQ(map.length(), 1u);
}

// A destructor that looks at the container finds it unlocked.
TEST(Containers, DestroyWhatTheyHeldAfterUnlocking) {
  const struct {
    Class_Generic of_class;
    const char* put;
    std::vector<Any> place;
    const char* remove;
    std::vector<Any> arguments;
  } cases[] = {
      {List_Generic::getClass(),    "append", {},      "set",      {0, None()}},
      {List_Generic::getClass(),    "append", {},      "pop",      {0}        },
      {List_Generic::getClass(),    "append", {},      "removeAt", {0}        },
      {List_Generic::getClass(),    "append", {},      "clear",    {}         },
      {List_Generic::getClass(),    "append", {},      "__imul__", {0}        },
      {HashMap_Generic::getClass(), "set",    {"key"}, "remove",   {"key"}    },
      {HashMap_Generic::getClass(), "set",    {"key"}, "set",      {"key", 1} },
      {HashMap_Generic::getClass(), "set",    {"key"}, "clear",    {}         },
      {HashSet_Generic::getClass(), "insert", {},      "clear",    {}         },
  };
  for (const auto& each : cases) {
    const Any container = construct(each.of_class);
    int deaths = 0;
    std::vector<Any> held = each.place;
    held.push_back(make_mortal([&] { deaths += text(container).empty() ? 100 : 1; }));
    EXPECT_FALSE(is_error_result(call_method(container, meta_method_untyped(each.put), held)));
    held.clear();
    EXPECT_EQ(deaths, 0);
    (void)call_method(container, meta_method_untyped(each.remove), each.arguments);
    EXPECT_EQ(deaths, 1) << each.of_class.name().view() << " " << each.remove;
  }
}

TEST(Containers, CloneAllTheyHold) {
  const List_Generic inner{1};
  const HashMap_Generic map = make_map({"list", inner});
  const List_Generic list{inner, inner, Tuple_Generic{inner}, Error("an item like any other"), map};
  list.append(list);
  map.set("self", map);
  const auto copy = List_Generic::unchecked(call(list, "deepClone"));
  ASSERT_EQ(copy.length(), 6u) << message(copy);
  const auto map_copy = HashMap_Generic::unchecked(copy.at(4));
  EXPECT_FALSE(copy.at(0).is_same(inner));
  EXPECT_TRUE(copy.at(0).is_same(copy.at(1))) << "what was one list stays one list";
  EXPECT_TRUE(Tuple_Generic::unchecked(copy.at(2)).at(0).is_same(copy.at(0)));
  EXPECT_TRUE(copy.at(3).is_same(list.at(3)));
  EXPECT_TRUE(map_copy.get("list").is_same(copy.at(0)));
  EXPECT_TRUE(map_copy.get("self").is_same(map_copy));
  EXPECT_TRUE(copy.at(5).is_same(copy)) << "a list in itself";
  EXPECT_TRUE(List_Generic::unchecked(call(list, "clone")).at(0).is_same(inner));
  for (const auto& each : {list, copy}) {  // or they keep themselves alive
    each.object().clear();
  }
  map.object().clear();
  map_copy.object().clear();

  List_Generic deep{1};
  for (int i = 0; i < 100000; ++i) {
    const List_Generic outer;
    outer.append(deep);
    deep = outer;
  }
  EXPECT_EQ(message(call(deep, "deepClone")), "A List is nested too deeply to be cloned: more than 200 levels.");
}

}  // namespace
