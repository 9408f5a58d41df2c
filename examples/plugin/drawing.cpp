// Drawing: a collection of the host. It says that it is an I_MutableSequence and has the members of one, so Python sees
// a list: indices, slices, `in`, `for`, `len`, `del`, `+` and `+=`.
#include "descriptions.h"

namespace drawing {

using ling::Any;
using ling::class_builder;
using ling::class_definition;
using ling::Class_Generic;
using ling::I_Iterable_Generic;
using ling::I_MutableSequence_Generic;
using ling::List_Generic;
using ling::String;
using ling::Type;

namespace {

Type shape_type() { return Type::of(Class_Generic(shape_class.required())); }

// A list that takes nothing but shapes.
List_Generic new_list_of_shapes() {
  const Type items[] = {shape_type()};
  return List_Generic::unchecked(ling::make<ling::object_value_list>(
      &ling::generic_instance(List_Generic::getClass(), items).object(), std::vector<Any>()));
}

}  // namespace

struct document {
  std::string title;
  List_Generic shapes = new_list_of_shapes();
  bool is_locked = false;

  I_MutableSequence_Generic sequence() const { return I_MutableSequence_Generic::unchecked(shapes); }
};

namespace {

// Every change of what the drawing is made of comes through here.
template <class Change>
Any change(const document& self, Change what) {
  if (self.is_locked) {
    return drawing_error(String("The drawing '{}' is locked.").arg(self.title));
  }
  return what(self.sequence());
}

Any set(const document& self, std::int64_t index, const Any& shape) {
  return change(self, [&](const auto& shapes) { return shapes.set(index, shape); });
}
Any append(const document& self, const Any& shape) {
  return change(self, [&](const auto& shapes) { return shapes.append(shape); });
}
Any append_at(const document& self, std::int64_t index, const Any& shape) {
  return change(self, [&](const auto& shapes) { return shapes.appendAt(index, shape); });
}
Any remove_at(const document& self, std::int64_t index, std::int64_t count) {
  return change(self, [&](const auto& shapes) { return shapes.removeAt(index, count); });
}
Any remove_one(const document& self, const Any& shape) {
  return change(self, [&](const auto& shapes) { return shapes.removeOne(shape); });
}
Any pop(const document& self, std::int64_t index) {
  return change(self, [&](const auto& shapes) { return shapes.pop(index); });
}
Any clear(const document& self) {
  return change(self, [](const auto& shapes) { return shapes.clear(); });
}
// Answers the drawing, because what `a += b` leaves in `a` is the answer. A receiver that is taken as a value of any
// kind, for that purpose, is checked here and not by the runtime.
Any extend(const Any& self, const I_Iterable_Generic& shapes) {
  const auto* drawing = ling::native_cast<document>(self);
  if (drawing == nullptr) {
    return ling::BadArgument("extend is a method of drawings.");
  }
  const Any failure = change(*drawing, [&](const auto& own) { return own.extend(shapes); });
  return ling::is_error_result(failure) ? failure : self;
}

Any concat(const document& self, const I_Iterable_Generic& shapes) {
  document both{self.title};
  for (const I_Iterable_Generic& part : {I_Iterable_Generic::unchecked(self.shapes), shapes}) {
    if (const auto added = both.sequence().extend(part); added.is_error()) {
      return added.error();
    }
  }
  return ling::make<ling::object_value_native<document>>(drawing_class.required(), std::move(both));
}

// Computed when somebody looks at it, and then kept.
Any center(const document& self) {
  return ling::make_computed<Any>([shapes = self.shapes]() -> Any {
    const std::vector<Any> items = shapes.copyItems();
    if (items.empty()) {
      return drawing_error("An empty drawing has no center.");
    }
    vector sum;
    for (const Any& item : items) {
      sum = sum + ling::native_cast<shape>(item)->position;
    }
    const Any x_and_y[] = {sum.x / static_cast<double>(items.size()), sum.y / static_cast<double>(items.size())};
    return Class_Generic(vector_class.required()).callWith(x_and_y);
  });
}

void describe_reading(class_builder<document>& c) {
  c.property("__length__", "The number of shapes.", [](const document& self) { return self.shapes.length(); })
      .property("elementsType", "What it holds.", [](const document&) { return shape_type(); })
      .method("at", "index", "The shape; negative indices count from the end.",
              [](const document& self, std::int64_t index) { return self.shapes.at(index); })
      .method("atOr", "index, default", "The shape, or the default when there is none.",
              [](const document& self, std::int64_t index, const Any& otherwise) {
                return self.sequence().atOr(index, otherwise);
              },
              {ling::None()})
      .method("indexOf", "shape, from", "Where it is, from there on; -1 when it is not there.",
              [](const document& self, const Any& shape, std::int32_t from) {
                return self.sequence().indexOf(shape, from);
              },
              {0})
      .method("contains", "shape", "Whether it is there.",
              [](const document& self, const Any& shape) { return self.sequence().contains(shape); })
      .method("sliced", "start, stop", "The shapes from there up to there, as a list.",
              [](const document& self, std::int64_t start, std::int64_t stop) {
                return self.sequence().sliced(start, stop);
              })
      .method("iter", "", "Goes through the shapes of this moment.",
              [](const document& self) { return self.sequence().iter(); })
      .method("concat", "shapes", "A new drawing with these shapes and those.", &concat);
}

void describe_changing(class_builder<document>& c) {
  c.method("set", "index, shape", "Replaces a shape.", &set)
      .method("append", "shape", "Adds a shape in front of the others.", &append)
      .method("appendAt", "index, shape", "Adds a shape behind the one at that place.", &append_at)
      .method("extend", "shapes", "Adds shapes.", &extend)
      .method("removeAt", "index, count", "Removes that many shapes.", &remove_at, {1})
      .method("removeOne", "shape", "Removes a shape; whether it was there.", &remove_one)
      .method("pop", "index", "Removes a shape and answers it.", &pop, {-1})
      .method("clear", "", "Removes all shapes.", &clear);
}

}  // namespace

constinit const class_definition<document> drawing_class("Drawing", [](class_builder<document>& c) {
  c.module(module_name)
      .doc("Shapes, one above the other.")
      .parent(I_MutableSequence_Generic::getClass())
      .constructor("title, shapes", "A drawing.",
                   [](const std::string& title, const std::optional<I_Iterable_Generic>& shapes) {
                     document made{title};
                     if (shapes) {
                       if (const auto added = made.sequence().extend(*shapes); added.is_error()) {
                         throw added.error();
                       }
                     }
                     return made;
                   },
                   {ling::None()})
      .property("title", "What it shows.", [](const document& self) { return self.title; })
      .property(
          "is_locked", "Whether its shapes stay as they are.", [](const document& self) { return self.is_locked; },
          [](document& self, bool locked) { self.is_locked = locked; })
      .property("center", "The middle of the positions.", &center);
  describe_reading(c);
  describe_changing(c);
});

constinit const class_definition<ling::Error> drawing_error_class("DrawingError", [](class_builder<ling::Error>& c) {
  c.module(module_name).doc("What a drawing program refuses.").parent(ling::Error::getClass());
});

}  // namespace drawing
