// The default values of a Python function. The lock must be held.
#pragma once

#include "ling/interfaces.h"
#include "python/pyobject_ptr.h"

#include <vector>

namespace ling::cpython {

// Those of the last parameters, in order; none when the callable keeps none.
std::vector<Any> defaults_of(PyObjectPtr_Borrowed callable);
// Replaces them all, or none when one has no counterpart in Python.
Result<None> set_defaults(PyObjectPtr_Borrowed callable, const I_Iterable_Generic& values);

}  // namespace ling::cpython
