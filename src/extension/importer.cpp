// The importer is Python code with two native functions among its globals.
#include "extension/startup_steps.h"
#include "lingobject/module_export.h"
#include "python/pending_exception.h"
#include "python/pyobject_ptr.h"
#include "python/python_source.h"

namespace ling::cpython {

namespace {

constexpr const char* importer_code = R"(
import importlib.util
import sys

class _LingModuleImporter:
    def find_spec(self, fullname, path=None, target=None):
        if _ling_has_module(fullname):
            return importlib.util.spec_from_loader(fullname, self, is_package=True)
        return None

    def create_module(self, spec):
        return _ling_create_module(spec.name)

    def exec_module(self, module):
        pass

sys.meta_path.insert(0, _LingModuleImporter())
)";

// Python keeps pointers into the table.
PyMethodDef importer_functions[] = {
    {"_ling_has_module",    &has_ling_module,    METH_O, nullptr},
    {"_ling_create_module", &create_ling_module, METH_O, nullptr},
};

bool add_functions(PyObject* globals) {
  for (PyMethodDef& definition : importer_functions) {
    const PyObjectPtr function(PyCMethod_New(&definition, nullptr, nullptr, nullptr));
    if (!function || PyDict_SetItemString(globals, definition.ml_name, function.get()) != 0) {
      return false;
    }
  }
  return true;
}

}  // namespace

void install_importer() {
  // Whoever started the interpreter may be handling an exception of their own.
  const pending_exception_aside aside;
  const PyObjectPtr globals(PyDict_New());
  PyObject* builtins = PyEval_GetBuiltins();
  PyObject* exec = builtins == nullptr ? nullptr : find(builtins, "exec");
  if (!globals || exec == nullptr || !add_functions(globals.get())) {
    return;
  }
  const PyObjectPtr arguments(Py_BuildValue("(sOO)", importer_code, globals.get(), globals.get()));
  const PyObjectPtr result(arguments ? PyObject_CallObject(exec, arguments.get()) : nullptr);
}

}  // namespace ling::cpython
