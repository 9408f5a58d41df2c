// The order and the equality of Python objects as the runtime sees them. Each operation takes the lock itself.
#pragma once

#include "ling/ordering.h"
#include "proxies/cpython_object.h"

namespace ling::cpython {

// How two Python objects compare, by their own operators; a value that is no Python object comes before or after by
// identity alone.
Result<Ordering> compare_object(const CPythonObject& self, const Any& other);

// Python's `==` and `hash` where there is an object: a Boolean, or Undefined for a value that is no Python object; an
// Integer. An Error when the object raises.
Any object_equals(const CPythonObject& self, const Any& other);
Any object_hash(const CPythonObject& self);

}  // namespace ling::cpython
