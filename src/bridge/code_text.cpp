// Values as Python code.
#include "bridge/convert.h"
#include "bridge/error_bridge.h"
#include "bridge/python_text.h"
#include "extension/interpreter.h"
#include "ling/reflection.h"
#include "lingobject/ling_object.h"

namespace ling::cpython {

Result<String> to_code(const Any& value) {
  ensure_interpreter();
  const GilGuard gil;
  const PyObjectPtr object = to_python_locked(value);
  if (!object) {
    PyErr_Clear();
    return String();
  }
  // The wrapper's own `repr` is this very operation.
  if (const Any* wrapped = wrapped_value(object.get())) {
    return display(*wrapped);
  }
  const PyObjectPtr text(PyObject_Repr(object.get()));
  if (!text) {
    return capture_error_or("Unable to get the code text of a Python object.");
  }
  return text_of(text.get(), surrogates::escape);
}

}  // namespace ling::cpython
