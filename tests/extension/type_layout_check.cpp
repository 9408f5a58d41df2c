// The layouts of extension/type_layout.h against the interpreter's own headers. Compiling this file is the
// check; the build compiles it once for each Python version whose headers it is given.

// The full headers come first: their include guard keeps out the limited ones, which type_layout.h asks for.
#include <Python.h>
#define Py_LIMITED_API 0x03090000

#include "extension/type_layout.h"

namespace ling::cpython {

#define CHECK_FIELD(mirror, original, field)                                                                    \
  static_assert(                                                                                                \
      offsetof(mirror, field) == offsetof(original, field) && sizeof(mirror::field) == sizeof(original::field), \
      #original "." #field)

static_assert(sizeof(number_methods) == sizeof(PyNumberMethods));
CHECK_FIELD(number_methods, PyNumberMethods, nb_add);
CHECK_FIELD(number_methods, PyNumberMethods, nb_subtract);
CHECK_FIELD(number_methods, PyNumberMethods, nb_multiply);
CHECK_FIELD(number_methods, PyNumberMethods, nb_remainder);
CHECK_FIELD(number_methods, PyNumberMethods, nb_divmod);
CHECK_FIELD(number_methods, PyNumberMethods, nb_power);
CHECK_FIELD(number_methods, PyNumberMethods, nb_negative);
CHECK_FIELD(number_methods, PyNumberMethods, nb_positive);
CHECK_FIELD(number_methods, PyNumberMethods, nb_absolute);
CHECK_FIELD(number_methods, PyNumberMethods, nb_bool);
CHECK_FIELD(number_methods, PyNumberMethods, nb_invert);
CHECK_FIELD(number_methods, PyNumberMethods, nb_lshift);
CHECK_FIELD(number_methods, PyNumberMethods, nb_rshift);
CHECK_FIELD(number_methods, PyNumberMethods, nb_and);
CHECK_FIELD(number_methods, PyNumberMethods, nb_xor);
CHECK_FIELD(number_methods, PyNumberMethods, nb_or);
CHECK_FIELD(number_methods, PyNumberMethods, nb_int);
CHECK_FIELD(number_methods, PyNumberMethods, nb_reserved);
CHECK_FIELD(number_methods, PyNumberMethods, nb_float);
CHECK_FIELD(number_methods, PyNumberMethods, nb_inplace_add);
CHECK_FIELD(number_methods, PyNumberMethods, nb_inplace_subtract);
CHECK_FIELD(number_methods, PyNumberMethods, nb_inplace_multiply);
CHECK_FIELD(number_methods, PyNumberMethods, nb_inplace_remainder);
CHECK_FIELD(number_methods, PyNumberMethods, nb_inplace_power);
CHECK_FIELD(number_methods, PyNumberMethods, nb_inplace_lshift);
CHECK_FIELD(number_methods, PyNumberMethods, nb_inplace_rshift);
CHECK_FIELD(number_methods, PyNumberMethods, nb_inplace_and);
CHECK_FIELD(number_methods, PyNumberMethods, nb_inplace_xor);
CHECK_FIELD(number_methods, PyNumberMethods, nb_inplace_or);
CHECK_FIELD(number_methods, PyNumberMethods, nb_floor_divide);
CHECK_FIELD(number_methods, PyNumberMethods, nb_true_divide);
CHECK_FIELD(number_methods, PyNumberMethods, nb_inplace_floor_divide);
CHECK_FIELD(number_methods, PyNumberMethods, nb_inplace_true_divide);
CHECK_FIELD(number_methods, PyNumberMethods, nb_index);
CHECK_FIELD(number_methods, PyNumberMethods, nb_matrix_multiply);
CHECK_FIELD(number_methods, PyNumberMethods, nb_inplace_matrix_multiply);

static_assert(sizeof(sequence_methods) == sizeof(PySequenceMethods));
CHECK_FIELD(sequence_methods, PySequenceMethods, sq_length);
CHECK_FIELD(sequence_methods, PySequenceMethods, sq_concat);
CHECK_FIELD(sequence_methods, PySequenceMethods, sq_repeat);
CHECK_FIELD(sequence_methods, PySequenceMethods, sq_item);
CHECK_FIELD(sequence_methods, PySequenceMethods, was_sq_slice);
CHECK_FIELD(sequence_methods, PySequenceMethods, sq_ass_item);
CHECK_FIELD(sequence_methods, PySequenceMethods, was_sq_ass_slice);
CHECK_FIELD(sequence_methods, PySequenceMethods, sq_contains);
CHECK_FIELD(sequence_methods, PySequenceMethods, sq_inplace_concat);
CHECK_FIELD(sequence_methods, PySequenceMethods, sq_inplace_repeat);

static_assert(sizeof(mapping_methods) == sizeof(PyMappingMethods));
CHECK_FIELD(mapping_methods, PyMappingMethods, mp_length);
CHECK_FIELD(mapping_methods, PyMappingMethods, mp_subscript);
CHECK_FIELD(mapping_methods, PyMappingMethods, mp_ass_subscript);

static_assert(sizeof(type_object) >= sizeof(PyTypeObject), "a version has outgrown the spare bytes");
static_assert(offsetof(type_object, spare) == offsetof(PyTypeObject, tp_vectorcall) + sizeof(void*));
CHECK_FIELD(type_object, PyTypeObject, ob_base);
CHECK_FIELD(type_object, PyTypeObject, tp_name);
CHECK_FIELD(type_object, PyTypeObject, tp_basicsize);
CHECK_FIELD(type_object, PyTypeObject, tp_itemsize);
CHECK_FIELD(type_object, PyTypeObject, tp_dealloc);
CHECK_FIELD(type_object, PyTypeObject, tp_vectorcall_offset);
CHECK_FIELD(type_object, PyTypeObject, tp_getattr);
CHECK_FIELD(type_object, PyTypeObject, tp_setattr);
CHECK_FIELD(type_object, PyTypeObject, tp_as_async);
CHECK_FIELD(type_object, PyTypeObject, tp_repr);
CHECK_FIELD(type_object, PyTypeObject, tp_as_number);
CHECK_FIELD(type_object, PyTypeObject, tp_as_sequence);
CHECK_FIELD(type_object, PyTypeObject, tp_as_mapping);
CHECK_FIELD(type_object, PyTypeObject, tp_hash);
CHECK_FIELD(type_object, PyTypeObject, tp_call);
CHECK_FIELD(type_object, PyTypeObject, tp_str);
CHECK_FIELD(type_object, PyTypeObject, tp_getattro);
CHECK_FIELD(type_object, PyTypeObject, tp_setattro);
CHECK_FIELD(type_object, PyTypeObject, tp_as_buffer);
CHECK_FIELD(type_object, PyTypeObject, tp_flags);
CHECK_FIELD(type_object, PyTypeObject, tp_doc);
CHECK_FIELD(type_object, PyTypeObject, tp_traverse);
CHECK_FIELD(type_object, PyTypeObject, tp_clear);
CHECK_FIELD(type_object, PyTypeObject, tp_richcompare);
CHECK_FIELD(type_object, PyTypeObject, tp_weaklistoffset);
CHECK_FIELD(type_object, PyTypeObject, tp_iter);
CHECK_FIELD(type_object, PyTypeObject, tp_iternext);
CHECK_FIELD(type_object, PyTypeObject, tp_methods);
CHECK_FIELD(type_object, PyTypeObject, tp_members);
CHECK_FIELD(type_object, PyTypeObject, tp_getset);
CHECK_FIELD(type_object, PyTypeObject, tp_base);
CHECK_FIELD(type_object, PyTypeObject, tp_dict);
CHECK_FIELD(type_object, PyTypeObject, tp_descr_get);
CHECK_FIELD(type_object, PyTypeObject, tp_descr_set);
CHECK_FIELD(type_object, PyTypeObject, tp_dictoffset);
CHECK_FIELD(type_object, PyTypeObject, tp_init);
CHECK_FIELD(type_object, PyTypeObject, tp_alloc);
CHECK_FIELD(type_object, PyTypeObject, tp_new);
CHECK_FIELD(type_object, PyTypeObject, tp_free);
CHECK_FIELD(type_object, PyTypeObject, tp_is_gc);
CHECK_FIELD(type_object, PyTypeObject, tp_bases);
CHECK_FIELD(type_object, PyTypeObject, tp_mro);
CHECK_FIELD(type_object, PyTypeObject, tp_cache);
CHECK_FIELD(type_object, PyTypeObject, tp_subclasses);
CHECK_FIELD(type_object, PyTypeObject, tp_weaklist);
CHECK_FIELD(type_object, PyTypeObject, tp_del);
CHECK_FIELD(type_object, PyTypeObject, tp_version_tag);
CHECK_FIELD(type_object, PyTypeObject, tp_finalize);
CHECK_FIELD(type_object, PyTypeObject, tp_vectorcall);

#undef CHECK_FIELD

}  // namespace ling::cpython
