// The name of an attribute as a Python str, made once and kept for the life of the process.
#pragma once

#include "ling/published.h"
#include "python/interpreter_function.h"
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
  // The same for what may be missing, which then is no exception, and as a rule costs none.
  PyObjectPtr find(PyObject* object) const noexcept {
    static constinit const interpreter_function<int(PyObject*, PyObject*, PyObject**)> find_attribute(
        "PyObject_GetOptionalAttr", "_PyObject_LookupAttr");
    auto* const function = find_attribute.get();
    PyObject* const name = get();
    PyObject* found = nullptr;
    if (name != nullptr && function != nullptr) [[likely]] {
      function(object, name, &found);
      return PyObjectPtr(found);
    }
    PyObjectPtr attribute = of(object);
    if (!attribute && PyErr_ExceptionMatches(PyExc_AttributeError) != 0) {
      PyErr_Clear();
    }
    return attribute;
  }

 private:
  const char* text_;
  mutable internal::published<PyObject> made_;
};

}  // namespace ling::cpython
