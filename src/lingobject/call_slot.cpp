// Calling a wrapped value.
#include "ling/callable.h"
#include "ling/reflection.h"
#include "lingobject/host_call.h"
#include "lingobject/slot_bodies.h"

#include <array>
#include <memory>
#include <span>
#include <vector>

namespace ling::cpython {

namespace {

// The items of a Python tuple as a row of values.
class converted_arguments {
 public:
  explicit converted_arguments(PyObject* tuple);
  converted_arguments(const converted_arguments&) = delete;
  converted_arguments& operator=(const converted_arguments&) = delete;

  // The Error of an item that does not fit into a value; null when all do.
  const Any* failure() const noexcept { return failure_; }
  operator std::span<const Any>() const noexcept { return {more_ ? more_.get() : few_.data(), length_}; }

 private:
  std::size_t length_;
  const Any* failure_ = nullptr;
  std::array<Any, 8> few_;  // most calls allocate nothing
  std::unique_ptr<Any[]> more_;
};

converted_arguments::converted_arguments(PyObject* tuple) : length_(static_cast<std::size_t>(PyTuple_Size(tuple))) {
  if (length_ > few_.size()) {
    more_ = std::make_unique<Any[]>(length_);
  }
  Any* row = more_ ? more_.get() : few_.data();
  for (std::size_t i = 0; i < length_; ++i) {
    PyObject* const item = PyTuple_GetItem(tuple, static_cast<Py_ssize_t>(i));
    row[i] = from_python_locked(item);
    if (failure_ == nullptr && conversion_failed(item, row[i])) [[unlikely]] {
      failure_ = &row[i];
    }
  }
}

// Absent when all keywords are read.
slot_result read_keywords(PyObject* keywords, std::vector<named_argument>& named) {
  named.reserve(static_cast<std::size_t>(PyDict_Size(keywords)));
  PyObject *key, *value;
  for (Py_ssize_t position = 0; PyDict_Next(keywords, &position, &key, &value) != 0;) {
    // Converting may run Python code that changes a dictionary of the caller's own.
    const PyObjectPtr held_key = PyObjectPtr::share(key);
    const PyObjectPtr held_value = PyObjectPtr::share(value);
    const auto name = String::cast(from_python_locked(key));
    if (!name) {
      return slot_result(slot_exception::type_error, "keywords must be strings");
    }
    const operand argument(value);
    if (argument.failed()) {
      return runtime_error(argument.error());
    }
    named.push_back({name.value(), argument.value()});
  }
  return slot_result::absent();
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
  const converted_arguments positional(arguments);
  if (positional.failure() != nullptr) [[unlikely]] {
    return runtime_error(Error::unchecked(*positional.failure()));
  }
  if (keywords == nullptr || PyDict_Size(keywords) == 0) {
    return callable.call(positional);
  }
  std::vector<named_argument> named;
  slot_result failure = read_keywords(keywords, named);
  return failure.is_absent() ? slot_result(callable.call_named(positional, named)) : std::move(failure);
}

}  // namespace ling::cpython
