// LingObject: the Python object that wraps one host value.
//
// A wrapper owns a copy of the handle, so the value lives as long as Python holds the wrapper. Which type object it
// gets depends on the value's class: classes that a module or another class declares have a type of their own, all
// others share five.
#pragma once

#include "ling/class.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// A new wrapper that owns a copy of the handle. Null with an exception set when there is no memory, without one when
// the interpreter has ended. Takes the lock itself.
PyObjectPtr wrap(const Any& value);
// The same for callers that hold the lock; takes over the handle.
PyObjectPtr wrap_locked(Any value);

// The value in a wrapper; null for every other object and for a wrapper without a value. Borrowed from the wrapper. The
// lock must be held. Exhausted memory is thrown: the value of a bound method is made when it is asked for.
const Any* wrapped_value(PyObject* object);

// The type object with which values of a class are wrapped; null with an exception set when it cannot be made.
// Borrowed; lives for the life of the process. The lock must be held.
PyTypeObject* wrapper_type_of(const Class_Generic& of_class);

}  // namespace ling::cpython
