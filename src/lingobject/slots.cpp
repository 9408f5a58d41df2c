// Failures of slots.
#include "lingobject/slots.h"

namespace ling::cpython {

namespace {

PyObject* python_exception(slot_exception type) noexcept {
  switch (type) {
    case slot_exception::attribute_error:
      return PyExc_AttributeError;
    case slot_exception::key_error:
      return PyExc_KeyError;
    case slot_exception::not_implemented_error:
      return PyExc_NotImplementedError;
    case slot_exception::type_error:
      return PyExc_TypeError;
    case slot_exception::runtime_error:
      break;
  }
  return PyExc_RuntimeError;
}

}  // namespace

void slot_result::raise() {
  if (content_ == content::exception) {
    // Whole texts: a name that a message quotes may hold zero bytes.
    const PyObjectPtr message = to_python_locked(take_value());
    if (message) {
      PyErr_SetObject(python_exception(exception_), message.get());
    }
  }
  if (PyErr_Occurred() == nullptr) {
    PyErr_SetString(PyExc_RuntimeError, "The value has no counterpart in Python.");
  }
}

void slot_result::drop() noexcept {
  if (content_ == content::object) {
    const PyObjectPtr object(static_cast<PyObject*>(take()));
  } else {
    const Any value = take_value();
  }
}

slot_result runtime_error(const Error& error, const String& message) {
  raise_error_as(PyExc_RuntimeError, error, message);
  return slot_result::raised();
}

}  // namespace ling::cpython
