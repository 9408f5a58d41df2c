// Calls into Python.
#include "python/call_python.h"

#include "ling/reflection.h"
#include "python/convert.h"
#include "python/error_bridge.h"

namespace ling::cpython {

Error error_not_convertible(const Any& argument) {
  const auto captured = capture_error();
  return captured ? captured.value() : Error(String("Unable to convert an argument: {}.").arg(display_text(argument)));
}

namespace {

// The arguments as a tuple; null with `failure` filled.
PyObjectPtr make_arguments(std::span<const Any> arguments, Any& failure) {
  PyObjectPtr tuple(PyTuple_New(static_cast<Py_ssize_t>(arguments.size())));
  if (!tuple) {
    failure = capture_error_or("Unable to make a tuple of arguments.");
  }
  for (std::size_t i = 0; tuple && i < arguments.size(); ++i) {
    PyObjectPtr item = to_python_locked(arguments[i]);
    if (!item) {
      failure = error_not_convertible(arguments[i]);
      return {};
    }
    PyTuple_SetItem(tuple.get(), static_cast<Py_ssize_t>(i), item.release());  // cannot fail: the tuple is new
  }
  return tuple;
}

PyObjectPtr make_keywords(std::span<const named_argument> named, Any& failure) {
  PyObjectPtr keywords(PyDict_New());
  if (!keywords) {
    failure = capture_error_or("Unable to make a dict of arguments.");
    return {};
  }
  for (const named_argument& each : named) {
    const PyObjectPtr key = to_python_locked(each.name);
    const PyObjectPtr value = key ? to_python_locked(each.value) : PyObjectPtr();
    if (!value || PyDict_SetItem(keywords.get(), key.get(), value.get()) != 0) {
      failure = error_not_convertible(each.value);
      return {};
    }
  }
  return keywords;
}

Any outcome_of(const PyObjectPtr& returned) {
  return returned ? from_python_locked(returned.get()) : Any(capture_error_or("The call failed without an exception."));
}

}  // namespace

Any call_python(PyObjectPtr_Borrowed callable, std::span<const Any> positional) {
  return call_python(callable, positional, {});
}

Any call_python(PyObjectPtr_Borrowed callable, std::span<const Any> positional, std::span<const named_argument> named) {
  Any failure;
  const PyObjectPtr arguments = make_arguments(positional, failure);
  const PyObjectPtr keywords = arguments && !named.empty() ? make_keywords(named, failure) : PyObjectPtr();
  if (!failure.empty()) {
    return failure;
  }
  return outcome_of(PyObjectPtr(PyObject_Call(callable.get(), arguments.get(), keywords.get())));
}

}  // namespace ling::cpython
