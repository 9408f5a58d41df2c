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
  const Type integer[] = {Integer::getType()};
  const Any set = construct(generic_instance(HashSet_Generic::getClass(), integer));
  EXPECT_TRUE(raw_class_of(call(set, "__and__", list)) == raw_class_of(set));
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

// A destructor that looks at what held the value finds it unlocked.
TEST(Containers, DestroyWhatTheyHeldAfterUnlocking) {
  auto& holder = *new object_value_class("Holder");
  holder.add_field_unsafe("field", None(), "");
  const meta_field_untyped field("field");
  const meta_property_untyped own("own");
  using change = std::function<void(const Any& container, const Any& value)>;
  const change append = [](const Any& list, const Any& value) { call(list, "append", value); };
  const change set_first = [](const Any& list, const Any& value) { call(list, "set", 0, value); };
  const change pop_first = [](const Any& list, const Any&) { call(list, "pop", 0); };
  const change remove_first = [](const Any& list, const Any&) { call(list, "removeAt", 0); };
  const change repeat_never = [](const Any& list, const Any&) { call(list, "__imul__", 0); };
  const change insert = [](const Any& set, const Any& value) { call(set, "insert", value); };
  const change set_key = [](const Any& map, const Any& value) { call(map, "set", "key", value); };
  const change remove_key = [](const Any& map, const Any&) { call(map, "remove", "key"); };
  const change clear = [](const Any& container, const Any&) { call(container, "clear"); };
  const change set_field = [&](const Any& object, const Any& value) { object.setFieldValue(field, value); };
  const change insert_own = [&](const Any& object, const Any& value) {
    (void)insert_property_value(object, own, value);
  };
  const change remove_own = [&](const Any& object, const Any&) { (void)remove_property(object, own); };
  const Class_Generic list = List_Generic::getClass(), map = HashMap_Generic::getClass();
  const std::tuple<Class_Generic, change, change> cases[] = {
      {list,                        append,     set_first   },
      {list,                        append,     pop_first   },
      {list,                        append,     remove_first},
      {list,                        append,     clear       },
      {list,                        append,     repeat_never},
      {map,                         set_key,    remove_key  },
      {map,                         set_key,    set_key     },
      {map,                         set_key,    clear       },
      {HashSet_Generic::getClass(), insert,     clear       },
      {holder,                      set_field,  set_field   },
      {holder,                      insert_own, insert_own  },
      {holder,                      insert_own, remove_own  },
  };
  for (const auto& [of_class, put, remove] : cases) {
    const Any container = construct(of_class);
    int deaths = 0;
    put(container, make_mortal([&] {
          ++deaths;
          (void)text(container);  // waits for ever if the lock is held
          (void)own_properties_of(container);
          (void)container.fieldValue(field);
        }));
    EXPECT_EQ(deaths, 0);
    remove(container, None());
    EXPECT_EQ(deaths, 1) << of_class.name().view() << " " << text(container);
  }
}

struct Seed {
  Any grown;
};
constinit const class_definition<Seed> seed_class("Seed", [](class_builder<Seed>& c) {
  c.module("test.containers").parent(I_Cloneable::getClass()).constructor("grown", "", [](const Any& grown) {
    return Seed{grown};
  });
  c.method("deepClone", "", "", [](const Seed& self) { return self.grown; });
});

TEST(Containers, CloneAllTheyHold) {
  const Class_Generic seed(seed_class.required());
  for (const Any& grown : values("grown", Error("sterile"))) {
    const Any one = seed(grown);
    for (const Any& container : values(List_Generic{one}, make_map({1, one}), List_Generic{Tuple_Generic{one}})) {
      const Any copy = call(container, "deepClone");
      EXPECT_EQ(is_error_result(copy), is_error_result(grown));
      EXPECT_NE(text(copy).find(is_error_result(grown) ? "sterile" : "grown"), std::string::npos) << text(copy);
    }
  }
  const List_Generic inner{1};
  const HashMap_Generic map = make_map({"list", inner});
  const Tuple_Generic pair{1, "unchanged"};
  const List_Generic ring;
  const Tuple_Generic link{ring};
  ring.append(link);
  const List_Generic list{inner, inner, Tuple_Generic{inner}, Error("an item like any other"), map, pair, link};
  list.append(Tuple_Generic{list});
  map.set("self", map);
  const auto copy = List_Generic::unchecked(call(list, "deepClone"));
  ASSERT_EQ(copy.length(), 8u) << message(copy);
  const auto map_copy = HashMap_Generic::unchecked(copy.at(4));
  EXPECT_FALSE(copy.at(0).is_same(inner));
  EXPECT_TRUE(copy.at(0).is_same(copy.at(1))) << "what was one list stays one list";
  EXPECT_TRUE(Tuple_Generic::unchecked(copy.at(2)).at(0).is_same(copy.at(0)));
  EXPECT_TRUE(copy.at(3).is_same(list.at(3)));
  EXPECT_TRUE(map_copy.get("list").is_same(copy.at(0)));
  EXPECT_TRUE(map_copy.get("self").is_same(map_copy));
  EXPECT_TRUE(copy.at(5).is_same(pair));
  EXPECT_TRUE(Tuple_Generic::unchecked(copy.at(7)).at(0).is_same(copy)) << "a list in itself";
  const auto ring_copy = List_Generic::unchecked(Tuple_Generic::unchecked(copy.at(6)).at(0));
  EXPECT_TRUE(ring_copy.at(0).is_same(copy.at(6))) << "a tuple in itself";
  EXPECT_TRUE(List_Generic::unchecked(call(list, "clone")).at(0).is_same(inner));
  for (const auto& each : {list, copy, ring, ring_copy}) {  // or they keep themselves alive
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
