// LingObject: the Python object that wraps one host value. The lock must be held for every operation.
#pragma once

#include "extension/pyobject_ptr.h"
#include "ling/class.h"

namespace ling::cpython {

// A new wrapper that owns a copy of the handle. Null with an exception set when there is no memory.
PyObjectPtr wrap(const Any& value);
// The value in a wrapper; null for every other object and for a wrapper without a value. Borrowed from the wrapper.
const Any* wrapped_value(PyObject* object) noexcept;
// The type object with which values of a class are wrapped. Borrowed; lives for the life of the process.
PyTypeObject* wrapper_type_of(const Class_Generic& of_class);

}  // namespace ling::cpython
