// Reading and writing the members of a wrapped value.
#pragma once

#include "lingobject/slots.h"

namespace ling::cpython {

// The attribute dispatcher, tp_getattro.
slot_result get_attribute(const Any& value, PyObject* name);
// The attribute setter, tp_setattro. A null value deletes.
slot_result set_attribute(const Any& value, PyObject* name, PyObject* new_value);

// The getter and setter behind the entries of a per-class type. Python calls them for `type(w).name.__get__(w)`;
// `w.name` goes to the dispatcher.
slot_result get_property(const Any& value, const name_entry* name);
slot_result set_property(const Any& value, const name_entry* name, PyObject* new_value);

// A method of the value as Python gets it: bound, unless it takes no receiver.
slot_result bind_method(const Any& method, const Any& value);

}  // namespace ling::cpython
