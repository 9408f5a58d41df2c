// The descriptions of the classes, as far as other files of the plug-in need them.
#pragma once

#include "ling/ling.h"
#include "shapes.h"

namespace drawing {

// Python imports host modules whose names begin with "ling.".
inline constexpr const char* module_name = "ling.drawing";

struct document;  // the class Drawing
struct grid;
struct grid_points;
struct layers;

extern const ling::class_definition<vector> vector_class;
extern const ling::class_definition<shape> shape_class;
extern const ling::class_definition<circle> circle_class;
extern const ling::class_definition<rectangle> rectangle_class;
extern const ling::class_definition<document> drawing_class;
extern const ling::class_definition<grid> grid_class;
extern const ling::class_definition<grid_points> grid_points_class;
extern const ling::class_definition<layers> layers_class;
extern const ling::class_definition<ling::Error> drawing_error_class;

// The plug-in's own error.
inline ling::Error drawing_error(const ling::String& message) {
  return ling::Error(ling::Class_Generic(drawing_error_class.required()), message);
}

}  // namespace drawing
