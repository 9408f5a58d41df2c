// Classes: description, inheritance, members that come later, lazy building, C++ data.
#include "ling/testing.h"

#include <atomic>

namespace {

using namespace ling::testing;

int shared = 1;

struct Shape {
  explicit Shape(String called) : name(std::move(called)) {}
  virtual ~Shape() = default;
  virtual double area() const { return 0; }
  String name;
};
struct Tagged {
  int tag = 7;
};
// The second base lies at another address than the object: a wrong upcast shows.
struct Square : Tagged, Shape {
  explicit Square(double length = 0) : Shape("square"), side(length) {}
  double area() const override { return side * side; }
  double side;
};

constinit const class_definition<Shape> shape_class("Shape", [](class_builder<Shape>& c) {
  c.module("test.shapes")
      .constructor("name", "A shape without an area.", [](const String& name) { return Shape(name); }, {"unnamed"})
      .field("note", "Whatever.", "empty")
      .property(
          "name", "What it is called.", [](const Shape& self) { return self.name; },
          [](Shape& self, const String& name) { self.name = name; })
      .property("area", "Its size.", &Shape::area)
      .method("describe", "prefix", "A sentence.",
              [](const Shape& self, const String& prefix) { return String("{} {}").arg(prefix, self.name); }, {"a"})
      .method("twice", "number", "", [](const Shape&, int number) { return number * 2; })
      .method("twice", "text", "", [](const Shape&, const String& text) { return String("{}{}").arg(text, text); })
      .class_method("unit", "", "The unit of all areas.", [] { return String("m2"); })
      .property(
          "shared", "", [] { return shared; }, [](int value) { shared = value; });
});

constinit const class_definition<Square> square_class("Square", [](class_builder<Square>& c) {
  c.module("test.shapes")
      .native_parent<Shape>(shape_class.required())
      .constructor("side", "A square.", [](double side) { return Square(side); })
      .field("corner", "Another field.", 4)
      .property("area", "Side by side.", [](const Square& self) { return self.side * self.side + 0.5; })
      .property("tag", "From the other base.", [](const Square& self) { return self.tag; });
});

const meta_field_untyped note("note");

TEST(Class, DescendantsInheritHideAndConvert) {
  const Class_Generic shape(shape_class.required());
  const Any square = Class_Generic(square_class.required())(3);
  EXPECT_EQ(text(property(square, "name")), "square") << "a getter of the parent reads the parent's part of the data";
  EXPECT_TRUE(is_none(square.setPropertyValue(meta_property_untyped("name"), "other")));
  EXPECT_TRUE(is_none(square.setFieldValue(note, 3)));
  const Any unnamed = shape();
  expect_outcomes({
      {property(square, "area"), "9.5"},
      {property(square, "tag"), "7"},
      {call(square, "describe"), "a other"},
      {call(square, "describe", "the"), "the other"},
      {call(square, "unit"), "m2"},
      {call(square, "twice", 3), "6"},
      {call(square, "twice", "ab"), "abab"},
      {square.fieldValue(meta_field_untyped("corner")), "4"},
      {square.fieldValue(note), "3"},
      {unnamed.fieldValue(note), "empty"},
      {property(unnamed, "name"), "unnamed"},
  });
  EXPECT_NE(native_cast<Shape>(square), nullptr);
  EXPECT_EQ(native_cast<Square>(unnamed), nullptr);
}

struct Blob {};
constinit const class_definition<Blob> blob_class("Blob", [](class_builder<Blob>& c) {
  c.module("test.shapes").parent(shape_class.required());
});

TEST(Class, IsCalledAndReadLikeAnyValue) {
  const Class_Generic shape(shape_class.required());
  const Class_Generic blob(blob_class.required());
  const named_argument name = {"name", "oval"};
  const meta_property_untyped shared_property("shared");
  EXPECT_TRUE(is_none(shape().setPropertyValue(shared_property, 5)));
  expect_outcomes({
      {shape.signature(), "(name: String = \"unnamed\") -> Shape"},
      {property(shape.object().call_named({}, {&name, 1}), "name"), "oval"},
      {shape.propertyValue(shared_property), "5"},
      {property(shape, "area"), "Error: The property 'area' is missing in 'Class'."},
      {shape().boundMethod(meta_method_untyped("unit")).value()(), "m2"},
      {blob.signature(), "() -> Blob"},
      {blob("x"), "Error: The class test.shapes.Blob has no constructor."}, // that of other data makes none of it
      {blob.object().call_named({}, {&name, 1}),
       "BadArgument: Bad call of 'test.shapes.Blob': no parameter is named 'name'."},
  });
}

TEST(Class, DescendsFromEachOtherOnceAndNeverFromItself) {
  auto& first = *new object_value_class("First");
  auto& second = *new object_value_class("Second");
  auto& third = *new object_value_class("Third");
  first.add_parent_unsafe(first);
  second.add_parent_unsafe(first);
  second.add_parent_unsafe(first);
  first.add_parent_unsafe(second);
  third.add_parent_unsafe(second);
  third.add_parent_unsafe(first);
  expect_outcomes({
      {property(Class_Generic(first), "parents"), "[]"},
      {property(Class_Generic(second), "parents"), "[<class First>]"},
      {property(Class_Generic(third), "parents"), "[<class Second>, <class First>]"},
      {third.ancestors().size(), "3"},
  });
}

TEST(Class, ErrorsNameTheCulprit) {
  const Class_Generic shape(shape_class.required());
  const Any round = shape("circle");
  const class_member* describe = shape_class.required().find_member(meta_method_untyped("describe").entry());
  ASSERT_NE(describe, nullptr);
  expect_outcomes({
      {shape("a", "b"), "BadArgument: Bad call of 'test.shapes.Shape.__init__': expected 0 to 1 arguments, got 2."},
      {call(round, "missing"), "Error: The method 'missing' is missing in 'Shape'."},
      {property(round, "missing"), "Error: The property 'missing' is missing in 'Shape'."},
      {round.fieldValue(meta_field_untyped("missing")), "Error: The field 'missing' is missing in 'Shape'."},
      {round.setPropertyValue(meta_property_untyped("area"), 1),
       "Error: The property 'area' is read-only for '<test.shapes.Shape>'."},
      {round.setPropertyValue(meta_property_untyped("name"), 1),
       "BadArgument: Bad call of 'name': the argument 'value' must be String, not Integer: 1"},
      {I_Callable_Generic::unchecked(describe->method)(5, "x"),
       "BadArgument: Bad call of 'test.shapes.Shape.describe': the argument 'self' must be Shape, not Integer: 5"},
      {I_Callable_Generic::unchecked(describe->method)(make_computed<Any>([&] { return round; })), "a circle"},
      {I_Immutable::getClass()(), "Error: The interface ling.I_Immutable has no instances."},
      {Error::getClass().allocateInstance(), "Error: The class ling.Error has no default instance."},
  });
}

TEST(Class, MembersAddedLaterReachDescendantsWhileOthersLookThemUp) {
  auto& parent = *new object_value_class("LateParent");
  auto& child = *new object_value_class("LateChild");
  child.add_parent_unsafe(parent);
  child.add_property_unsafe("own", Property::constant("child"));
  const Any instance = child.allocate_instance();
  std::atomic<bool> done = false;
  on_eight_threads([&](int thread) {
    for (int i = 0; thread == 0 && i < 1000; ++i) {
      parent.add_property_unsafe(String("p{}").arg(i), Property::constant(i));
    }
    while (thread != 0 && !done) {
      ASSERT_EQ(text(property(instance, "own")), "child");
      ASSERT_LE(child.properties().size(), 1001u);
    }
    done = true;
  });
  const auto constant = [](int value) { return make_function("constant", "", "", [value] { return value; }); };
  child.add_field_unsafe("field", "child", "");
  parent.add_field_unsafe("field", "hidden", "");
  parent.add_property_unsafe("own", Property::constant("hidden"));
  parent.add_property_unsafe("p0", Property::constant("replaced"));
  parent.add_method_unsafe("method", constant(1));
  parent.add_method_unsafe("method", constant(2));
  const Any late = child.allocate_instance();
  expect_outcomes({
      {property(instance, "p999"), "999"},
      {property(instance, "p0"), "replaced"},
      {property(instance, "own"), "child"},
      {call(instance, "method"), "2"},
      {late.fieldValue(meta_field_untyped("field")), "child"},
      {child.properties().size(), "1001"},
      {Property::unchecked(child.properties()[1]->property).read(instance), "replaced"},
  });
}

constinit const class_definition<void> recursive_class("Recursive", [](class_builder<void>& c) {
  EXPECT_EQ(message(recursive_class.get()), "Recursive call detected while initializing class: Recursive");
  c.doc("Built all the same.");
});
constinit const class_definition<void> wrong_class("Wrong", [](class_builder<void>& c) {
  c.property("x", "", [](const Any&, const Any&) { return 1; });
});

constinit const class_definition<void> homeless_class("Homeless", [](class_builder<void>& c) { c.module("test..x"); });

TEST(Class, BuildingReportsRecursionAndWrongAccessors) {
  EXPECT_FALSE(recursive_class.get().is_error());
  EXPECT_EQ(message(wrong_class.get()), "[property_builder::getter] Too many parameters in the getter function.");
  EXPECT_EQ(message(property_builder_base("x", "")
                        .getter([] { return 1; })
                        .setter([](const Any&, const Any&, const Any&) {})
                        .build()),
            "[property_builder::setter] Too many parameters in the setter function.");
  EXPECT_EQ(message(homeless_class.get()),
            "A module name is made of parts between dots, none of them empty: 'test..x'.");
  ASSERT_FALSE(initialize().is_error());
  const class_registration registered{wrong_class};
  EXPECT_TRUE(message(initialize()).starts_with("[property_builder::getter]"));
}

TEST(Class, ThatIsCountedEndsWithItsLastHandle) {
  auto& parent = *new object_value_class("Lasting");
  Any passing = make<object_value_class>("Passing", class_lifetime::counted);
  auto& of_class = Class_Generic::unchecked(passing).object();
  of_class.add_parent_unsafe(parent);
  Any last = make<object_value_class>("Last", class_lifetime::counted);
  Class_Generic::unchecked(last).object().add_parent_unsafe(of_class);
  const WeakReference reference(passing);
  const WeakReference last_reference(last);
  {
    Any function = make_function("f", "", "", [] {});
    auto& declared = static_cast<object_value_callable&>(*function.get());
    declared.set_declaring_context(last);
    declared.set_declaring_context(last);  // kept once
  }
  parent.add_class_property_unsafe("later", Property::constant(5));
  EXPECT_EQ(text(property(last, "later")), "5");
  {
    const Type types[] = {Type::of(Class_Generic::unchecked(last)), Integer::getType()};
    const Type either = type_union_of_unsafe(types);
    passing = last = Any();
    EXPECT_FALSE(is_none(reference.lock())) << "a type keeps its class, a class its parents";
    EXPECT_EQ(text(either), "Last | Integer");
  }
  EXPECT_TRUE(is_none(last_reference.lock()) && is_none(reference.lock()));
  parent.add_class_property_unsafe("later", Property::constant(6));
}

}  // namespace
