// Slices of wrapped sequences, with any step.
#pragma once

#include "lingobject/slots.h"

namespace ling::cpython {

// The items that a Python slice selects: with step 1 what the sequence itself gives, else a new list.
slot_result read_slice(const Any& sequence, PyObject* slice);
slot_result delete_slice(const Any& sequence, PyObject* slice);
// Puts the items of a Python iterable in place of those that the slice selects; with a step other than 1 as many as
// there were.
slot_result assign_slice(const Any& sequence, PyObject* slice, PyObject* items);

}  // namespace ling::cpython
