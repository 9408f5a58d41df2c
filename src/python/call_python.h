// Calling Python: arguments go over, the result comes back, and what fails is an Error. The lock must be held.
//
// Defined in bridge/call_python.cpp and function/signature.cpp.
#pragma once

#include "ling/callable.h"
#include "ling/signature.h"
#include "python/pyobject_ptr.h"

#include <span>

namespace ling::cpython {

// What the callable returns for these arguments. Borrows the callable.
Any call_python(PyObjectPtr_Borrowed callable, std::span<const Any> positional);
Any call_python(PyObjectPtr_Borrowed callable, std::span<const Any> positional, std::span<const named_argument> named);

// For an argument that `to_python_locked` refused: the pending exception, else an Error that names the argument.
Error error_not_convertible(const Any& argument);

// The signature of a callable as `inspect.signature` and its annotations tell it. Borrows the callable.
Result<Signature> signature_of_python(PyObjectPtr_Borrowed callable);

}  // namespace ling::cpython
