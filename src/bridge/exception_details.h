// What Python exceptions tell: their texts, and where in the source they say they happened. The lock must be held and
// no exception be pending; none is left behind.
// Defined in exception_text.cpp and error_position.cpp.
#pragma once

#include "ling/error.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// `str(instance)`; the name of its type when that raises.
String exception_message(PyObject* instance);
// What the interpreter prints for an exception that nobody caught, with its traceback and its causes. Empty when it
// cannot be had.
String exception_traceback_text(PyObject* instance);
// The name of an object's type, without its module.
String type_name_of(PyObject* object);

// The position that a syntax error carries, else the line of the innermost frame. The shifts are added to line and
// column; an item that is not positive then is absent. Either object may be null.
source_position position_of(PyObject* instance, PyObject* traceback, int line_shift, int column_shift);

}  // namespace ling::cpython
