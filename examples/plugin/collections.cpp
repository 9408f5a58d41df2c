// Grid, a sequence whose items exist while somebody looks at them, its iterator; Layers, a set.
#include "descriptions.h"

#include <bit>

namespace drawing {

using ling::Any;
using ling::class_builder;
using ling::class_definition;
using ling::Class_Generic;
using ling::String;

// --- Grid ------------------------------------------------------------------------------------------------------------

struct grid {
  std::int64_t columns = 0;
  std::int64_t rows = 0;

  bool is_countable() const { return rows == 0 || columns <= INT64_MAX / rows; }
  vector point(std::int64_t index) const {
    return {static_cast<double>(index % columns), static_cast<double>(index / columns)};
  }
};

// An iterator is used by one thread at a time.
struct grid_points {
  grid over;
  std::int64_t next = 0;
};

namespace {

Any length(const grid& self) {
  return self.is_countable()
             ? Any(self.columns * self.rows)
             : Any(drawing_error(
                   String("A grid of {} by {} points is too large to count.").arg(self.columns, self.rows)));
}

vector at(const grid& self, std::int64_t index) {
  const std::int64_t count = self.columns * self.rows;
  const std::int64_t position = index < 0 ? index + count : index;
  if (position < 0 || position >= count) {
    throw drawing_error(String("The grid has no point {}.").arg(index));
  }
  return self.point(position);
}

std::vector<vector> sliced(const grid& self, std::int64_t start, std::int64_t stop) {
  std::vector<vector> points;
  for (std::int64_t i = start; i < stop; ++i) {
    points.push_back(at(self, i));
  }
  return points;
}

// The end of an iteration is an error that nobody sees.
Any next(grid_points& self) {
  if (self.next == self.over.columns * self.over.rows) {
    return ling::StopIteration();
  }
  return ling::make<ling::object_value_native<vector>>(vector_class.required(), self.over.point(self.next++));
}

}  // namespace

constinit const class_definition<grid> grid_class("Grid", [](class_builder<grid>& c) {
  c.module(module_name)
      .doc("The points of a grid, row by row.")
      .parent(ling::I_Sequence_Generic::getClass())
      .constructor("columns, rows", "A grid.",
                   [](std::int64_t columns, std::int64_t rows) {
                     if (columns < 0 || rows < 0) {
                       throw drawing_error("A grid has no less than 0 columns and rows.");
                     }
                     return grid{columns, rows};
                   })
      .property("__length__", "The number of points.", &length)
      .property("elementsType", "What it holds.",
                [](const grid&) { return ling::Type::of(Class_Generic(vector_class.required())); })
      .method("at", "index", "The point; negative indices count from the end.", &at)
      .method("sliced", "start, stop", "The points from there up to there, as a list.", &sliced)
      .method("iter", "", "Goes through the points.", [](const grid& self) { return grid_points{self}; });
});

constinit const class_definition<grid_points> grid_points_class("GridPoints", [](class_builder<grid_points>& c) {
  c.module(module_name)
      .doc("Goes through the points of a grid.")
      .parent(ling::I_Iterator_Generic::getClass())
      .method("next", "", "The next point.", &next);
});

// --- Layers ----------------------------------------------------------------------------------------------------------

struct layers {
  std::uint64_t bits = 0;
};

namespace {

constexpr std::int64_t layer_count = 64;

std::uint64_t bit_of(std::int64_t layer) { return layer >= 0 && layer < layer_count ? std::uint64_t{1} << layer : 0; }

layers make_layers(const ling::Variadic& numbers) {
  layers made;
  for (std::size_t i = 0; i < numbers.length(); ++i) {
    const Any given = numbers.at(static_cast<std::int64_t>(i));
    const auto number = ling::Integer::cast(given);
    const std::uint64_t bit = number ? bit_of(number->value()) : 0;
    if (bit == 0) {
      throw drawing_error(String("There is no layer {}.").arg(given));
    }
    made.bits |= bit;
  }
  return made;
}

ling::List_Generic numbers_of(const layers& self) {
  ling::List_Generic numbers;
  for (std::int64_t layer = 0; layer < layer_count; ++layer) {
    if ((self.bits & bit_of(layer)) != 0) {
      numbers.append(layer);
    }
  }
  return numbers;
}

Any compare(const layers& self, const Any& other) {
  using enum ling::ordering_value;
  const auto* there = ling::native_cast<layers>(other);
  return there == nullptr ? Any(ling::Undefined())
                          : Any(ling::Ordering(self.bits == there->bits ? Equal : Incomparable));
}

}  // namespace

constinit const class_definition<layers> layers_class("Layers", [](class_builder<layers>& c) {
  c.module(module_name)
      .doc("Some of the layers 0 to 63.")
      .parent(ling::I_Set_Generic::getClass())
      .parent(ling::I_Immutable::getClass())
      .constructor("layers...", "These layers.", &make_layers)
      .constant("COUNT", layer_count, "How many there are.")
      .property("__length__", "The number of layers.", [](const layers& self) { return std::popcount(self.bits); })
      .method("contains", "layer", "Whether it is one of them.",
              [](const layers& self, const Any& layer) {
                const auto number = ling::Integer::cast(layer);  // nothing else is
                return number && (self.bits & bit_of(number->value())) != 0;
              })
      .method("iter", "", "Goes through their numbers.",
              [](const layers& self) { return ling::I_Iterable_Generic::unchecked(numbers_of(self)).iter(); })
      .method(Any::__and__, "other",
              [](const layers& self, const layers& other) { return layers{self.bits & other.bits}; })
      .method(Any::__or__, "other",
              [](const layers& self, const layers& other) { return layers{self.bits | other.bits}; })
      .method(Any::__xor__, "other",
              [](const layers& self, const layers& other) { return layers{self.bits ^ other.bits}; })
      .method(Any::__not__, "", [](const layers& self) { return layers{~self.bits}; })
      .method(Any::__compare__, "other", &compare)
      .method(Any::__hash__, "", [](const layers& self) { return self.bits; })
      .method(Any::__display__, "", [](const layers& self) { return String("layers {}").arg(numbers_of(self)); });
});

}  // namespace drawing
