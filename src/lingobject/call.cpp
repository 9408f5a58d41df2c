// Calling a wrapped value.
#include "lingobject/call.h"

#include "ling/callable.h"
#include "ling/reflection.h"

#include <vector>

namespace ling::cpython {

argument_row::argument_row(PyObject* tuple) : length_(static_cast<std::size_t>(PyTuple_Size(tuple))) {
  if (length_ > few_.size()) {
    more_ = std::make_unique<Any[]>(length_);
  }
  Any* row = more_ ? more_.get() : few_.data();
  for (std::size_t i = 0; i < length_; ++i) {
    row[i] = from_python_locked(PyTuple_GetItem(tuple, static_cast<Py_ssize_t>(i)));
  }
}

namespace {

// False for a key that is no text; the exception is to be set.
bool read_keywords(PyObject* keywords, std::vector<named_argument>& named) {
  named.reserve(static_cast<std::size_t>(PyDict_Size(keywords)));
  PyObject *key, *value;
  for (Py_ssize_t position = 0; PyDict_Next(keywords, &position, &key, &value) != 0;) {
    // Converting may run Python code that changes a dictionary of the caller's own.
    const PyObjectPtr held_key = PyObjectPtr::share(key);
    const PyObjectPtr held_value = PyObjectPtr::share(value);
    const auto name = String::cast(from_python_locked(key));
    if (!name) {
      return false;
    }
    named.push_back({name.value(), from_python_locked(value)});
  }
  return true;
}

}  // namespace

slot_result call(const Any& value, PyObject* arguments, PyObject* keywords) {
  // The type object is that of what a lazy value yields, so calls are for that, too.
  if (value.has(object_traits::lazy)) [[unlikely]] {
    return call(internal::unwrap(value), arguments, keywords);
  }
  // Whoever calls holds the wrapper, and with it the value, until the call returns.
  if (!I_Callable_Generic::matches(value.get())) {
    return slot_result(slot_exception::runtime_error, String("Non-callable object: {}").arg(display_text(value)));
  }
  const auto& callable = static_cast<const object_value_callable&>(*value.get());
  const argument_row positional(arguments);
  if (keywords == nullptr || PyDict_Size(keywords) == 0) {
    return callable.call(positional);
  }
  std::vector<named_argument> named;
  if (!read_keywords(keywords, named)) {
    return slot_result(slot_exception::type_error, "keywords must be strings");
  }
  return callable.call_named(positional, named);
}

}  // namespace ling::cpython
