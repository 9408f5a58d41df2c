// The order of Python objects as the runtime sees it.
#pragma once

#include "ling/ordering.h"
#include "proxies/cpython_object.h"

namespace ling::cpython {

// How two Python objects compare, by their own operators; a value that is no Python object comes before or after by
// identity alone. Takes the lock itself.
Result<Ordering> compare_object(const CPythonObject& self, const Any& other);

}  // namespace ling::cpython
