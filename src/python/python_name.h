// The name of an attribute as a Python str, made once and kept for the life of the process.
#pragma once

#include "ling/published.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// A constant at namespace scope. Looking an attribute up by a C string makes a new str each time, and each of those
// takes a place in the interpreter's cache of attributes from a name that is looked up again.
class python_name {
 public:
  constexpr python_name(const char* text) noexcept : text_(text) {}

  // Borrowed; null with an exception set when there is no memory. The lock must be held.
  PyObject* get() const noexcept {
    return made_.get_or_make([&] { return PyObjectPtr(PyUnicode_InternFromString(text_)); });
  }
  // The attribute of that name; null with an exception set when it cannot be had.
  PyObjectPtr of(PyObject* object) const noexcept {
    PyObject* const name = get();
    return PyObjectPtr(name == nullptr ? nullptr : PyObject_GetAttr(object, name));
  }

 private:
  const char* text_;
  mutable internal::published<PyObject> made_;
};

}  // namespace ling::cpython
