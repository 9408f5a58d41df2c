// Operands, and methods called with them.
#include "lingobject/host_call.h"

#include "ling/detail/argument_row.h"
#include "ling/reflection.h"
#include "lingobject/ling_object.h"

namespace ling::cpython {

bool conversion_failed(PyObject* object, const Any& converted) {
  return is_error_result(converted) && wrapped_value(object) == nullptr && !PyExceptionInstance_Check(object);
}

operand::operand(PyObject* object) : value_(from_python_locked(object)), failed_(conversion_failed(object, value_)) {}

slot_result call_method_of(const Any& value, const I_Callable_Generic& method, std::span<const Any> arguments) {
  const recursion_guard guard;
  if (!guard) {
    return slot_result::raised();
  }
  return result_of(method.callWith(internal::prefixed_row(value, arguments)));
}

slot_result call_method_of(const Any& value, meta_method_untyped name, std::span<const Any> arguments) {
  const auto method = method_of(value, name);
  return method ? call_method_of(value, method.value(), arguments) : runtime_error(error_method_not_found(value, name));
}

slot_result result_of(Any outcome) {
  if (is_error_result(outcome)) [[unlikely]] {
    return runtime_error(Error::unchecked(std::move(outcome)));
  }
  return outcome;
}

}  // namespace ling::cpython
