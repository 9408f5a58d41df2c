// The texts of Python exceptions. The lock must be held and no exception be pending; none is left behind.
#pragma once

#include "ling/string.h"
#include "python/python_api.h"

namespace ling::cpython {

// `str(instance)`; the name of its type when that raises.
String exception_message(PyObject* instance);
// What the interpreter prints for an exception that nobody caught, with its traceback and its causes. Empty when it
// cannot be had.
String exception_traceback_text(PyObject* instance);
// The name of an object's type, without its module.
String type_name_of(PyObject* object);

}  // namespace ling::cpython
