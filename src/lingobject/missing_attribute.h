// The AttributeError for a name under which a value has nothing.
#pragma once

#include "lingobject/slots.h"

namespace ling::cpython {

// What asks whether there is an attribute asks often, and drops the answer: the text is kept for the next time, the
// exception is made by whoever catches it, as far as the interpreter's version allows.
slot_result error_no_attribute(object_value_class& of_class, PyObject* name);

}  // namespace ling::cpython
