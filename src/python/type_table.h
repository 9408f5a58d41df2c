// Which classes of the runtime and which types of Python stand for each other, and under which names.
#pragma once

#include "ling/class.h"
#include "python/pyobject_ptr.h"

#include <array>
#include <span>
#include <string_view>

namespace ling::cpython {

class module_attribute;

// Whether a row answers for the class of a type, the type of a class, both, or for names alone.
enum class direction { class_of_type, type_of_class, both, names };

struct type_row {
  Class_Generic (*get_class)();
  PyTypeObject* built_in;            // the type, if the interpreter has it,
  const module_attribute* imported;  // or where it is; with neither, the class has no type of Python's own
  direction answers;
  std::string_view in_signatures;                       // empty where another row of the class says it
  std::array<std::string_view, 3> in_annotations = {};  // names that mean the class
};

// All there are. A class comes more than once when several types become its values.
std::span<const type_row> type_rows() noexcept;

// The type of a row; borrowed, null where there is none or where it cannot be imported. The lock must be held.
PyObject* type_of_row(const type_row& row);

}  // namespace ling::cpython
