// Decimals across the border: they travel as text, so that no digit is lost. The lock must be held.
#pragma once

#include "ling/decimal.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// A `decimal.Decimal`; null on failure, without an exception when the class could not be imported.
PyObjectPtr decimal_to_python(const Decimal& value);

bool is_decimal(PyObject* object);
// The Decimal for the text of such an object, or an Error. Leaves no exception pending.
Any decimal_from_python(PyObject* object);

}  // namespace ling::cpython
