// What Python hands to an operator: values for the host, positions, and calls of the host's methods with them.
#pragma once

#include "lingobject/slots.h"

#include <optional>
#include <span>

namespace ling::cpython {

// A Python object as a value. What does not fit into one, such as a number too large, has failed; an exception that is
// handed over has not: it is a value like any other.
class operand {
 public:
  explicit operand(PyObject* object);

  const Any& value() const noexcept { return value_; }
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
slot_result checked(Any outcome);

}  // namespace ling::cpython
