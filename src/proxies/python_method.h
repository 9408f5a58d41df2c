// Methods of Python types as callables of the classes that present them.
#pragma once

#include "ling/property.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// Whether the callable is bound to an object before it is called.
enum class receiver { none, first_argument };

// A callable that hands its arguments, at most twelve, to a Python callable, which it shares. The lock must be held.
I_Callable_Generic make_python_method(const String& name, PyObjectPtr_Borrowed function, receiver takes);
// What a Python `property` does, read-only without a setter; None when it has no getter. The lock must be held.
Union<Property, None> make_python_property(PyObjectPtr_Borrowed property, const String& doc);

}  // namespace ling::cpython
