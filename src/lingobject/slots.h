// Trampolines: one for each signature a slot can have.
//
// The body of a slot is an ordinary function: it returns a result and sets no exception, and what it calls may throw.
// The trampoline takes the value out of the wrapper, catches what is thrown, converts the result, sets the exception
// for a failure and returns what the slot returns then.
#pragma once

#include "ling/error.h"
#include "lingobject/wrapper.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/pyobject_ptr.h"
#include "python/recursion_guard.h"

namespace ling::cpython {

// The standard exceptions that slots raise with texts of their own.
enum class slot_exception : unsigned char {
  attribute_error,
  key_error,
  not_implemented_error,
  runtime_error,
  type_error
};

// What the body of a slot returns: a value yet to be converted, a finished Python object, a failure, or nothing. One
// pointer and what it means, because every access from Python passes through here.
class [[nodiscard]] slot_result {
 public:
  // A value to be converted; an Error is raised as the exception its class maps to.
  slot_result(Any value) noexcept : content_(content::value), pointer_(value.release()) {}
  // A finished object; null: an exception is set already.
  slot_result(PyObjectPtr object) noexcept : content_(content::object), pointer_(object.release()) {}
  // A Python exception with this message.
  slot_result(slot_exception type, String message) noexcept
      : content_(content::exception), exception_(type), pointer_(message.release()) {}
  // For a C API call that failed: its exception is set.
  static slot_result raised() noexcept { return PyObjectPtr(); }
  // Not a failure: the body has nothing to say.
  static slot_result absent() noexcept { return slot_result(content::nothing); }

  slot_result(slot_result&& other) noexcept
      : content_(std::exchange(other.content_, content::nothing)),
        exception_(other.exception_),
        pointer_(other.pointer_) {}
  slot_result& operator=(slot_result&& other) noexcept {
    std::swap(content_, other.content_);
    std::swap(exception_, other.exception_);
    std::swap(pointer_, other.pointer_);
    return *this;
  }
  slot_result(const slot_result&) = delete;
  slot_result& operator=(const slot_result&) = delete;
  ~slot_result() {
    if (content_ != content::nothing) [[unlikely]] {
      drop();
    }
  }

  bool is_absent() const noexcept { return content_ == content::nothing; }
  // A new reference, or null with an exception set.
  PyObject* to_object() && {
    PyObject* object = nullptr;
    if (content_ == content::object) {
      object = static_cast<PyObject*>(take());
    } else if (content_ == content::value) {
      object = to_python_locked(take_value()).release();
    }
    if (object == nullptr) [[unlikely]] {
      raise();
    }
    return object;
  }
  // 0, or -1 with an exception set. A value counts as success whatever it is.
  int to_status() && {
    if (content_ == content::value) {
      const Any value = take_value();
      if (!is_error_result(value)) [[likely]] {
        return 0;
      }
      raise_error(Error::unchecked(value));
    }
    raise();
    return -1;
  }

 private:
  enum class content : unsigned char { value, object, exception, nothing };

  explicit slot_result(content what) noexcept : content_(what) {}
  void* take() noexcept {
    content_ = content::nothing;
    return pointer_;
  }
  Any take_value() noexcept { return Any::adopt(static_cast<object_value*>(take())); }
  void drop() noexcept;
  // Sets the exception this holds; a slot that fails must have set one in the end.
  void raise();

  content content_;
  slot_exception exception_{};
  void* pointer_ = nullptr;
};
static_assert(sizeof(slot_result) == 2 * sizeof(void*));

// What a lazy value yields, as Python code gets it; null with an exception set, which is that of its Error if it yields
// one.
inline PyObjectPtr yielded_object(const Any& lazy) {
  return PyObjectPtr(slot_result(internal::unwrap(lazy)).to_object());
}

// A failure that Python shows as RuntimeError with a text of the slot's own; the exception carries the error. What ends
// a program rather than an operation (an interrupt, an exit) travels on as it is.
slot_result runtime_error(const Error& error, const String& message);
inline slot_result runtime_error(const Error& error) { return runtime_error(error, error.message()); }

// Runs what must not throw; a C++ exception becomes a Python one, in the place of any that is pending.
template <class R, class F>
R guarded(R failure, F&& body) noexcept {
  try {
    return body();
  } catch (...) {
    PyErr_Clear();
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
template <slot_result (*Body)(const Any& self, PyObject* wrapper, PyObject* name)>
PyObject* attribute_slot(PyObject* self, PyObject* name) noexcept {
  return guarded<PyObject*>(nullptr, [&]() -> PyObject* {
    slot_result result = Body(value_in(self), self, name);
    return result.is_absent() ? PyObject_GenericGetAttr(self, name) : std::move(result).to_object();
  });
}

// tp_setattro: a null value means deletion.
template <slot_result (*Body)(const Any& self, PyObject* name, PyObject* value)>
int set_attribute_slot(PyObject* self, PyObject* name, PyObject* value) noexcept {
  return guarded<int>(-1, [&] { return Body(value_in(self), name, value).to_status(); });
}

// A reference for a call, under the lock throughout. Not each caller has one: `functools.partial` may be given another
// callable while its former one is being called.
class [[nodiscard]] held_while_called {
 public:
  explicit held_while_called(PyObject* object) noexcept : object_(object) { Py_INCREF(object); }
  ~held_while_called() { Py_DECREF(object_); }
  held_while_called(const held_while_called&) = delete;
  held_while_called& operator=(const held_while_called&) = delete;

 private:
  PyObject* const object_;
};

// tp_call: the keywords may be null.
template <slot_result (*Body)(const Any& self, PyObject* arguments, PyObject* keywords)>
PyObject* call_slot(PyObject* self, PyObject* arguments, PyObject* keywords) noexcept {
  const held_while_called held(self);
  return guarded<PyObject*>(nullptr, [&] { return Body(value_in(self), arguments, keywords).to_object(); });
}

// tp_richcompare.
template <slot_result (*Body)(const Any& self, PyObject* other, int operation)>
PyObject* compare_slot(PyObject* self, PyObject* other, int operation) noexcept {
  return guarded<PyObject*>(nullptr, [&] { return Body(value_in(self), other, operation).to_object(); });
}

// tp_hash: any number but -1, which means that an exception is set.
template <Py_hash_t (*Body)(const Any& self)>
Py_hash_t hash_slot(PyObject* self) noexcept {
  return guarded<Py_hash_t>(-1, [&] { return Body(value_in(self)); });
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

}  // namespace ling::cpython
