// How Vector and the shapes look to scripts.
#include "descriptions.h"

#include <functional>

namespace drawing {

using ling::Any;
using ling::class_builder;
using ling::class_definition;
using ling::Class_Generic;
using ling::String;

namespace {

vector sum(const vector& self, const vector& other) { return self + other; }
vector difference(const vector& self, const vector& other) { return self - other; }
// A C++ exception arrives in Python as an exception with its text; one that is an Error arrives as that error.
vector quotient(const vector& self, double divisor) {
  if (divisor == 0) {
    throw drawing_error("A vector cannot be divided by 0.");
  }
  return self / divisor;
}

// Undefined: not mine to say.
Any compare(const vector& self, const Any& other) {
  using enum ling::ordering_value;
  const auto* vector_there = ling::native_cast<vector>(other);
  return vector_there == nullptr ? Any(ling::Undefined())
                                 : Any(ling::Ordering(self == *vector_there ? Equal : Incomparable));
}

std::uint64_t hash(const vector& self) {
  const std::hash<double> number;
  return number(self.x) * 31 + number(self.y);
}

double positive(double number, const char* what) {
  if (!(number > 0)) {
    throw drawing_error(String("The {} must be positive, not {}.").arg(what, number));
  }
  return number;
}

void tag(shape& self, const ling::Variadic& tags) {
  for (std::size_t i = 0; i < tags.length(); ++i) {
    self.tags.emplace_back(ling::display_text(tags.at(static_cast<std::int64_t>(i))).view());
  }
}

}  // namespace

// `a -= b` has a method of its own: Python does not take `a - b` in its place. Where objects never change, it is the
// same one.
constinit const class_definition<vector> vector_class("Vector", [](class_builder<vector>& c) {
  c.module(module_name)
      .doc("A place or a distance. Never changes, so it can be the key of a map.")
      .parent(ling::I_Immutable::getClass())
      .constructor("x, y", "A vector.",
                   [](double x, double y) {
                     return vector{x, y};
                   },
                   {0, 0})
      .property("x", "To the right.", [](const vector& self) { return self.x; })
      .property("y", "Upwards.", [](const vector& self) { return self.y; })
      .method(Any::__add__, "other", &sum)
      .method(Any::__iadd__, "other", &sum)
      .method(Any::__sub__, "other", &difference)
      .method(Any::__isub__, "other", &difference)
      .method(Any::__div__, "divisor", &quotient)
      .method(Any::__idiv__, "divisor", &quotient)
      .method(Any::__compare__, "other", &compare)
      .method(Any::__hash__, "", &hash)
      .method(Any::__display__, "", [](const vector& self) { return String("({}, {})").arg(self.x, self.y); });
});

// The methods of Shape take a Circle as well, because Circle says that its C++ data is a shape (native_parent).
constinit const class_definition<shape> shape_class("Shape", [](class_builder<shape>& c) {
  c.module(module_name)
      .doc("What a drawing is made of. Make a Circle or a Rectangle.")
      .parent(ling::I_HasName::getClass())
      .property(
          "name", "What it is called.", [](const shape& self) { return self.name; },
          [](shape& self, const std::string& name) { self.name = name; })
      .property(
          "position", "Where it is.", [](const shape& self) { return self.position; },
          [](shape& self, const vector& position) { self.position = position; })
      .property("area", "How much it covers.", &shape::area)
      .property("tags", "The texts it was tagged with.", [](const shape& self) { return self.tags; })
      .field("note", "A remark of anybody's.", "")
      .method("move", "x, y", "Moves it; only to the right when that is all that is said.",
              [](shape& self, double x, double y) {
                self.position = self.position + vector{x, y};
              },
              {0})
      .method("move_to", "position", "Moves it there.",
              [](shape& self, const vector& position) { self.position = position; })
      // Two functions under one name: the arguments decide.
      .method("scale", "factor", "Makes it larger or smaller.",
              [](shape& self, double factor) { self.scale(factor, factor); })
      .method("scale", "x, y", "Makes it wider and higher.", &shape::scale)
      .method("tag", "tags...", "Adds tags.", &tag);
});

constinit const class_definition<circle> circle_class("Circle", [](class_builder<circle>& c) {
  c.module(module_name)
      .doc("A circle around its position.")
      .native_parent<shape>(Class_Generic(shape_class.required()))
      .constructor("radius, position", "A circle.",
                   [](double radius, const vector& position) { return circle(positive(radius, "radius"), position); },
                   {Class_Generic(vector_class.required())()})
      .property(
          "radius", "From the position to the edge.", [](const circle& self) { return self.radius; },
          [](circle& self, double radius) { self.radius = positive(radius, "radius"); })
      .class_method("unit", "", "The circle with radius 1.", [] { return circle(1, {}); });
});

constinit const class_definition<rectangle> rectangle_class("Rectangle", [](class_builder<rectangle>& c) {
  c.module(module_name)
      .doc("A rectangle with a corner at its position.")
      .native_parent<shape>(Class_Generic(shape_class.required()))
      .constructor("width, height, position", "A rectangle.",
                   [](double width, double height, const vector& position) {
                     return rectangle(positive(width, "width"), positive(height, "height"), position);
                   },
                   {Class_Generic(vector_class.required())()})
      .property("width", "From left to right.", [](const rectangle& self) { return self.width; })
      .property("height", "From bottom to top.", [](const rectangle& self) { return self.height; });
});

}  // namespace drawing
