// Finding a Python object by its dotted name.
#include "language/evaluation.h"
#include "ling/detail/try.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/interpreter.h"
#include "python/pending_exception.h"

#include <string_view>

namespace ling::cpython {

namespace {

Result<Any> find_object(PyObject* module, const String& module_name, const String& object_name, const String& name) {
  PyObject* dict = PyModule_GetDict(module);
  if (dict == nullptr) {
    tolerate_exception();
    return Error(String("Unable to get the module dict: {}.").arg(module_name));
  }
  const PyObjectPtr key = to_python_locked(object_name);
  PyObject* object = key ? PyDict_GetItemWithError(dict, key.get()) : nullptr;
  if (object == nullptr) {
    tolerate_exception();
    return Error(String("Unable to find the object: {}.").arg(name));
  }
  // The module may drop the object while it is converted.
  const PyObjectPtr kept = PyObjectPtr::share(object);
  return from_python_locked(kept.get());
}

}  // namespace

Result<Any> resolve(const String& name) {
  if (name.empty()) {
    return Any();
  }
  const std::size_t dot = name.view().rfind('.');
  const String module_name(name.view().substr(0, dot));
  const String object_name(dot == std::string_view::npos ? std::string_view() : name.view().substr(dot + 1));

  TRY(ensure_interpreter());
  const GilGuard lock;
  const PyObjectPtr module_text = to_python_locked(module_name);
  const PyObjectPtr module(module_text ? PyImport_Import(module_text.get()) : nullptr);
  if (!module) {
    return capture_error_or(String("Unable to find the module: {}.").arg(module_name).c_str());
  }
  if (object_name.empty()) {
    return from_python_locked(module.get());
  }
  return find_object(module.get(), module_name, object_name, name);
}

}  // namespace ling::cpython
