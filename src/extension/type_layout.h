// Layouts of CPython's type objects and slot tables, which the limited API hides.
//
// A wrapper type is a type object filled slot by slot, and telling a wrapper from any other object reads two
// fields of its type on every crossing; the limited API offers neither. These fields stand in the same order
// and at the same offsets in all versions the module runs on; tests/extension/type_layout_check.cpp compares
// each with the full headers. No other file looks inside a Python object.
#pragma once

#include "extension/python_api.h"

#include <cstddef>

namespace ling::cpython {

struct number_methods {
  binaryfunc nb_add;
  binaryfunc nb_subtract;
  binaryfunc nb_multiply;
  binaryfunc nb_remainder;
  binaryfunc nb_divmod;
  ternaryfunc nb_power;
  unaryfunc nb_negative;
  unaryfunc nb_positive;
  unaryfunc nb_absolute;
  inquiry nb_bool;
  unaryfunc nb_invert;
  binaryfunc nb_lshift;
  binaryfunc nb_rshift;
  binaryfunc nb_and;
  binaryfunc nb_xor;
  binaryfunc nb_or;
  unaryfunc nb_int;
  void* nb_reserved;
  unaryfunc nb_float;
  binaryfunc nb_inplace_add;
  binaryfunc nb_inplace_subtract;
  binaryfunc nb_inplace_multiply;
  binaryfunc nb_inplace_remainder;
  ternaryfunc nb_inplace_power;
  binaryfunc nb_inplace_lshift;
  binaryfunc nb_inplace_rshift;
  binaryfunc nb_inplace_and;
  binaryfunc nb_inplace_xor;
  binaryfunc nb_inplace_or;
  binaryfunc nb_floor_divide;
  binaryfunc nb_true_divide;
  binaryfunc nb_inplace_floor_divide;
  binaryfunc nb_inplace_true_divide;
  unaryfunc nb_index;
  binaryfunc nb_matrix_multiply;
  binaryfunc nb_inplace_matrix_multiply;
};
static_assert(sizeof(number_methods) == 36 * sizeof(void*));

struct sequence_methods {
  lenfunc sq_length;
  binaryfunc sq_concat;
  ssizeargfunc sq_repeat;
  ssizeargfunc sq_item;
  void* was_sq_slice;
  ssizeobjargproc sq_ass_item;
  void* was_sq_ass_slice;
  objobjproc sq_contains;
  binaryfunc sq_inplace_concat;
  ssizeargfunc sq_inplace_repeat;
};
static_assert(sizeof(sequence_methods) == 10 * sizeof(void*));

struct mapping_methods {
  lenfunc mp_length;
  binaryfunc mp_subscript;
  objobjargproc mp_ass_subscript;
};
static_assert(sizeof(mapping_methods) == 3 * sizeof(void*));

// A whole type object. Slots that the module never fills are plain pointers.
struct type_object {
  PyVarObject ob_base;
  const char* tp_name;
  Py_ssize_t tp_basicsize;
  Py_ssize_t tp_itemsize;
  destructor tp_dealloc;
  Py_ssize_t tp_vectorcall_offset;
  getattrfunc tp_getattr;
  setattrfunc tp_setattr;
  void* tp_as_async;
  reprfunc tp_repr;
  number_methods* tp_as_number;
  sequence_methods* tp_as_sequence;
  mapping_methods* tp_as_mapping;
  hashfunc tp_hash;
  ternaryfunc tp_call;
  reprfunc tp_str;
  getattrofunc tp_getattro;
  setattrofunc tp_setattro;
  void* tp_as_buffer;
  unsigned long tp_flags;
  const char* tp_doc;
  traverseproc tp_traverse;
  inquiry tp_clear;
  richcmpfunc tp_richcompare;
  Py_ssize_t tp_weaklistoffset;
  getiterfunc tp_iter;
  iternextfunc tp_iternext;
  PyMethodDef* tp_methods;
  void* tp_members;
  PyGetSetDef* tp_getset;
  PyTypeObject* tp_base;
  PyObject* tp_dict;
  descrgetfunc tp_descr_get;
  descrsetfunc tp_descr_set;
  Py_ssize_t tp_dictoffset;
  initproc tp_init;
  allocfunc tp_alloc;
  newfunc tp_new;
  freefunc tp_free;
  inquiry tp_is_gc;
  PyObject* tp_bases;
  PyObject* tp_mro;
  PyObject* tp_cache;
  void* tp_subclasses;
  PyObject* tp_weaklist;
  destructor tp_del;
  unsigned int tp_version_tag;
  destructor tp_finalize;
  void* tp_vectorcall;
  // Later versions append fields and set them in every type that they make ready. Zeroed like the rest.
  unsigned char spare[64];
};
static_assert(sizeof(PyVarObject) == 24 && offsetof(type_object, tp_name) == 24);
static_assert(offsetof(type_object, tp_flags) == 168 && offsetof(type_object, tp_base) == 256);
static_assert(offsetof(type_object, spare) == 408, "both 64-bit data models have the same offsets");

inline type_object* layout_of(PyTypeObject* type) noexcept { return reinterpret_cast<type_object*>(type); }
inline const type_object* layout_of(const PyTypeObject* type) noexcept {
  return reinterpret_cast<const type_object*>(type);
}
// The type object whose layout was filled here.
inline PyTypeObject* type_of_layout(type_object& layout) noexcept { return reinterpret_cast<PyTypeObject*>(&layout); }

inline const char* name_of(const PyTypeObject* type) noexcept { return layout_of(type)->tp_name; }
// Null for `object` only.
inline PyTypeObject* base_of(const PyTypeObject* type) noexcept { return layout_of(type)->tp_base; }
inline unsigned long flags_of(const PyTypeObject* type) noexcept { return layout_of(type)->tp_flags; }

}  // namespace ling::cpython
