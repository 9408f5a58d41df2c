// What Python hands to an operator: values for the host, positions, and calls of the host's methods with them.
#pragma once

#include "lingobject/slots.h"

#include <span>

namespace ling::cpython {

// Whether a conversion has given an Error because the object does not fit into a value, as a number too large does not.
// An exception that is handed over is a value like any other.
bool conversion_failed(PyObject* object, const Any& converted);

// A Python object as a value, or a failure.
class operand {
 public:
  explicit operand(PyObject* object);

  const Any& value() const& noexcept { return value_; }
  const Any& value() const&& = delete;
  bool failed() const noexcept { return failed_; }
  // Of one that failed.
  Error error() const noexcept { return Error::unchecked(value_); }

 private:
  Any value_;
  bool failed_;
};

// Calls a method with the value in front of the arguments, also one that could be called without it. An Error of the
// method is a RuntimeError.
slot_result call_method_of(const Any& value, const I_Callable_Generic& method, std::span<const Any> arguments);
// The same by name; a method that is missing is a RuntimeError, too.
slot_result call_method_of(const Any& value, meta_method_untyped name, std::span<const Any> arguments);

// An outcome of the runtime, whose Error is a RuntimeError.
slot_result result_of(Any outcome);

}  // namespace ling::cpython
