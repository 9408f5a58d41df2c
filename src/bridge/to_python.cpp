// Host values to Python objects: one dispatch on the kind of the value.
#include "bridge/dates_and_decimals.h"
#include "function/python_function.h"
#include "ling/boolean.h"
#include "ling/byte_array.h"
#include "ling/error.h"
#include "ling/lazy.h"
#include "ling/number.h"
#include "ling/tuple.h"
#include "lingobject/ling_object.h"
#include "proxies/cpython_object.h"
#include "proxies/python_type.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/interpreter.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace ling::cpython {

namespace {

PyObjectPtr convert(const Any& value, int depth);

// The interpreter's start pins the singletons, so that they need not be counted on every crossing: the reference that
// the result will release was never taken.
PyObjectPtr singleton(PyObject* object) noexcept { return PyObjectPtr(object); }

template <class Object>
const Object& object_of(const Any& value) noexcept {
  return *static_cast<const Object*>(value.get());
}

PyObjectPtr integer_to_python(const object_value_integer& integer) noexcept {
  return PyObjectPtr(integer.is_signed() ? PyLong_FromLongLong(integer.signed_value())
                                         : PyLong_FromUnsignedLongLong(integer.unsigned_value()));
}

PyObjectPtr string_to_python(std::string_view text) noexcept {
  return PyObjectPtr(PyUnicode_FromStringAndSize(text.data(), static_cast<Py_ssize_t>(text.size())));
}

PyObjectPtr byte_array_to_python(const std::vector<char>& bytes) noexcept {
  return PyObjectPtr(PyBytes_FromStringAndSize(bytes.data(), static_cast<Py_ssize_t>(bytes.size())));
}

// All items or nothing: a tuple with holes dies here, and with it what was converted.
PyObjectPtr tuple_to_python(const object_value_tuple& tuple, int depth) {
  const std::size_t length = tuple.length();
  PyObjectPtr result(PyTuple_New(static_cast<Py_ssize_t>(length)));
  for (std::size_t i = 0; result && i < length; ++i) {
    PyObjectPtr item = convert(tuple.at(i), depth + 1);
    if (!item || PyTuple_SetItem(result.get(), static_cast<Py_ssize_t>(i), item.release()) != 0) {
      return {};
    }
  }
  return result;
}

PyObjectPtr python_object_to_python(const CPythonObject& proxy) noexcept {
  PyObjectPtr object = proxy.python_object();
  if (!object) {
    PyErr_SetString(PyExc_RuntimeError, "The object is null.");
  }
  return object;
}

PyObjectPtr error_to_python(const Error& error) {
  raise_error(error);
  return {};
}

template <class H, PyObjectPtr (*Convert)(const H& value)>
PyObjectPtr convert_as(const Any& value) {
  return Convert(H::unchecked(value));
}

// The first test that applies decides. No test for text: a text is of a kind of its own here, never an Instance.
struct instance_row {
  bool (*matches)(const object_value* object);
  PyObjectPtr (*convert)(const Any& value);
};
const instance_row instance_rows[] = {
  // 1. A Python object comes home.
    {&CPythonObject::matches, &convert_as<CPythonObject, python_object_to_python>},
 // 2. Dates are copied.
    {&Date::matches,          &convert_as<Date,          date_to_python>         },
 // 3. Decimals, too.
    {&Decimal::matches,       &convert_as<Decimal,       decimal_to_python>      },
 // 4. An Error is raised.
    {&Error::matches,         &convert_as<Error,         error_to_python>        },
 // 5. Times are copied.
    {&Time::matches,          &convert_as<Time,          time_to_python>         },
 // 6. Times with their day, too.
    {&DateTime::matches,      &convert_as<DateTime,      date_time_to_python>    },
 // 7. Everything else arrives as the object it is.
};

const instance_row* row_of(const Any& instance) {
  const auto* row = std::ranges::find_if(instance_rows, [&](const auto& each) { return each.matches(instance.get()); });
  return row == std::end(instance_rows) ? nullptr : row;
}

PyObjectPtr instance_to_python(const Any& value) {
  const instance_row* const row = row_of(value);
  return row != nullptr ? row->convert(value) : wrap_locked(value);
}

// A Python function comes home.
PyObjectPtr callable_to_python(const Any& value) {
  return CPythonFunction::matches(value.get())
             ? PyObjectPtr::share(object_of<object_value_python_function>(value).function())
             : wrap_locked(value);
}

// So does a Python type.
PyObjectPtr class_to_python(const Any& value) {
  PyObject* const type = python_type_behind(object_of<object_value_class>(value));
  return type != nullptr ? PyObjectPtr::share(type) : wrap_locked(value);
}

PyObjectPtr convert(const Any& value, int depth) {
  if (depth > maximum_conversion_depth) [[unlikely]] {
    PyErr_Format(PyExc_RecursionError, "The value is nested more than %d levels deep.", maximum_conversion_depth);
    return {};
  }
  switch (value.type()) {
    case ObjectType::None:  // an empty handle, too
      return singleton(Py_None);
    case ObjectType::Undefined:
      return singleton(Py_NotImplemented);
    case ObjectType::Boolean:
      return singleton(value.get() == &g_value_boolean_true ? Py_True : Py_False);
    case ObjectType::Integer:
      return integer_to_python(object_of<object_value_integer>(value));
    case ObjectType::Float:
      return PyObjectPtr(PyFloat_FromDouble(object_of<object_value_float>(value).value()));
    case ObjectType::String:
      return string_to_python(object_of<object_value_string>(value).view());
    case ObjectType::ByteArray:
      return byte_array_to_python(object_of<object_value_byte_array>(value).bytes());
    case ObjectType::Tuple:
      return tuple_to_python(object_of<object_value_tuple>(value), depth);
    case ObjectType::External:
      return convert(internal::guarded([&] { return static_cast<object_value_external&>(*value.get()).load(); }),
                     depth + 1);
    case ObjectType::Instance:
      return instance_to_python(value);
    case ObjectType::Callable:
      return callable_to_python(value);
    case ObjectType::Class:
      return class_to_python(value);
    default:
      return wrap_locked(value);
  }
}

}  // namespace

bool arrives_wrapped(const Any& value) {
  switch (value.type()) {
    case ObjectType::None:
    case ObjectType::Undefined:
    case ObjectType::Boolean:
    case ObjectType::Integer:
    case ObjectType::Float:
    case ObjectType::String:
    case ObjectType::ByteArray:
    case ObjectType::Tuple:
    case ObjectType::External:
      return false;
    case ObjectType::Instance:
      return row_of(value) == nullptr;
    case ObjectType::Callable:
      return !CPythonFunction::matches(value.get());
    case ObjectType::Class:
      return python_type_behind(object_of<object_value_class>(value)) == nullptr;
    default:
      return true;
  }
}

PyObjectPtr to_python(const Any& value) {
  if (ensure_interpreter().is_error()) {
    return {};
  }
  const gil_lock gil;
  return convert(value, 0);
}

PyObjectPtr to_python_locked(const Any& value) { return convert(value, 0); }

}  // namespace ling::cpython
