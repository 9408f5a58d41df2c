// The text of values for people.
#include "ling/testing.h"

#include <limits>

namespace {

using namespace ling::testing;

// Displays its part in angle brackets; without one, an Error.
struct Box {
  Any part;
};
constinit const class_definition<Box> box_class("Box", [](class_builder<Box>& c) {
  c.module("test.display")
      .constructor("part", "", [](const Any& part) { return Box{part}; })
      .method("open", "", "", [](const Box& self) { return self.part; })
      .method(Any::__display__, "", [](const Box& self) -> Any {
        return is_none(self.part) ? Any(Error("nothing in it")) : String("<{}>").arg(self.part);
      });
});
constinit const class_definition<void> plain_class("Plain", [](class_builder<void>& c) { c.module("test.display"); });

// Shows another one, which stands for the same thing.
extern const class_definition<void> carrier_class;
struct carrier final : object_value_instance {
  carrier() : object_value_instance(carrier_class.required()) {}
  std::uintptr_t identity() const noexcept override { return reinterpret_cast<std::uintptr_t>(&carrier_class); }
};
constinit const class_definition<void> carrier_class("Carrier", [](class_builder<void>& c) {
  c.module("test.display").method(Any::__display__, "", [](const Any&) { return String("<{}>").arg(make<carrier>()); });
});

TEST(Display, ShowsEveryKindOfValue) {
  const Class_Generic box(box_class.required());
  const std::pair<Any, const char*> cases[] = {
      {-0.0, "-0.0"},
      {1e15, "1000000000000000.0"},
      {1e16, "1e+16"},
      {0.0001, "0.0001"},
      {0.00001, "1e-05"},
      {-std::numeric_limits<double>::infinity(), "-inf"},
      {-std::numeric_limits<double>::quiet_NaN(), "nan"},
      {Tuple_Generic({"a\"\\\n\r\t\x01\x7fé", 1}), R"(("a\"\\\n\r\t\x01\x7fé", 1))"},
      {ByteArray("a\"\xE9\n"), R"(b"a\"\xe9\n")"},
      {make_map({"a", 1, 2.5, None()}), "{\"a\": 1, 2.5: None}"},
      {make_set({"x"}), "{\"x\"}"},
      {box, "<class test.display.Box>"},
      {box.definedMethod(meta_method_untyped("open")).value(), "<method test.display.Box.open>"},
      {Class_Generic(plain_class.required()).allocateInstance(), "<test.display.Plain>"},
      {make_function("f", "", "", [] {}), "<function f>"},
      {box("in"), "<in>"},
  };
  for (const auto& [value, expected] : cases) {
    EXPECT_EQ(display(value).value().view(), expected);
    EXPECT_EQ(text(value), expected);
  }
  const Any broken = List_Generic({1, box(None()), 2});
  EXPECT_EQ(message(display(broken)), "nothing in it");
  EXPECT_EQ(text(broken), "[1, <test.display.Box: nothing in it>, 2]");
}

TEST(Display, StopsAtContainersThatHoldThemselves) {
  List_Generic list{1};
  HashMap_Generic map;
  map.set("list", list);
  map.set("map", map);
  list.append(map);
  list.append(Tuple_Generic{list});
  EXPECT_EQ(text(list), "[1, {\"list\": [...], \"map\": {...}}, ([...],)]");
  EXPECT_EQ(text(map), "{\"list\": [1, {...}, ([...],)], \"map\": {...}}");

  // The way round may lead through a display method that starts anew.
  const Any box = Class_Generic(box_class.required())(list);
  list.append(box);
  EXPECT_EQ(text(box), "<[1, {\"list\": [...], \"map\": {...}}, ([...],), <test.display.Box>]>");
  list.object().clear();
  map.object().clear();

  // Or come back to another object that stands for the same thing.
  EXPECT_EQ(text(make<carrier>()), "<<test.display.Carrier>>");

  const List_Generic twice{0};
  EXPECT_EQ(text(List_Generic({twice, twice})), "[[0], [0]]") << "holding something twice is no cycle";
}

TEST(Display, CutsDeepNestingShort) {
  Any tuple;
  Any list;
  for (int i = 0; i < 100000; ++i) {
    tuple = Tuple_Generic{tuple};
    list = List_Generic{list};
  }
  EXPECT_NE(display_text(tuple).find("((...),),)"), String::npos);
  EXPECT_NE(display_text(list).find("[[...]]"), String::npos);
  EXPECT_LT(display_text(tuple).length(), 2000u);
}

}  // namespace
