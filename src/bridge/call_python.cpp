// Calls into Python.
#include "python/call_python.h"

#include "ling/reflection.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/interpreter_function.h"

#include <array>
#include <vector>

namespace ling::cpython {

Error error_not_convertible(const Any& argument) {
  const auto captured = capture_error();
  return captured ? captured.value() : Error(String("Unable to convert an argument: {}.").arg(display_text(argument)));
}

namespace {

constinit const interpreter_function<PyObject*(PyObject*, PyObject* const*, std::size_t, PyObject*)> call_with_row(
    "PyObject_VectorcallDict");
// The callee may use the place in front of the first argument.
constexpr std::size_t place_in_front = ~(~std::size_t{0} >> 1);

// The arguments as a row of objects. Most calls allocate nothing for it.
class converted_row {
 public:
  converted_row() = default;
  converted_row(const converted_row&) = delete;
  converted_row& operator=(const converted_row&) = delete;

  // False with `failure` filled.
  bool convert(std::span<const Any> arguments, Any& failure) {
    if (arguments.size() > few) {
      more_owned_.resize(arguments.size());
      more_.resize(arguments.size() + 1);
    }
    PyObjectPtr* const owned = more_owned_.empty() ? owned_.data() : more_owned_.data();
    PyObject** const row = more_.empty() ? row_.data() : more_.data();
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      owned[i] = to_python_locked(arguments[i]);
      if (!owned[i]) {
        failure = error_not_convertible(arguments[i]);
        return false;
      }
      row[i + 1] = owned[i].get();
    }
    first_ = row + 1;
    return true;
  }
  PyObject* const* first() const noexcept { return first_; }

 private:
  static constexpr std::size_t few = 8;

  std::array<PyObjectPtr, few> owned_;
  std::array<PyObject*, few + 1> row_;
  std::vector<PyObjectPtr> more_owned_;
  std::vector<PyObject*> more_;
  PyObject* const* first_ = nullptr;
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
  converted_row arguments;
  const PyObjectPtr keywords =
      arguments.convert(positional, failure) && !named.empty() ? make_keywords(named, failure) : PyObjectPtr();
  if (!failure.empty()) {
    return failure;
  }
  return outcome_of(PyObjectPtr(
      call_with_row.get()(callable.get(), arguments.first(), positional.size() | place_in_front, keywords.get())));
}

}  // namespace ling::cpython
