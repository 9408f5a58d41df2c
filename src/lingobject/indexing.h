// Length, items, slices and membership of wrapped sequences, maps and sets.
#pragma once

#include "lingobject/slots.h"

#include <cstdint>

namespace ling::cpython {

// sq_length, mp_length: the number of items, -1 with an exception set.
Py_ssize_t length_slot(PyObject* self) noexcept;

// sq_item: Python has added the length to a negative index.
PyObject* item_slot(PyObject* self, Py_ssize_t index) noexcept;
// sq_ass_item: a null value deletes.
int assign_item_slot(PyObject* self, Py_ssize_t index, PyObject* value) noexcept;

// sq_contains: 1, 0, or -1 with an exception set.
int contains_slot(PyObject* self, PyObject* item) noexcept;

// mp_subscript: by key, position or slice.
PyObject* subscript_slot(PyObject* self, PyObject* key) noexcept;
// mp_ass_subscript: a null value deletes.
int assign_subscript_slot(PyObject* self, PyObject* key, PyObject* value) noexcept;

}  // namespace ling::cpython
