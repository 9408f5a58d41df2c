// Methods of Python types as callables of the classes that present them.
#pragma once

#include "extension/pyobject_ptr.h"
#include "ling/callable.h"

namespace ling::cpython {

// Whether the callable is bound to an object before it is called.
enum class receiver { none, first_argument };

// A callable that hands its arguments, at most twelve, to a Python callable, which it shares. The lock must be held.
I_Callable_Generic make_python_method(const String& name, PyObjectPtr_Borrowed function, receiver takes);

}  // namespace ling::cpython
