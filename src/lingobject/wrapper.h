// The instances of wrapper types: their layout, and what all slots need of them. The lock must be held for everything.
#pragma once

#include "ling/any.h"
#include "python/python_api.h"

namespace ling::cpython {

// Fixed: the object header and one pointer to the handle, which is made with the instance and never replaced.
struct wrapper_object {
  PyObject ob_base;
  Any* value;
};
static_assert(sizeof(wrapper_object) == sizeof(PyObject) + sizeof(void*));

// The tp_name of the five shared types. A wrapper is recognised by this very storage, not by the text.
extern const char shared_type_name[];

// The value of an object that is known to be a wrapper, as `self` is in a slot.
inline const Any& value_in(PyObject* self) noexcept { return *reinterpret_cast<wrapper_object*>(self)->value; }

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

// tp_dealloc.
void wrapper_dealloc(PyObject* self) noexcept;

}  // namespace ling::cpython
