// What Python has to say of an exception.
#include "bridge/exception_text.h"

#include "bridge/module_attribute.h"
#include "bridge/python_text.h"

namespace ling::cpython {

namespace {

constinit const module_attribute format_exception("traceback", "format_exception");

}  // namespace

String type_name_of(PyObject* object) {
  const PyObjectPtr name(PyObject_GetAttrString(reinterpret_cast<PyObject*>(Py_TYPE(object)), "__name__"));
  const bool is_text = name && PyUnicode_Check(name.get());
  PyErr_Clear();
  return is_text ? text_of(name.get(), surrogates::escape) : String();
}

String exception_message(PyObject* instance) {
  const PyObjectPtr text(PyObject_Str(instance));
  if (!text) {
    PyErr_Clear();
    return type_name_of(instance);
  }
  return text_of(text.get(), surrogates::escape);
}

String exception_traceback_text(PyObject* instance) {
  PyObject* const format = format_exception.get();
  if (format == nullptr) {
    return {};
  }
  // Spelled with all three arguments, which Python 3.9 insists on.
  const PyObjectPtr traceback(PyObject_GetAttrString(instance, "__traceback__"));
  const PyObjectPtr lines(traceback
                              ? PyObject_CallFunctionObjArgs(format, reinterpret_cast<PyObject*>(Py_TYPE(instance)),
                                                             instance, traceback.get(), nullptr)
                              : nullptr);
  const PyObjectPtr separator(lines ? PyUnicode_FromString("") : nullptr);
  const PyObjectPtr joined(separator ? PyUnicode_Join(separator.get(), lines.get()) : nullptr);
  PyErr_Clear();
  return text_of(joined.get(), surrogates::escape);
}

}  // namespace ling::cpython
