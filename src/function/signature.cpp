// The signatures of Python callables.
#include "function/annotation.h"
#include "function/defaults.h"
#include "python/call_python.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/module_attribute.h"
#include "python/pending_exception.h"

#include <vector>

namespace ling::cpython {

namespace {

constinit const module_attribute inspect_signature("inspect", "signature");
constinit const module_attribute get_type_hints("typing", "get_type_hints");

// The attribute of an object that inspect made; null with an exception set.
PyObjectPtr attribute(const PyObjectPtr& object, const char* name) {
  return PyObjectPtr(object ? PyObject_GetAttrString(object.get(), name) : nullptr);
}

// False with an exception set.
bool read_parameters(const PyObjectPtr& signature, std::vector<Parameter>& parameters) {
  const PyObjectPtr by_name = attribute(signature, "parameters");
  const PyObjectPtr values(by_name ? PyObject_CallMethod(by_name.get(), "values", nullptr) : nullptr);
  const PyObjectPtr iterator(values ? PyObject_GetIter(values.get()) : nullptr);
  while (iterator) {
    const PyObjectPtr parameter(PyIter_Next(iterator.get()));
    if (!parameter) {
      break;
    }
    const PyObjectPtr name = attribute(parameter, "name");
    const PyObjectPtr annotation = name ? attribute(parameter, "annotation") : PyObjectPtr();
    if (!annotation) {
      return false;
    }
    const auto text = String::cast(from_python_locked(name.get()));
    parameters.emplace_back(text ? text.value() : String(), type_from_annotation(annotation.get()));
  }
  return PyErr_Occurred() == nullptr;
}

// What an annotation table says of the result; null when it says nothing.
PyObjectPtr result_in(const PyObjectPtr& annotations) {
  PyObjectPtr result(annotations ? PyMapping_GetItemString(annotations.get(), "return") : nullptr);
  tolerate_exception();
  return result;
}

// Annotations that are texts are evaluated where that is possible.
Type result_type_of(PyObject* callable) {
  PyObject* const hints = get_type_hints.get();
  PyObjectPtr result =
      result_in(PyObjectPtr(hints == nullptr ? nullptr : PyObject_CallFunctionObjArgs(hints, callable, nullptr)));
  if (!result) {
    result = result_in(PyObjectPtr(PyObject_GetAttrString(callable, "__annotations__")));
  }
  return type_from_annotation(result.get());
}

}  // namespace

Result<Signature> signature_of_python(PyObjectPtr_Borrowed callable) {
  PyObject* const inspect = inspect_signature.get();
  if (inspect == nullptr) {
    return Error("Unable to access 'inspect.signature' function.");
  }
  const PyObjectPtr signature(PyObject_CallFunctionObjArgs(inspect, callable.get(), nullptr));
  std::vector<Parameter> parameters;
  if (!signature || !read_parameters(signature, parameters)) {
    return capture_error_or("Unable to fetch signature.");
  }
  return Signature(result_type_of(callable.get()), std::move(parameters), defaults_of(callable));
}

}  // namespace ling::cpython
