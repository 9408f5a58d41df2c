// Calling a wrapped value.
#include "ling/callable.h"
#include "ling/reflection.h"
#include "lingobject/host_call.h"
#include "lingobject/slot_bodies.h"

#include <memory>
#include <span>
#include <vector>

namespace ling::cpython {

namespace {

// What a callable is called with: its receiver, if it has one, which is borrowed, and the arguments as values.
class argument_row {
 public:
  argument_row(object_value* receiver, std::size_t maximum) {
    if (maximum >= inline_capacity) [[unlikely]] {
      more_ = std::make_unique<std::byte[]>((maximum + 1) * sizeof(Any));
      slots_ = reinterpret_cast<Any*>(more_.get());
    }
    if (receiver != nullptr) {
      std::construct_at(slots_, Any::adopt(receiver));
      borrowed_ = length_ = 1;
    }
  }
  ~argument_row() { std::destroy(slots_ + borrowed_, slots_ + length_); }
  argument_row(const argument_row&) = delete;
  argument_row& operator=(const argument_row&) = delete;

  void add(PyObject* object) {
    const Any& value = *std::construct_at(slots_ + length_, from_python_locked(object));
    ++length_;
    if (is_error_result(value) && failure_ == nullptr && conversion_failed(object, value)) [[unlikely]] {
      failure_ = &value;
    }
  }
  // The Error of the first argument that does not fit into a value; null when all do.
  const Any* failure() const noexcept { return failure_; }
  operator std::span<const Any>() const noexcept { return {slots_, length_}; }

 private:
  static constexpr std::size_t inline_capacity = 9;

  alignas(Any) std::byte inline_[inline_capacity * sizeof(Any)];  // most calls allocate nothing
  std::unique_ptr<std::byte[]> more_;
  Any* slots_ = reinterpret_cast<Any*>(inline_);
  std::size_t borrowed_ = 0;
  std::size_t length_ = 0;
  const Any* failure_ = nullptr;
};

// Nothing to say when the argument has joined the row.
slot_result add_named(std::vector<named_argument>& row, PyObject* key, PyObject* value) {
  const auto name = String::cast(from_python_locked(key));
  if (!name) {
    return slot_result(slot_exception::type_error, "keywords must be strings");
  }
  const operand argument(value);
  if (argument.failed()) {
    return runtime_error(argument.error());
  }
  row.push_back({name.value(), argument.value()});
  return slot_result::absent();
}

slot_result read_keywords(PyObject* keywords, std::vector<named_argument>& row) {
  slot_result failure = slot_result::absent();
  PyObject *key, *value;
  for (Py_ssize_t position = 0; failure.is_absent() && PyDict_Next(keywords, &position, &key, &value) != 0;) {
    // Converting may run Python code that changes a dictionary of the caller's own.
    const PyObjectPtr held_key = PyObjectPtr::share(key);
    const PyObjectPtr held_value = PyObjectPtr::share(value);
    failure = add_named(row, key, value);
  }
  return failure;
}

slot_result error_not_callable(const Any& value) {
  return slot_result(slot_exception::runtime_error, String("Non-callable object: {}").arg(display_text(value)));
}

const object_value_callable& callable_in(const Any& value) noexcept {
  return static_cast<const object_value_callable&>(*value.get());
}

// The named arguments stand behind the positional ones.
slot_result call_row(const object_value_callable& callable, object_value* receiver,
                     std::span<PyObject* const> positional, PyObject* names) {
  argument_row row(receiver, positional.size());
  for (PyObject* const each : positional) {
    row.add(each);
  }
  if (row.failure() != nullptr) [[unlikely]] {
    return runtime_error(Error::unchecked(*row.failure()));
  }
  const Py_ssize_t name_count = names == nullptr ? 0 : PyTuple_Size(names);
  if (name_count == 0) {
    return callable.call(row);
  }
  std::vector<named_argument> named;
  named.reserve(static_cast<std::size_t>(name_count));
  slot_result failure = slot_result::absent();
  for (Py_ssize_t i = 0; failure.is_absent() && i < name_count; ++i) {
    failure =
        add_named(named, PyTuple_GetItem(names, i), positional.data()[positional.size() + static_cast<std::size_t>(i)]);
  }
  return failure.is_absent() ? slot_result(callable.call_named(row, named)) : std::move(failure);
}

slot_result call_value(const Any& value, std::span<PyObject* const> positional, PyObject* names) {
  return I_Callable_Generic::matches(value.get()) ? call_row(callable_in(value), nullptr, positional, names)
                                                  : error_not_callable(value);
}

// The wrapper lives until the call returns, and with it the value, or the receiver: a method that becomes a value
// meanwhile keeps that in it.
slot_result call_wrapper(PyObject* self, std::span<PyObject* const> positional, PyObject* names) {
  const auto& wrapper = *reinterpret_cast<const callable_wrapper_object*>(self);
  if (wrapper.method != nullptr) {
    return call_row(*wrapper.method, value_in(wrapper.receiver).get(), positional, names);
  }
  // The type object is that of what a lazy value yields, so calls are for that, too.
  const Any& value = value_in(self);
  return value.has(object_traits::lazy) ? call_value(internal::unwrap(value), positional, names)
                                        : call_value(value, positional, names);
}

}  // namespace

slot_result call(const Any& value, PyObject* arguments, PyObject* keywords) {
  if (value.has(object_traits::lazy)) [[unlikely]] {
    return call(internal::unwrap(value), arguments, keywords);
  }
  if (!I_Callable_Generic::matches(value.get())) {
    return error_not_callable(value);
  }
  const auto length = static_cast<std::size_t>(PyTuple_Size(arguments));
  argument_row row(nullptr, length);
  for (std::size_t i = 0; i < length; ++i) {
    row.add(PyTuple_GetItem(arguments, static_cast<Py_ssize_t>(i)));
  }
  if (row.failure() != nullptr) [[unlikely]] {
    return runtime_error(Error::unchecked(*row.failure()));
  }
  if (keywords == nullptr || PyDict_Size(keywords) == 0) {
    return callable_in(value).call(row);
  }
  std::vector<named_argument> named;
  slot_result failure = read_keywords(keywords, named);
  return failure.is_absent() ? slot_result(callable_in(value).call_named(row, named)) : std::move(failure);
}

PyObject* call_by_vector(PyObject* self, PyObject* const* arguments, std::size_t count, PyObject* names) noexcept {
  const held_while_called held(self);
  return guarded<PyObject*>(nullptr, [&]() -> PyObject* {
    // The interpreter counts calls by tuple only.
    const recursion_guard guard(" while calling a Python object");
    const std::size_t positional = count & ~vectorcall_offset_flag;
    return guard ? call_wrapper(self, {arguments, positional}, names).to_object() : nullptr;
  });
}

}  // namespace ling::cpython
