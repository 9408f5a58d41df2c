// Python's operators as methods of the wrapped value.
#pragma once

#include "lingobject/host_call.h"
#include "lingobject/ling_object.h"

namespace ling::cpython {

// The operators that values can have. A value has one by having its method.
enum class host_operator : unsigned char {
  subtract,
  inplace_subtract,
  divide,
  inplace_divide,
  bit_and,
  bit_or,
  bit_xor,
  invert,
  concat,
  extend,
  repeat,
  inplace_repeat
};

// What the operator gives for the value; without an operand it has only one side.
slot_result apply_operator(host_operator which, const Any& value);
slot_result apply_operator(host_operator which, const Any& value, const Any& operand);

// Trampolines. When only the right side is a wrapper, they fail without an exception, and Python reports a SystemError.

template <host_operator Which>
PyObject* unary_operator(PyObject* self) noexcept {
  return guarded<PyObject*>(nullptr, [&] { return apply_operator(Which, value_in(self)).to_object(); });
}

template <host_operator Which>
PyObject* binary_operator(PyObject* left, PyObject* right) noexcept {
  return guarded<PyObject*>(nullptr, [&]() -> PyObject* {
    const Any* value = wrapped_value(left);
    if (value == nullptr) {
      return nullptr;
    }
    const operand other(right);
    return other.failed() ? runtime_error(other.error()).to_object()
                          : apply_operator(Which, *value, other.value()).to_object();
  });
}

template <host_operator Which>
PyObject* counted_operator(PyObject* self, Py_ssize_t count) noexcept {
  return guarded<PyObject*>(
      nullptr, [&] { return apply_operator(Which, value_in(self), static_cast<std::int64_t>(count)).to_object(); });
}

}  // namespace ling::cpython
