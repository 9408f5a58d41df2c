// Failures of slots.
#include "lingobject/slots.h"

namespace ling::cpython {

void slot_result::raise() const {
  if (exception_ != nullptr) {
    PyErr_SetString(exception_, static_cast<const object_value_string&>(*value_.get()).data());
  } else if (is_error_result(value_)) {
    raise_error(Error::unchecked(value_));
  }
  require_exception();
}

slot_result runtime_error(const Error& error, const String& message) {
  raise_error(error);
  if (PyErr_ExceptionMatches(PyExc_Exception) == 0) {
    return slot_result::raised();
  }
  PyErr_Clear();
  return slot_result::exception(PyExc_RuntimeError, message);
}

void slot_result::require_exception() noexcept {
  if (PyErr_Occurred() == nullptr) {
    PyErr_SetString(PyExc_RuntimeError, "The value has no counterpart in Python.");
  }
}

}  // namespace ling::cpython
