// Iterating over a wrapped value.
#pragma once

#include "lingobject/slots.h"

namespace ling::cpython {

// tp_iter.
slot_result iterate(const Any& value, PyObject* wrapper);
// tp_iternext; nothing to say at the end.
slot_result next_item(const Any& value);

}  // namespace ling::cpython
