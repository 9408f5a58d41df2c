// Interfaces over foreign classes: what they ask of a class, and what they make of its answers.
#include "ling/container_testing.h"

namespace {

using namespace ling;
using namespace ling::testing;

// Counts up; ends, fails or goes on for ever.
struct Counter {
  std::int64_t next = 0;
  std::int64_t end = INT64_MAX;
  bool fails = false;
};
constinit const class_definition<Counter> counter_class("Counter", [](class_builder<Counter>& c) {
  c.module("test.interfaces").parent(I_Iterator_Generic::getClass()).method("next", "", "", [](Counter& self) -> Any {
    if (self.next < self.end) {
      const std::int64_t item = self.next++;
      return make_computed<Any>([item] { return Any(item); });
    }
    return self.fails ? Any(Error("the counter broke")) : Any(StopIteration());
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
      .property("keys", "", [](const Odd&) -> Any { return 5; })
      .method("at", "index", "", [](const Odd&, std::int64_t index) { return index * 2; })
      .method("append", "value", "", [](const Odd&, const Any& value) { return value; })
      .method("removeOne", "value", "", [](const Odd&, const Any&) -> Any { return "yes"; })
      .method("iter", "", "", [](const Odd&) -> Any { return 1; })
      .method("get", "key, default", "", [](const Odd&, const Any& key, const Any& otherwise) {
        return text(key) == "known" ? Any(1) : otherwise;
      });
});

TEST(Interfaces, PassOnLazyValuesAndRefuseWrongTypes) {
  const Any odd = odd_class.required().allocate_instance();
  const auto sequence = I_MutableSequence_Generic::cast(odd).value();
  const auto map = I_MutableMap_Generic::cast(odd).value();

  EXPECT_TRUE(sequence.length().is_lazy());
  EXPECT_EQ(result_unwrap_lazy(sequence.length()).value().value(), 3);
  EXPECT_EQ(text(sequence.at(4)), "8");
  EXPECT_EQ(text(sequence.append("dropped")), "None");
  EXPECT_TRUE(sequence.removeOne(1).is_error());
  EXPECT_TRUE(sequence.iter().is_error());
  EXPECT_TRUE(map.keys().is_error());
  EXPECT_EQ(sequence.elementsType(), Type::untyped()) << "no such property";
  EXPECT_TRUE(sequence.pop().is_error()) << "no such method";

  EXPECT_EQ(text(map.get("known")), "1");
  EXPECT_EQ(message(map.get("other")), "Key not found: other.");
  EXPECT_EQ(text(map.get("other", 7)), "7");
}

TEST(Interfaces, IterateForeignValues) {
  EXPECT_EQ(text(make_range(3).toList()), "[0, 1, 2]");
  EXPECT_EQ(text(call(make_range(3), "toList")), "[0, 1, 2]");
  EXPECT_EQ(message(make_range(3, true).toList()), "the counter broke");
  EXPECT_EQ(text(construct(HashSet_Generic::getClass(), make_range(2))), "{0, 1}");
  EXPECT_EQ(message(construct(List_Generic::getClass(), make_range(2, true))), "the counter broke");
}

TEST(Interfaces, LookForValuesInWhatOnlyIterates) {
  EXPECT_EQ(text(make_range(INT64_MAX).contains(500)), "true") << "the iteration ends where the value is";
  EXPECT_EQ(text(make_range(3).contains(3)), "false");
  EXPECT_EQ(text(make_range(3, true).contains(2)), "true");
  EXPECT_EQ(message(make_range(3, true).contains(3)), "the counter broke");
}

TEST(Interfaces, MarkTheirClasses) {
  const auto flags = [](const Class_Generic& of_class) {
    const std::uint64_t bits = of_class.object().flags();
    return std::string(bits & class_flags::sequence ? "sequence " : "") +
           (bits & class_flags::collection ? "collection " : "") + (bits & class_flags::interface ? "interface" : "");
  };
  EXPECT_EQ(flags(I_Iterable_Generic::getClass()), "interface");
  EXPECT_EQ(flags(I_Map_Generic::getClass()), "collection interface");
  EXPECT_EQ(flags(I_MutableSequence_Generic::getClass()), "sequence collection interface");
  EXPECT_EQ(flags(List_Generic::getClass()), "sequence collection ");
  EXPECT_EQ(flags(List<Integer>::getClass()), "sequence collection ");
  EXPECT_EQ(flags(Tuple_Generic::getClass()), "sequence collection ");
  EXPECT_EQ(flags(HashMap_Generic::getClass()), "collection ");
  EXPECT_EQ(flags(HashSet_Generic::getClass()), "collection ");
  EXPECT_EQ(flags(range_class.required()), "");
}

TEST(Interfaces, AreRecognisedByAncestors) {
  struct row {
    Any value;
    bool sequence, map, set, immutable;
  };
  const row rows[] = {
      {List_Generic(),    true,  false, false, false},
      {Tuple_Generic(),   true,  false, false, true },
      {HashMap_Generic(), false, true,  false, false},
      {HashSet_Generic(), false, false, true,  false},
      {Any(),             false, false, false, true },
      {"text",            false, false, false, true },
  };
  for (const row& each : rows) {
    SCOPED_TRACE(text(each.value));
    EXPECT_EQ(static_cast<bool>(I_Sequence_Generic::cast(each.value)), each.sequence);
    EXPECT_EQ(static_cast<bool>(I_Map_Generic::cast(each.value)), each.map);
    EXPECT_EQ(static_cast<bool>(I_Set_Generic::cast(each.value)), each.set);
    EXPECT_EQ(I_Immutable::matches(each.value.get()), each.immutable);
  }
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
