// Interfaces over foreign classes: what they ask of a class, and what they make of its answers.
#include "ling/testing.h"

namespace {

using namespace ling::testing;

// Counts up; ends, fails or goes on for ever.
struct Counter {
  std::int64_t next = 0;
  std::int64_t end = INT64_MAX;
  bool fails = false;
};
constinit const class_definition<Counter> counter_class("Counter", [](class_builder<Counter>& c) {
  c.module("test.interfaces").parent(I_Iterator_Generic::getClass()).method("next", "", "", [](Counter& self) -> Any {
    return self.next < self.end ? make_computed<Any>([item = self.next++] { return Any(item); })
           : self.fails         ? Any(Error("the counter broke"))
                                : Any(StopIteration());
  });
});

// An iterable of its own making that says nothing of what it contains.
struct Range {
  std::int64_t end = INT64_MAX;
  bool fails = false;
};
constinit const class_definition<Range> range_class("Range", [](class_builder<Range>& c) {
  c.module("test.interfaces").parent(I_Iterable_Generic::getClass()).method("iter", "", "", [](const Range& self) {
    return make<object_value_native<Counter>>(counter_class.required(), Counter{0, self.end, self.fails});
  });
});

I_Iterable_Generic make_range(std::int64_t end, bool fails = false) {
  return I_Iterable_Generic::unchecked(make<object_value_native<Range>>(range_class.required(), Range{end, fails}));
}

// Answers of every kind, right and wrong, under the names of the interfaces.
struct Odd {};
constinit const class_definition<Odd> odd_class("Odd", [](class_builder<Odd>& c) {
  c.module("test.interfaces")
      .parent(I_MutableSequence_Generic::getClass())
      .parent(I_MutableMap_Generic::getClass())
      .property("__length__", "", [](const Odd&) { return make_computed<Any>([] { return Any(3); }); })
      .property("keys", "",
                [](const Odd&) {
                  return List_Generic({1, 2});
                })
      .property("values", "", [](const Odd&) { return List_Generic{1}; })
      .property("keysType", "", [](const Odd&) { return String::getType(); })
      .property("valuesType", "", [](const Odd&) -> Any { return 5; })
      .method("at", "index", "", [](const Odd&, std::int64_t index) { return index * 2; })
      .method("append", "value", "", [](const Odd&, const Any& value) { return value; })
      .method("removeOne", "value", "", [](const Odd&, const Any&) -> Any { return "yes"; })
      .method("iter", "", "", [](const Odd&) -> Any { return 1; })
      .method("get", "key, default", "", [](const Odd&, const Any& key, const Any& otherwise) {
        return text(key) == "known" ? Any(1) : text(key) == "none" ? Any(None()) : otherwise;
      });
});

TEST(Interfaces, PassOnLazyValuesAndRefuseWrongTypes) {
  const Any odd = odd_class.required().allocate_instance();
  const auto sequence = I_MutableSequence_Generic::cast(odd).value();
  const auto map = I_MutableMap_Generic::cast(odd).value();
  EXPECT_TRUE(sequence.length().is_lazy());
  EXPECT_TRUE(sequence.removeOne(1).is_error());
  EXPECT_TRUE(sequence.iter().is_error());
  EXPECT_EQ(map.keysType(), String::getType());
  EXPECT_EQ(map.valuesType(), Type::untyped()) << "no type";
  std::vector<std::pair<Any, Any>> pairs;
  EXPECT_EQ(sequence.elementsType(), Type::untyped()) << "no such property";
  EXPECT_TRUE(sequence.pop().is_error()) << "no such method";
  expect_outcomes({
      {sequence.length(), "3"},
      {sequence.at(4), "8"},
      {sequence.append("dropped"), "None"},
      {map.get("known"), "1"},
      {map.get("none"), "None"},
      {map.pairs(pairs), "Error: The map changed while it was read: 2 keys, 1 values."},
      {map.get("other"), "Error: Key not found: other."},
      {map.get("other", 7), "7"},
  });
}

TEST(Interfaces, PassOnWhatTheyAreGiven) {
  auto& of_class = *new object_value_class("Echo");
  for (const String& name :
       String("at atOr indexOf sliced set append appendAt extend removeAt pop clear get remove insert "
              "clone deepClone toCode resolve evaluateExpression evaluate")
           .split(' ')) {
    of_class.add_method_unsafe(name, echo(name));
  }
  of_class.add_property_unsafe("canEvaluate", Property::constant(1));
  of_class.add_property_unsafe("code", Property::constant("a source"));
  const Any object = of_class.allocate_instance();
  const auto sequence = I_MutableSequence_Generic::unchecked(object);
  const auto map = I_MutableMap_Generic::unchecked(object);
  const auto set = I_MutableSet_Generic::unchecked(object);
  const auto language = I_Language::unchecked(object);
  const auto list = I_Iterable_Generic::unchecked(List_Generic{1});
  expect_outcomes({
      {sequence.atOr(1, 2), "Error: atOr(1, 2)"},
      {sequence.indexOf(1, 2), "Error: indexOf(1, 2)"},
      {sequence.sliced(1, 2), "Error: sliced(1, 2)"},
      {sequence.set(1, 2), "Error: set(1, 2)"},
      {sequence.append(1), "Error: append(1,)"},
      {sequence.appendAt(1, 2), "Error: appendAt(1, 2)"},
      {sequence.extend(list), "Error: extend([1],)"},
      {sequence.removeAt(1, 2), "Error: removeAt(1, 2)"},
      {sequence.pop(1), "Error: pop(1,)"},
      {sequence.clear(), "Error: clear()"},
      {map.get(1, 2), "Error: get(1, 2)"},
      {map.set(1, 2), "Error: set(1, 2)"},
      {map.remove(1), "Error: remove(1,)"},
      {map.clear(), "Error: clear()"},
      {set.insert(1), "Error: insert(1,)"},
      {set.remove(1), "Error: remove(1,)"},
      {set.extend(list), "Error: extend([1],)"},
      {set.clear(), "Error: clear()"},
      {language.toCode(1), "Error: toCode(1,)"},
      {language.resolve("a"), "Error: resolve(\"a\",)"},
      {language.evaluateExpression("a", 1), "Error: evaluateExpression(\"a\", 1)"},
      {language.evaluate("a", 1), "Error: evaluate(\"a\", 1)"},
      {I_Cloneable::unchecked(object).clone(), "Error: clone()"},
      {I_Cloneable::unchecked(object).deepClone(), "Error: deepClone()"},
      {I_HasCode::unchecked(object).code(), "a source"},
      {language.canEvaluate(), "false"}, // 1 is no Boolean
  });
}

TEST(Interfaces, IterateForeignValuesAndSearchThem) {
  expect_outcomes({
      {make_range(3).toList(), "[0, 1, 2]"},
      {make_range(3, true).toList(), "Error: the counter broke"},
      {construct(HashSet_Generic::getClass(), make_range(2)), "{0, 1}"},
      {construct(List_Generic::getClass(), make<object_value_native<Counter>>(counter_class.required(), Counter{0, 2})),
       "[0, 1]"},
      {construct(List_Generic::getClass(), make_range(2, true)), "Error: the counter broke"},
      {make_range(INT64_MAX).contains(500), "true"}, // the iteration ends where the value is
      {make_range(3).contains(3), "false"},
      {make_range(3, true).contains(2), "true"},
      {make_range(3, true).contains(3), "Error: the counter broke"},
  });
}

TEST(Interfaces, HaveGenericInstances) {
  const Type text_type = String::getType();
  const Type number = Integer::getType();
  const Class_Generic typed = I_Map_Generic::genericInstance(text_type, number);
  EXPECT_EQ(typed.name(), "I_Map<String, Integer>");
  EXPECT_TRUE(typed == I_Map_Generic::genericInstance(text_type, number));
  EXPECT_TRUE(typed.is_ancestor(I_Map_Generic::getClass()));
  EXPECT_EQ(I_Set_Generic::genericInstance(number).name(), "I_Set<Integer>");
  EXPECT_TRUE((HashMap<String, Integer>::matches(I_Map_Generic::createInstance(text_type, number).get())));
  EXPECT_TRUE(raw_class_of(I_Map_Generic::createInstance(Type::untyped(), Type::untyped())) ==
              HashMap_Generic::getClass());
}

}  // namespace
