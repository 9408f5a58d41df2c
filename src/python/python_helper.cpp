// Compiling helpers.
#include "python/python_helper.h"

#include "python/python_source.h"

namespace ling::cpython {

PyObject* python_helper::compile() const noexcept {
  const PyObjectPtr names(PyDict_New());
  if (!names || PyDict_SetItemString(names.get(), "__builtins__", PyEval_GetBuiltins()) != 0) {
    return nullptr;
  }
  const PyObjectPtr code(Py_CompileString(source_, name_, Py_file_input));
  const PyObjectPtr done(code ? PyEval_EvalCode(code.get(), names.get(), names.get()) : nullptr);
  PyObject* const function = done ? find(names.get(), name_) : nullptr;
  return function == nullptr ? nullptr : made_.publish(PyObjectPtr::share(function));
}

}  // namespace ling::cpython
