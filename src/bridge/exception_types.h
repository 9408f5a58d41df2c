// The Python exception classes made for classes of errors, from the side of Python; `exception_type_of` makes them.
#pragma once

#include "ling/class.h"
#include "python/python_api.h"

namespace ling::cpython {

// The class of errors that an exception class was made for; null for every other type, descendants included.
object_value_class* error_class_of(PyTypeObject* exception_type) noexcept;

}  // namespace ling::cpython
