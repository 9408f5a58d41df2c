// The instances of wrapper types: their layout, and what all slots need of them. The lock must be held for everything.
#pragma once

#include "ling/callable.h"
#include "python/pyobject_ptr.h"
#include "python/type_layout.h"

namespace ling::cpython {

// Fixed: the object header and one pointer to the handle, which is made with the instance and never replaced.
struct wrapper_object {
  PyObject ob_base;
  Any* value;
};
static_assert(sizeof(wrapper_object) == sizeof(PyObject) + sizeof(void*));

// An instance of a type with the flag `has_vectorcall`. What follows the pointer to the value is no part of the size
// that the type tells Python, which is the same for all wrappers; instances are made here only, so it need not be.
struct callable_wrapper_object {
  wrapper_object wrapper;
  vectorcall_function vectorcall;
  // A method that was read from a wrapper is a callable, which its class keeps for ever, and a reference to that
  // wrapper. Most are called and gone. When one is asked for its value, it gets that, and loses these two.
  const object_value_callable* method;
  PyObject* receiver;
};

// The tp_name of the five shared types. A wrapper is recognised by this very storage, not by the text.
extern const char shared_type_name[];

// For a method that was read from a wrapper and has no value yet: makes it. Exhausted memory is thrown.
const Any& make_bound_value(PyObject* method);

// The value of an object that is known to be a wrapper, as `self` is in a slot.
inline const Any& value_in(PyObject* self) {
  const Any* value = reinterpret_cast<wrapper_object*>(self)->value;
  return value != nullptr ? *value : make_bound_value(self);
}

// A typed handle that does not count: for values that somebody else keeps alive for as long as the handle is used.
template <class H>
class borrowed {
 public:
  explicit borrowed(const Any&& value) = delete;
  explicit borrowed(const Any& value) noexcept : handle_(H::unchecked(Any::adopt(value.get()))) {}
  ~borrowed() { static_cast<void>(handle_.release()); }
  borrowed(const borrowed&) = delete;
  borrowed& operator=(const borrowed&) = delete;
  const H* operator->() const noexcept { return &handle_; }
  const H& operator*() const noexcept { return handle_; }

 private:
  H handle_;
};

// A method of the class of the value that `receiver` wraps, bound to that value. Null with an exception set when there
// is no memory.
PyObjectPtr wrap_bound(const Any& method, PyObject* receiver);

// tp_dealloc.
void wrapper_dealloc(PyObject* self) noexcept;
// That of types with the flag `has_vectorcall`.
void callable_wrapper_dealloc(PyObject* self) noexcept;

}  // namespace ling::cpython
