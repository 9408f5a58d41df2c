// Trampolines: one for each signature a slot can have.
//
// The body of a slot is an ordinary function: it returns a result and sets no exception, and what it calls may throw.
// The trampoline takes the value out of the wrapper, catches what is thrown, converts the result, sets the exception
// for a failure and returns what the slot returns then.
#pragma once

#include "bridge/convert.h"
#include "bridge/error_bridge.h"
#include "extension/pyobject_ptr.h"
#include "ling/error.h"
#include "lingobject/wrapper.h"

namespace ling::cpython {

// What the body of a slot returns: a value yet to be converted, a finished Python object, or a failure.
class [[nodiscard]] slot_result {
 public:
  // A value to be converted; an Error is raised as the exception its class maps to.
  slot_result(Any value) noexcept : value_(std::move(value)) {}
  // A finished object; null: an exception is set already.
  slot_result(PyObjectPtr object) noexcept : object_(std::move(object)), content_(content::object) {}
  // A Python exception of a standard type with this message.
  static slot_result exception(PyObject* type, const String& message) noexcept {
    slot_result result{Any(message)};
    result.exception_ = type;
    return result;
  }
  // For a C API call that failed: its exception is set.
  static slot_result raised() noexcept { return PyObjectPtr(); }
  // Not a failure: the body has nothing to say.
  static slot_result absent() noexcept {
    slot_result result{PyObjectPtr()};
    result.content_ = content::none;
    return result;
  }

  bool is_absent() const noexcept { return content_ == content::none; }
  // A new reference, or null with an exception set.
  PyObject* to_object() && {
    if (exception_ != nullptr) [[unlikely]] {
      raise();
    } else if (content_ == content::value) {
      object_ = to_python_locked(value_);
    }
    if (!object_) [[unlikely]] {
      require_exception();
    }
    return object_.release();
  }
  // 0, or -1 with an exception set.
  int to_status() && {
    if (exception_ == nullptr && !is_error_result(value_) && (content_ != content::object || object_)) [[likely]] {
      return 0;
    }
    raise();
    return -1;
  }

 private:
  void raise() const;
  // A slot that fails must have set an exception.
  static void require_exception() noexcept;

  Any value_;
  PyObjectPtr object_;
  PyObject* exception_ = nullptr;
  enum class content : unsigned char { value, object, none } content_ = content::value;
};

// A failure that Python shows as RuntimeError with a text of the slot's own. What ends a program rather than an
// operation (an interrupt, an exit) travels on as it is.
slot_result runtime_error(const Error& error, const String& message);

// Runs what must not throw; a C++ exception becomes a Python one.
template <class R, class F>
R guarded(R failure, F&& body) noexcept {
  try {
    return body();
  } catch (...) {
    raise_error(Error::fromCurrentException());
    return failure;
  }
}

// tp_repr, tp_str, tp_iter.
template <slot_result (*Body)(const Any& self, PyObject* wrapper)>
PyObject* unary_slot(PyObject* self) noexcept {
  return guarded<PyObject*>(nullptr, [&] { return Body(value_in(self), self).to_object(); });
}

// tp_iternext: nothing to say is the end.
template <slot_result (*Body)(const Any& self)>
PyObject* next_slot(PyObject* self) noexcept {
  return guarded<PyObject*>(nullptr, [&]() -> PyObject* {
    slot_result result = Body(value_in(self));
    return result.is_absent() ? nullptr : std::move(result).to_object();
  });
}

// tp_getattro: nothing to say means that Python's own lookup decides.
template <slot_result (*Body)(const Any& self, PyObject* name)>
PyObject* attribute_slot(PyObject* self, PyObject* name) noexcept {
  return guarded<PyObject*>(nullptr, [&]() -> PyObject* {
    slot_result result = Body(value_in(self), name);
    return result.is_absent() ? PyObject_GenericGetAttr(self, name) : std::move(result).to_object();
  });
}

// tp_setattro: a null value means deletion.
template <slot_result (*Body)(const Any& self, PyObject* name, PyObject* value)>
int set_attribute_slot(PyObject* self, PyObject* name, PyObject* value) noexcept {
  return guarded<int>(-1, [&] { return Body(value_in(self), name, value).to_status(); });
}

// tp_call: the keywords may be null.
template <slot_result (*Body)(const Any& self, PyObject* arguments, PyObject* keywords)>
PyObject* call_slot(PyObject* self, PyObject* arguments, PyObject* keywords) noexcept {
  return guarded<PyObject*>(nullptr, [&] { return Body(value_in(self), arguments, keywords).to_object(); });
}

// tp_richcompare.
template <slot_result (*Body)(const Any& self, PyObject* other, int operation)>
PyObject* compare_slot(PyObject* self, PyObject* other, int operation) noexcept {
  return guarded<PyObject*>(nullptr, [&] { return Body(value_in(self), other, operation).to_object(); });
}

// tp_hash: any number; -1 is how Python spells failure.
template <std::uint64_t (*Body)(const Any& self)>
Py_hash_t hash_slot(PyObject* self) noexcept {
  return guarded<Py_hash_t>(-1, [&] {
    const auto hash = static_cast<Py_hash_t>(Body(value_in(self)));
    return hash == -1 ? -2 : hash;
  });
}

// The getter and setter of a tp_getset entry; the closure is the interned name of the property.
template <slot_result (*Body)(const Any& self, const name_entry* name)>
PyObject* getter_slot(PyObject* self, void* closure) noexcept {
  return guarded<PyObject*>(nullptr,
                            [&] { return Body(value_in(self), static_cast<const name_entry*>(closure)).to_object(); });
}
template <slot_result (*Body)(const Any& self, const name_entry* name, PyObject* value)>
int setter_slot(PyObject* self, PyObject* value, void* closure) noexcept {
  return guarded<int>(-1,
                      [&] { return Body(value_in(self), static_cast<const name_entry*>(closure), value).to_status(); });
}

// Counts a call into the host against Python's recursion limit, so that recursion through both ends in RecursionError.
class [[nodiscard]] recursion_guard {
 public:
  recursion_guard() noexcept : entered_(Py_EnterRecursiveCall(" in a call of the host") == 0) {}
  ~recursion_guard() {
    if (entered_) {
      Py_LeaveRecursiveCall();
    }
  }
  recursion_guard(const recursion_guard&) = delete;
  recursion_guard& operator=(const recursion_guard&) = delete;
  // Whether there is room; otherwise the exception is set.
  explicit operator bool() const noexcept { return entered_; }

 private:
  const bool entered_;
};

}  // namespace ling::cpython
