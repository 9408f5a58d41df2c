// CPythonObject: the value that stands for a Python object which has no counterpart in the runtime. It holds the object
// and copies nothing out of it; on the way back it becomes the very same object again.
#pragma once

#include "extension/pyobject_ptr.h"
#include "ling/class_builder.h"
#include "ling/spinlock.h"

#include <mutex>

namespace ling::cpython {

// The C++ data of an instance: one strong reference, or null in an instance made without an object. Dies on any thread;
// the reference takes the interpreter lock to let go.
class python_reference {
 public:
  python_reference() noexcept = default;
  explicit python_reference(PyObjectPtr object) noexcept : object_(std::move(object)) {}
  python_reference(const python_reference&) = delete;
  python_reference& operator=(const python_reference&) = delete;

  // A reference for the caller, null when there is no object. The interpreter lock must be held: between the look at
  // the pointer and the count it keeps `attach` on another thread from dropping the last reference.
  PyObjectPtr get() const noexcept { return PyObjectPtr::share(address()); }
  // Only good for telling objects apart. No lock is needed.
  PyObject* address() const noexcept {
    const std::lock_guard guard(lock_);
    return object_.get();
  }
  // Gives the instance its object; one it had is released once the spinlock is free again.
  void attach(PyObjectPtr object) noexcept {
    const std::lock_guard guard(lock_);
    object_.swap(object);
  }

 private:
  mutable spinlock lock_;
  PyObjectPtr object_;
};

extern const class_definition<python_reference> cpython_object_class;

// A new CPythonObject that shares the object. The lock must be held.
Any make_python_object(PyObjectPtr_Borrowed object);
// The Python object of a CPythonObject; null for one without an object and for every other value. The lock must be
// held.
PyObjectPtr python_object_of(const Any& value) noexcept;

}  // namespace ling::cpython
