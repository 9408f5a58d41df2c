// Classes: description, inheritance, members that come later, lazy building, C++ data.
#include "ling/ling.h"

#include <gtest/gtest.h>

#include <barrier>
#include <thread>

namespace {

using namespace ling;

struct Shape {
  String name;
  virtual ~Shape() = default;
  virtual double area() const { return 0; }
};
struct Tagged {
  int tag = 7;
};
// The second base lies at another address than the object: a wrong upcast shows.
struct Square : Tagged, Shape {
  double side = 0;
  double area() const override { return side * side; }
};

Shape make_shape(const String& name) {
  Shape shape;
  shape.name = name;
  return shape;
}

constinit const class_definition<Shape> shape_class("Shape", [](class_builder<Shape>& c) {
  c.module("test.shapes")
      .doc("Something with an area.")
      .constructor("name", "A shape without an area.", &make_shape, {"unnamed"})
      .field("note", "Whatever.", "empty")
      .property(
          "name", "What it is called.", [](const Shape& self) { return self.name; },
          [](Shape& self, const String& name) { self.name = name; })
      .property("area", "Its size.", &Shape::area)
      .method("describe", "prefix", "A sentence.",
              [](const Shape& self, const String& prefix) { return String("{} {}").arg(prefix, self.name); }, {"a"})
      .class_method("unit", "", "The unit of all areas.", [] { return String("m2"); })
      .constant("LIMIT", 100, "Nothing is larger.");
});

constinit const class_definition<Square> square_class("Square", [](class_builder<Square>& c) {
  c.module("test.shapes")
      .native_parent<Shape>(shape_class.required())
      .constructor("side", "A square.",
                   [](double side) {
                     Square square;
                     square.side = side;
                     square.name = "square";
                     return square;
                   })
      .field("corner", "Another field.", 4)
      .property("area", "Side by side.", [](const Square& self) { return self.side * self.side + 0.5; })
      .property("tag", "From the other base.", [](const Square& self) { return self.tag; });
});

String text(const Any& value) { return display_text(value); }
Any get(const Any& value, const char* property) { return value.propertyValue(meta_property_untyped(property)); }
Any call(const Any& value, const char* method, std::initializer_list<Any> arguments) {
  return call_method(value, meta_method_untyped(method), {arguments.begin(), arguments.size()});
}

TEST(Class, MembersAnswerAsDescribed) {
  const Class_Generic shape(shape_class.required());
  EXPECT_EQ(qualname(shape), "test.shapes.Shape");
  EXPECT_EQ(shape.doc(), "Something with an area.");
  const Any unnamed = shape();
  EXPECT_EQ(text(get(unnamed, "name")), "unnamed");
  const Any round = shape("circle");
  EXPECT_EQ(text(call(round, "describe", {})), "a circle");
  EXPECT_EQ(text(call(round, "describe", {"the"})), "the circle");
  EXPECT_EQ(text(call(round, "unit", {})), "m2");
  EXPECT_EQ(text(get(round, "LIMIT")), "100");
  EXPECT_EQ(text(round.fieldValue(meta_field_untyped("note"))), "empty");
  EXPECT_TRUE(is_none(round.setFieldValue(meta_field_untyped("note"), 3)));
  EXPECT_EQ(text(round.fieldValue(meta_field_untyped("note"))), "3");
  EXPECT_EQ(text(shape().fieldValue(meta_field_untyped("note"))), "empty") << "fields belong to one object";
}

TEST(Class, DescendantsInheritHideAndConvert) {
  const Any square = Class_Generic(square_class.required())(3);
  EXPECT_EQ(text(get(square, "name")), "square") << "a getter of the parent reads the parent's part of the data";
  EXPECT_EQ(text(get(square, "area")), "9.5");
  EXPECT_EQ(text(get(square, "tag")), "7");
  EXPECT_TRUE(is_none(square.setPropertyValue(meta_property_untyped("name"), "other")));
  EXPECT_EQ(text(call(square, "describe", {})), "a other");
  EXPECT_EQ(text(square.fieldValue(meta_field_untyped("corner"))), "4");
  EXPECT_EQ(text(square.fieldValue(meta_field_untyped("note"))), "empty");
  EXPECT_TRUE(class_of(square).is_ancestor(shape_class.required()));
  EXPECT_NE(native_cast<Shape>(square), nullptr);
  EXPECT_EQ(native_cast<Square>(Class_Generic(shape_class.required())()), nullptr);
}

TEST(Class, ErrorsNameTheCulprit) {
  const Class_Generic shape(shape_class.required());
  const Any round = shape("circle");
  const struct {
    Any outcome;
    const char* message;
  } cases[] = {
      {shape(1), "Bad call of 'test.shapes.Shape.__init__': the argument 'name' must be String, not Integer: 1"},
      {shape("a", "b"), "Bad call of 'test.shapes.Shape.__init__': expected 0 to 1 arguments, got 2."},
      {call(round, "describe", {2}),
       "Bad call of 'test.shapes.Shape.describe': the argument 'prefix' must be String, not Integer: 2"},
      {call(round, "missing", {}), "The method 'missing' is missing in 'Shape'."},
      {get(round, "missing"), "The property 'missing' is missing in 'Shape'."},
      {round.fieldValue(meta_field_untyped("missing")), "The field 'missing' is missing in 'Shape'."},
      {round.setPropertyValue(meta_property_untyped("area"), 1),
       "The property 'area' is read-only for '<test.shapes.Shape>'."},
      {round.setPropertyValue(meta_property_untyped("name"), 1),
       "Bad call of 'name': the argument 'value' must be String, not Integer: 1"},
      {shape_class.required().find_member(meta_method_untyped("describe").entry()) != nullptr
           ? I_Callable_Generic::unchecked(
                 shape_class.required().find_member(meta_method_untyped("describe").entry())->method)(5, "x")
           : Any(),
       "Bad call of 'test.shapes.Shape.describe': the argument 'self' must be Shape, not Integer: 5"},
      {square_class.required().allocate_instance(), nullptr},
      {I_Immutable::getClass()(), "The interface ling.I_Immutable has no instances."},
      {Error::getClass().allocateInstance(), "The class ling.Error has no default instance."},
  };
  for (const auto& each : cases) {
    if (each.message == nullptr) {
      EXPECT_FALSE(is_error_result(each.outcome));
      continue;
    }
    ASSERT_TRUE(is_error_result(each.outcome)) << each.message;
    EXPECT_EQ(Error::unchecked(each.outcome).message().view(), each.message);
  }
}

TEST(Class, MembersAddedLaterReachDescendantsThatDoNotHideThem) {
  auto& parent = *new object_value_class("LateParent");
  auto& child = *new object_value_class("LateChild");
  child.add_parent_unsafe(parent);
  child.add_property_unsafe("own", Property::constant("child"));
  const Any instance = child.allocate_instance();
  for (int i = 0; i < 200; ++i) {
    parent.add_property_unsafe(String("p{}").arg(i), Property::constant(i));
  }
  parent.add_property_unsafe("own", Property::constant("parent"));
  parent.add_property_unsafe("p0", Property::constant("replaced"));
  EXPECT_EQ(text(get(instance, "p199")), "199");
  EXPECT_EQ(text(get(instance, "p0")), "replaced");
  EXPECT_EQ(text(get(instance, "own")), "child");
  EXPECT_EQ(child.properties().size(), 201u);
}

constinit const class_definition<void> recursive_class("Recursive", [](class_builder<void>& c) {
  const Result<Class_Generic> itself = recursive_class.get();
  ASSERT_TRUE(itself.is_error());
  EXPECT_EQ(itself.error().message(), "Recursive call detected while initializing class: Recursive");
  c.doc("Built all the same.");
});
constinit const class_definition<void> wrong_class("Wrong", [](class_builder<void>& c) {
  c.property("x", "", [](const Any&, const Any&) { return 1; });
});

TEST(Class, BuildingReportsRecursionAndWrongAccessors) {
  EXPECT_FALSE(recursive_class.get().is_error());
  const Result<Class_Generic> wrong = wrong_class.get();
  ASSERT_TRUE(wrong.is_error());
  EXPECT_EQ(wrong.error().message(), "[property_builder::getter] Too many parameters in the getter function.");
  EXPECT_EQ(property_builder_base("x", "")
                .getter([] { return 1; })
                .setter([](const Any&, const Any&, const Any&) {})
                .build()
                .error()
                .message(),
            "[property_builder::setter] Too many parameters in the setter function.");
}

constinit const class_definition<void> contested_parent("ContestedParent",
                                                        [](class_builder<void>& c) { c.module("test.contested"); });
constinit const class_definition<void> contested_class("Contested", [](class_builder<void>& c) {
  std::this_thread::yield();
  c.module("test.contested").parent(contested_parent.required()).constant("x", 1, "");
});

TEST(Class, EightThreadsGetTheSameLazyClass) {
  constexpr int count = 8;
  std::barrier start(count);
  object_value_class* built[count] = {};
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      built[i] = &contested_class.required();
      EXPECT_EQ(text(get(built[i]->allocate_instance(), "x")), "1");
    });
  }
  for (std::thread& each : threads) {
    each.join();
  }
  for (object_value_class* each : built) {
    EXPECT_EQ(each, built[0]);
  }
  EXPECT_TRUE(find_module("test.contested").value().classes().get("Contested").is_same(Class_Generic(*built[0])));
}

TEST(Class, LookupsGoOnWhileMembersAreAdded) {
  auto& growing = *new object_value_class("Growing");
  growing.add_property_unsafe("first", Property::constant(1));
  const Any instance = growing.allocate_instance();
  std::atomic<bool> done = false;
  std::vector<std::thread> readers;
  for (int i = 0; i < 4; ++i) {
    readers.emplace_back([&] {
      while (!done) {
        ASSERT_EQ(text(get(instance, "first")), "1");
        ASSERT_LE(growing.properties().size(), 1001u);
      }
    });
  }
  for (int i = 0; i < 1000; ++i) {
    growing.add_property_unsafe(String("p{}").arg(i), Property::constant(i));
  }
  done = true;
  for (std::thread& each : readers) {
    each.join();
  }
  EXPECT_EQ(growing.properties().size(), 1001u);
}

}  // namespace
