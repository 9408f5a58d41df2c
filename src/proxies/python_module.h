// CPythonModule: an imported Python module as a module of the host. Its classes, callables and values are those that
// the Python module had when it was exported, those with hidden names left out.
#pragma once

#include "ling/class_builder.h"
#include "ling/module.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

class object_value_python_module final : public object_value_module {
 public:
  // Without members yet. The lock must be held.
  object_value_python_module(const String& name, PyObjectPtr_Borrowed module);
  // Borrowed; never null.
  PyObject* python_module() const noexcept { return module_; }

 private:
  PyObject* const module_;  // a reference that is never released, as modules stay in the table
};

class CPythonModule : public Handle<CPythonModule, object_value_python_module, Module> {
  LING_HANDLE(CPythonModule, object_value_python_module)
  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

extern const class_definition<CPythonModule> cpython_module_class;

}  // namespace ling::cpython
