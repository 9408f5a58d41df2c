// Python objects to host values: one row of tests, whose order is part of the contract.
#include "bridge/dates_and_decimals.h"
#include "bridge/exception_types.h"
#include "function/python_function.h"
#include "ling/boolean.h"
#include "ling/byte_array.h"
#include "ling/detail/try.h"
#include "ling/none.h"
#include "ling/number.h"
#include "lingobject/ling_object.h"
#include "proxies/collection_proxies.h"
#include "proxies/python_type.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/instance_test.h"
#include "python/interpreter.h"
#include "python/pending_exception.h"
#include "python/python_text.h"

#include <cmath>
#include <cstdint>

namespace ling::cpython {

namespace {

bool is_type_or_subtype(PyTypeObject* type, PyTypeObject* wanted) noexcept {
  return type == wanted || PyType_IsSubtype(type, wanted) != 0;
}

Any bytes_from(const char* data, Py_ssize_t size) {
  return ByteArray(std::string_view(data, static_cast<std::size_t>(size)));
}

// Objects of exactly these types cannot claim to be of another class: the most frequent ones are spared the question.
bool has_fixed_class(PyTypeObject* type) noexcept {
  return type == &PyFloat_Type || type == &PyList_Type || type == &PyDict_Type || type == &PyTuple_Type ||
         type == &PySet_Type;
}

// Floats without a fraction become integers, infinities and those beyond the integers too: these give the smallest
// integer, as the processor's own truncation does.
Any number_from_float(double value) {
  constexpr double limit = 9223372036854775808.0;  // 2^63
  double integral = 0;
  if (std::isnan(value) || std::modf(value, &integral) != 0.0) {
    return Any(value);
  }
  const bool fits = integral >= -limit && integral < limit;
  return Any(fits ? static_cast<std::int64_t>(integral) : INT64_MIN);
}

// Exact ints, nearly all numbers there are, without a detour through `int()` and without asking for exceptions.
bool read_exact_int(PyObject* object, std::int64_t& value) noexcept {
  int overflow = 0;
  value = PyLong_AsLongLongAndOverflow(object, &overflow);
  return overflow == 0;
}

// There is no way for ints from 2^63 upward: they are errors like those below -2^63.
Any number_from(PyObject* object) {
  const PyObjectPtr integer(PyNumber_Long(object));
  if (!integer) {
    return capture_error_or("Unable to convert Python number to integer.");
  }
  const long long value = PyLong_AsLongLong(integer.get());
  if (value == -1 && PyErr_Occurred() != nullptr) {
    return capture_error_or("Unable to convert Python integer to int64.");
  }
  return Any(value);
}

Any type_from(PyObject* type) {
  if (object_value_class* error_class = error_class_of(reinterpret_cast<PyTypeObject*>(type))) {
    return Class_Generic(*error_class);
  }
  return class_of_python_type(type);
}

// Containers and all the rest arrive as the very object: nothing is copied.
const class_definition<CPythonObject>& proxy_class_of(PyObject* object, PyTypeObject* type) {
  // 15. Dictionaries, those of derived classes included.
  if (PyDict_Check(object)) {
    return cpython_proxy_mapping_class;
  }
  // 16. Lists, tuples, ranges and whatever has items by position.
  if (PySequence_Check(object) != 0) {
    return cpython_proxy_sequence_class;
  }
  // 17. Sets that can be changed.
  if (is_type_or_subtype(type, &PySet_Type)) {
    return cpython_proxy_set_class;
  }
  // 18. Whatever can be iterated over.
  if (const PyObjectPtr iterator{PyObject_GetIter(object)}) {
    return cpython_proxy_iterable_class;
  }
  // 19. All the rest.
  tolerate_exception();
  return cpython_object_class;
}

// What needs the interpreter's help to be told apart. Runs Python code, which may raise: nothing may be pending.
Any from_python_by_protocol(PyObject* object, PyTypeObject* type) {
  // 9. Numbers, whatever class they are of.
  if (PyNumber_Check(object) != 0) {
    return number_from(object);
  }
  // 10. An exception is an error, also one that nobody raised.
  if (is_instance(object, PyExc_Exception)) {
    return error_from_exception(object);
  }
  // 11. Types are classes.
  if (PyType_Check(object)) {
    return type_from(object);
  }
  // 12. Whatever can be called, even when it is a text besides.
  if (PyCallable_Check(object) != 0) {
    return make_python_function(object);
  }
  // 13. Texts, those of derived classes included.
  if (PyUnicode_Check(object)) {
    return text_of(object, surrogates::refuse);
  }
  // 14. Dates and times, unless what they say of themselves cannot be read.
  if (!has_fixed_class(type)) {
    if (Any value = date_or_time_from_python(object); !value.empty()) {
      return value;
    }
  }
  return make_python_object(proxy_class_of(object, type), object);
}

Any from_python_by_type(PyObject* object, PyTypeObject* type) {
  // 5., 6. Bytes are copied, the mutable ones too.
  if (is_type_or_subtype(type, &PyByteArray_Type)) {
    return bytes_from(PyByteArray_AsString(object), PyByteArray_Size(object));
  }
  if (PyBytes_Check(object)) {
    return bytes_from(PyBytes_AsString(object), PyBytes_Size(object));
  }
  // 7. Decimals, before the numbers: their fractions would be lost.
  if (!has_fixed_class(type) && is_decimal(object)) {
    return decimal_from_python(object);
  }
  // 8. Floats, before the numbers, which would all be truncated.
  if (is_type_or_subtype(type, &PyFloat_Type)) {
    return number_from_float(PyFloat_AsDouble(object));
  }
  return from_python_by_protocol(object, type);
}

}  // namespace

Any from_python_locked(PyObjectPtr_Borrowed borrowed) {
  PyObject* const object = borrowed.get();
  // 1. Nothing.
  if (object == nullptr || object == Py_None) {
    return {};
  }
  // The two most frequent types first: none of the tests before their own turn applies to exactly an int or exactly a
  // str. Only a text that cannot be encoded raises, on the way to being the empty text.
  PyTypeObject* const type = Py_TYPE(object);
  if (std::int64_t value = 0; type == &PyLong_Type && read_exact_int(object, value)) {
    return Any(value);
  }
  if (type == &PyUnicode_Type && PyErr_Occurred() == nullptr) {
    return text_of(object, surrogates::refuse);
  }
  // 2. The answer of an operator that does not apply.
  if (object == Py_NotImplemented) {
    return Undefined();
  }
  // 3. A wrapper gives back the value that was wrapped.
  if (const Any* wrapped = wrapped_value(object)) {
    return *wrapped;
  }
  // 4. Booleans, before the integers that they are to Python.
  if (type == &PyBool_Type) {
    return Boolean(object == Py_True);
  }
  const pending_exception_aside pending;
  if (type == &PyUnicode_Type) {
    return text_of(object, surrogates::refuse);
  }
  try {
    return from_python_by_type(object, type);
  } catch (const Error& interruption) {
    return interruption;
  }
}

Any from_python(PyObjectPtr_Borrowed object) {
  TRY(ensure_interpreter());
  return internal::guarded([&] {
    const GilGuard gil;
    return from_python_locked(object);
  });
}

}  // namespace ling::cpython
