// Equality and hashes of what stands for Python objects: as Python sees the objects. The lock must be held.
//
// Defined in bridge/python_equality.cpp.
#pragma once

#include "ling/any.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// Whether the object equals the Python object that a value stands for: Python's `==`, which asks both of them. A
// Boolean, or the Error of an exception; Undefined for a value that stands for none.
Any equals_python(PyObjectPtr_Borrowed object, const Any& other);

// Python's hash, which equal objects share. An Integer, or the Error of an object that has none.
Any hash_of_python(PyObjectPtr_Borrowed object);

}  // namespace ling::cpython
