// Calls into Python.
#include "python/call_python.h"

#include "ling/reflection.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/interpreter_function.h"
#include "python/type_layout.h"

#include <memory>

namespace ling::cpython {

Error error_not_convertible(const Any& argument) {
  const auto captured = capture_error();
  return captured ? captured.value() : Error(String("Unable to convert an argument: {}.").arg(display_text(argument)));
}

namespace {

constinit const interpreter_function<PyObject*(PyObject*, PyObject* const*, std::size_t, PyObject*)> call_with_row(
    "PyObject_VectorcallDict");
// The arguments as a row of objects. Most calls allocate nothing for it.
class converted_row {
 public:
  explicit converted_row(std::size_t capacity)
      : more_(capacity > few ? std::make_unique<PyObject*[]>(capacity + 1) : nullptr),
        first_((more_ ? more_.get() : row_) + 1) {}
  ~converted_row() {
    for (std::size_t i = 0; i < length_; ++i) {
      const PyObjectPtr dying(first_[i]);
    }
  }
  converted_row(const converted_row&) = delete;
  converted_row& operator=(const converted_row&) = delete;

  // False with `failure` filled.
  bool convert(std::span<const Any> arguments, Any& failure) {
    for (const Any& argument : arguments) {
      PyObjectPtr object = to_python_locked(argument);
      if (!object) {
        failure = error_not_convertible(argument);
        return false;
      }
      first_[length_++] = object.release();
    }
    return true;
  }
  PyObject* const* first() const noexcept { return first_; }

 private:
  static constexpr std::size_t few = 8;

  PyObject* row_[few + 1];
  std::unique_ptr<PyObject*[]> more_;
  PyObject** first_;
  std::size_t length_ = 0;
};

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
  converted_row arguments(positional.size());
  const PyObjectPtr keywords =
      arguments.convert(positional, failure) && !named.empty() ? make_keywords(named, failure) : PyObjectPtr();
  if (!failure.empty()) {
    return failure;
  }
  return outcome_of(PyObjectPtr(call_with_row.get()(callable.get(), arguments.first(),
                                                    positional.size() | vectorcall_offset_flag, keywords.get())));
}

}  // namespace ling::cpython
