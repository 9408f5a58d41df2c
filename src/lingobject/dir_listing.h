// What `dir` lists of a wrapped value.
#pragma once

#include "ling/any.h"
#include "python/python_api.h"

#include <string>
#include <vector>

namespace ling::cpython {

// The names of the class's fields, of its methods, of its properties, and of the members of the value alone.
std::vector<std::string> member_names(const Any& value);

// `__dir__` of all wrapper types: the names that any Python object has and those of the members that can be read as
// attributes; of a class also what it offers to its instances and, for an interface, what it expects of a class. A new
// list, or null with an exception set.
PyObject* list_attributes(PyObject* self, PyObject* no_arguments) noexcept;

}  // namespace ling::cpython
