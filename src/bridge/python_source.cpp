// Calling `exec` and `eval`, and the names that their code finds.
#include "python/python_source.h"

#include "ling/module.h"
#include "ling/reflection.h"
#include "python/convert.h"
#include "python/pending_exception.h"

namespace ling::cpython {

// Not PyDict_GetItemString, which does not tell a name that is missing from memory that is.
PyObject* find(PyObject* dict, const char* name) {
  const PyObjectPtr key(PyUnicode_FromString(name));
  return key ? PyDict_GetItemWithError(dict, key.get()) : nullptr;
}

void store(PyObject* dict, const String& name, const Any& value) {
  if (is_error_result(value)) {
    return;  // would be raised
  }
  // Not PyDict_SetItemString, which would end the name at a zero byte.
  const PyObjectPtr key(PyUnicode_FromStringAndSize(name.c_str(), static_cast<Py_ssize_t>(name.size())));
  const PyObjectPtr object = key ? to_python_locked(value) : PyObjectPtr();
  if (!object || PyDict_SetItem(dict, key.get(), object.get()) != 0) {
    tolerate_exception();
  }
}

bool is_hidden(const Module& module) {
  return compare_objects_value(module.importance(), Any(10)) == ordering_value::Equal;
}

void store_modules(PyObject* dict) {
  for (const Module& module : modules()) {
    // Most modules are Python's, below "python.": told apart first, since that is cheap.
    if (!module.name().contains(".") && !is_hidden(module)) {
      store(dict, module.name(), module);
    }
  }
}

PyObjectPtr call_builtin(const char* name, std::string_view source, PyObject* globals, PyObject* locals) {
  PyObject* builtins = PyEval_GetBuiltins();
  PyObject* function = builtins == nullptr ? nullptr : find(builtins, name);
  if (function == nullptr) {
    return {};
  }
  // With the length: a text with a zero byte in it is refused, not cut off.
  const PyObjectPtr arguments(
      Py_BuildValue("(s#OO)", source.data(), static_cast<Py_ssize_t>(source.size()), globals, locals));
  PyObjectPtr result(arguments ? PyObject_CallObject(function, arguments.get()) : nullptr);
  if (!result && PyErr_Occurred() == nullptr) {
    PyErr_NoMemory();  // which some versions of the parser do not say
  }
  return result;
}

}  // namespace ling::cpython
