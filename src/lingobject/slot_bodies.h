// What wrappers do: a function for each slot. Most are bodies for the trampolines of slots.h; those that answer other
// kinds of results are slots as they stand, which throw nothing and set an exception. The lock is held.
// Defined in get_attribute.cpp, set_attribute.cpp, text_slots.cpp, iteration_slots.cpp, item_slots.cpp, call_slot.cpp.
#pragma once

#include "lingobject/slots.h"

namespace ling::cpython {

// --- attributes ------------------------------------------------------------------------------------------------------

slot_result get_attribute(const Any& value, PyObject* wrapper, PyObject* name);    // tp_getattro
slot_result set_attribute(const Any& value, PyObject* name, PyObject* new_value);  // tp_setattro; a null value deletes

// The getter and setter behind the entries of a per-class type. Python calls them for `type(w).name.__get__(w)`;
// `w.name` goes to the two above.
slot_result get_property(const Any& value, const name_entry* name);
slot_result set_property(const Any& value, const name_entry* name, PyObject* new_value);

// --- texts, hash, order ----------------------------------------------------------------------------------------------

slot_result code_text(const Any& value, PyObject* wrapper);             // tp_repr
slot_result plain_text(const Any& value, PyObject* wrapper);            // tp_str
Py_hash_t hash(const Any& value);                                       // tp_hash
slot_result compare(const Any& value, PyObject* other, int operation);  // tp_richcompare

// --- calls, iteration ------------------------------------------------------------------------------------------------

slot_result call(const Any& value, PyObject* arguments, PyObject* keywords);  // tp_call
// The same without the tuple and the dictionary. A method that was read from a wrapper is called as it is.
PyObject* call_by_vector(PyObject* self, PyObject* const* arguments, std::size_t count, PyObject* names) noexcept;
slot_result iterate(const Any& value, PyObject* wrapper);  // tp_iter
slot_result next_item(const Any& value);                   // tp_iternext; nothing to say at the end

// --- items of sequences, maps and sets -------------------------------------------------------------------------------

Py_ssize_t length_slot(PyObject* self) noexcept;                                     // sq_length, mp_length
PyObject* item_slot(PyObject* self, Py_ssize_t index) noexcept;                      // sq_item
int assign_item_slot(PyObject* self, Py_ssize_t index, PyObject* value) noexcept;    // sq_ass_item; null deletes
int contains_slot(PyObject* self, PyObject* item) noexcept;                          // sq_contains
PyObject* subscript_slot(PyObject* self, PyObject* key) noexcept;                    // mp_subscript
int assign_subscript_slot(PyObject* self, PyObject* key, PyObject* value) noexcept;  // mp_ass_subscript; null deletes

}  // namespace ling::cpython
