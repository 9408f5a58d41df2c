// The layouts of python/type_layout.h against the interpreter's own headers. Compiling this file is the
// check; the build compiles it once for each Python version whose headers it is given.

// The full headers come first: their include guard keeps out the limited ones, which type_layout.h asks for.
#include <Python.h>
#define Py_LIMITED_API 0x03090000

#include "python/type_layout.h"

#include <type_traits>

namespace ling::cpython {

// Checks the fields one by one: what follows a field is put off until the next of the rounds of EXPAND, which are more
// than any structure has fields.
#define CHECK_FIELDS(mirror, original, ...) EXPAND(CHECK_FIELD(mirror, original, __VA_ARGS__))
#define CHECK_FIELD(mirror, original, field, ...)                                                               \
  static_assert(                                                                                                \
      offsetof(mirror, field) == offsetof(original, field) && sizeof(mirror::field) == sizeof(original::field), \
      #original "." #field);                                                                                    \
  __VA_OPT__(CHECK_MORE NOTHING(mirror, original, __VA_ARGS__))
#define CHECK_MORE() CHECK_FIELD
#define NOTHING ()
#define EXPAND(...) EXPAND_16(EXPAND_16(EXPAND_16(EXPAND_16(__VA_ARGS__))))
#define EXPAND_16(...) EXPAND_4(EXPAND_4(EXPAND_4(EXPAND_4(__VA_ARGS__))))
#define EXPAND_4(...) EXPAND_1(EXPAND_1(EXPAND_1(EXPAND_1(__VA_ARGS__))))
#define EXPAND_1(...) __VA_ARGS__

static_assert(sizeof(number_methods) == sizeof(PyNumberMethods));
static_assert(sizeof(sequence_methods) == sizeof(PySequenceMethods));
static_assert(sizeof(mapping_methods) == sizeof(PyMappingMethods));
static_assert(sizeof(type_object) >= sizeof(PyTypeObject), "a version has outgrown the spare bytes");
static_assert(offsetof(type_object, spare) == offsetof(PyTypeObject, tp_vectorcall) + sizeof(void*));

static_assert(has_vectorcall == Py_TPFLAGS_HAVE_VECTORCALL);
static_assert(vectorcall_offset_flag == PY_VECTORCALL_ARGUMENTS_OFFSET);
static_assert(std::is_convertible_v<vectorcall_function, vectorcallfunc>);

CHECK_FIELDS(number_methods, PyNumberMethods, nb_add, nb_subtract, nb_multiply, nb_remainder, nb_divmod, nb_power,
             nb_negative, nb_positive, nb_absolute, nb_bool, nb_invert, nb_lshift, nb_rshift, nb_and, nb_xor, nb_or,
             nb_int, nb_reserved, nb_float, nb_inplace_add, nb_inplace_subtract, nb_inplace_multiply,
             nb_inplace_remainder, nb_inplace_power, nb_inplace_lshift, nb_inplace_rshift, nb_inplace_and,
             nb_inplace_xor, nb_inplace_or, nb_floor_divide, nb_true_divide, nb_inplace_floor_divide,
             nb_inplace_true_divide, nb_index, nb_matrix_multiply, nb_inplace_matrix_multiply)
CHECK_FIELDS(sequence_methods, PySequenceMethods, sq_length, sq_concat, sq_repeat, sq_item, was_sq_slice, sq_ass_item,
             was_sq_ass_slice, sq_contains, sq_inplace_concat, sq_inplace_repeat)
CHECK_FIELDS(mapping_methods, PyMappingMethods, mp_length, mp_subscript, mp_ass_subscript)
CHECK_FIELDS(type_object, PyTypeObject, ob_base, tp_name, tp_basicsize, tp_itemsize, tp_dealloc, tp_vectorcall_offset,
             tp_getattr, tp_setattr, tp_as_async, tp_repr, tp_as_number, tp_as_sequence, tp_as_mapping, tp_hash,
             tp_call, tp_str, tp_getattro, tp_setattro, tp_as_buffer, tp_flags, tp_doc, tp_traverse, tp_clear,
             tp_richcompare, tp_weaklistoffset, tp_iter, tp_iternext, tp_methods, tp_members, tp_getset, tp_base,
             tp_dict, tp_descr_get, tp_descr_set, tp_dictoffset, tp_init, tp_alloc, tp_new, tp_free, tp_is_gc, tp_bases,
             tp_mro, tp_cache, tp_subclasses, tp_weaklist, tp_del, tp_version_tag, tp_finalize, tp_vectorcall)

}  // namespace ling::cpython
