// The texts of a wrapped value, its hash and its order.
#pragma once

#include "lingobject/slots.h"

namespace ling::cpython {

slot_result code_text(const Any& value, PyObject* wrapper);             // tp_repr
slot_result plain_text(const Any& value, PyObject* wrapper);            // tp_str
Py_hash_t hash(const Any& value);                                       // tp_hash
slot_result compare(const Any& value, PyObject* other, int operation);  // tp_richcompare

}  // namespace ling::cpython
