// A drawing program as a plug-in: what a host's library looks like when its classes are for scripts.
//
//   build/release/bin/ling --load build/release/lib/drawing.so run examples/plugin/drawing.py
//
//   shapes.h         the C++ that is to be scripted
//   shapes.cpp       values with operators, properties, methods with defaults, variadics and overloads, inheritance
//   drawing.cpp      a collection, an error of the plug-in's own, a value that is computed on first need
//   collections.cpp  a sequence without items, an iterator, a set
//   plugin.cpp       the entry point, functions that belong to no class
#include "descriptions.h"

#include <cmath>

namespace drawing {

namespace {

// The classes, parents first. They enter their module when the file has been loaded.
const ling::class_registration classes{vector_class, shape_class,       circle_class, rectangle_class,    drawing_class,
                                       grid_class,   grid_points_class, layers_class, drawing_error_class};

double distance(const vector& from, const vector& to) { return std::hypot(to.x - from.x, to.y - from.y); }

void register_members() {
  const auto module = ling::get_module(module_name);
  if (module.is_error()) {
    throw module.error();  // reported by whoever loads the file
  }
  module.value().setDoc("Shapes and what to do with them.");
  module.value().addCallable("distance", ling::make_function("distance", "from, to", "How far it is.", &distance, {}));
}

}  // namespace

}  // namespace drawing

#if defined(_WIN32)
#define DRAWING_EXPORT __declspec(dllexport)
#else
#define DRAWING_EXPORT __attribute__((visibility("default")))
#endif

// Called once, after the static initialisers and before the classes are built.
extern "C" DRAWING_EXPORT void corvantis_extension_init() { drawing::register_members(); }
