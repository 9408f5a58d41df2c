// Where in the source a Python exception says it happened. The lock must be held and no exception be pending; none is
// left behind.
#pragma once

#include "ling/error.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// The position that a syntax error carries, else the line of the innermost frame. The shifts are added to line and
// column; an item that is not positive then is absent. Either object may be null.
source_position position_of(PyObject* instance, PyObject* traceback, int line_shift, int column_shift);

}  // namespace ling::cpython
