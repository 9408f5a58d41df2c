// Layouts of CPython's type objects and slot tables, which the limited API hides.
//
// A wrapper type is a type object filled slot by slot, and telling a wrapper from any other object reads two
// fields of its type on every crossing; the limited API offers neither. These fields stand in the same order
// and at the same offsets in all versions the module runs on; tests/extension/type_layout_check.cpp compares
// each with the full headers. No other file looks inside a Python object.
#pragma once

#include "python/python_api.h"

#include <cstddef>

namespace ling::cpython {

struct number_methods {
  binaryfunc nb_add = nullptr;
  binaryfunc nb_subtract = nullptr;
  binaryfunc nb_multiply = nullptr;
  binaryfunc nb_remainder = nullptr;
  binaryfunc nb_divmod = nullptr;
  ternaryfunc nb_power = nullptr;
  unaryfunc nb_negative = nullptr;
  unaryfunc nb_positive = nullptr;
  unaryfunc nb_absolute = nullptr;
  inquiry nb_bool = nullptr;
  unaryfunc nb_invert = nullptr;
  binaryfunc nb_lshift = nullptr;
  binaryfunc nb_rshift = nullptr;
  binaryfunc nb_and = nullptr;
  binaryfunc nb_xor = nullptr;
  binaryfunc nb_or = nullptr;
  unaryfunc nb_int = nullptr;
  void* nb_reserved = nullptr;
  unaryfunc nb_float = nullptr;
  binaryfunc nb_inplace_add = nullptr;
  binaryfunc nb_inplace_subtract = nullptr;
  binaryfunc nb_inplace_multiply = nullptr;
  binaryfunc nb_inplace_remainder = nullptr;
  ternaryfunc nb_inplace_power = nullptr;
  binaryfunc nb_inplace_lshift = nullptr;
  binaryfunc nb_inplace_rshift = nullptr;
  binaryfunc nb_inplace_and = nullptr;
  binaryfunc nb_inplace_xor = nullptr;
  binaryfunc nb_inplace_or = nullptr;
  binaryfunc nb_floor_divide = nullptr;
  binaryfunc nb_true_divide = nullptr;
  binaryfunc nb_inplace_floor_divide = nullptr;
  binaryfunc nb_inplace_true_divide = nullptr;
  unaryfunc nb_index = nullptr;
  binaryfunc nb_matrix_multiply = nullptr;
  binaryfunc nb_inplace_matrix_multiply = nullptr;
};
static_assert(sizeof(number_methods) == 36 * sizeof(void*));

struct sequence_methods {
  lenfunc sq_length = nullptr;
  binaryfunc sq_concat = nullptr;
  ssizeargfunc sq_repeat = nullptr;
  ssizeargfunc sq_item = nullptr;
  void* was_sq_slice = nullptr;
  ssizeobjargproc sq_ass_item = nullptr;
  void* was_sq_ass_slice = nullptr;
  objobjproc sq_contains = nullptr;
  binaryfunc sq_inplace_concat = nullptr;
  ssizeargfunc sq_inplace_repeat = nullptr;
};
static_assert(sizeof(sequence_methods) == 10 * sizeof(void*));

struct mapping_methods {
  lenfunc mp_length = nullptr;
  binaryfunc mp_subscript = nullptr;
  objobjargproc mp_ass_subscript = nullptr;
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

// Calls without a tuple of arguments, which the limited API of 3.9 hides, too. An instance of a type with this flag has
// a pointer to such a function at `tp_vectorcall_offset`.
inline constexpr unsigned long has_vectorcall = 1ul << 11;
// The arguments given by name follow the `count` positional ones; `names` is a tuple of their names, or null.
using vectorcall_function = PyObject* (*)(PyObject* self, PyObject* const* arguments, std::size_t count,
                                          PyObject* names) noexcept;
// Comes with the count: what stands before the arguments may be overwritten.
inline constexpr std::size_t vectorcall_offset_flag = std::size_t{1} << 63;

}  // namespace ling::cpython
