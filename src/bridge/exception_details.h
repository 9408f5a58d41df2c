// What Python exceptions tell: their texts, and where in the source they say they happened. The lock must be held and
// no exception be pending; none is left behind.
// Defined in exception_texts.cpp and error_position.cpp.
#pragma once

#include "ling/error.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

struct exception_texts {
  // `str(instance)`, the name of its type when that raises; of a syntax error what the interpreter prints, which shows
  // the place.
  String message;
  // What the interpreter prints for an exception that nobody caught, with its traceback and its causes: a String, empty
  // when it cannot be had, or a lazy value, which keeps no frames.
  Any stack;
};
exception_texts texts_of(PyObject* instance);
// The name of an object's type, without its module.
String type_name_of(PyObject* object);

// The position that a syntax error carries, else the line of the innermost frame. The shifts are added to line and
// column; an item that is not positive then is absent. Either object may be null.
source_position position_of(PyObject* instance, PyObject* traceback, int line_shift, int column_shift);

}  // namespace ling::cpython
