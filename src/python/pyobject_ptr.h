// References to Python objects: each new one is put into a PyObjectPtr at once.
#pragma once

#include "ling/export.h"
#include "python/interpreter_lock.h"

#include <utility>

namespace ling::cpython {

// A reference that somebody else owns: an argument, an item of a tuple, a singleton.
class PyObjectPtr_Borrowed {
 public:
  PyObjectPtr_Borrowed(PyObject* object) noexcept : object_(object) {}
  PyObject* get() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

 private:
  PyObject* object_;
};

// An owned reference. May be destroyed on any thread, with or without the lock: the destructor takes it.
class [[nodiscard]] PyObjectPtr {
 public:
  PyObjectPtr() noexcept = default;
  // Adopts a new reference, the result of a call that returns one; null is allowed.
  explicit PyObjectPtr(PyObject* new_reference) noexcept : object_(new_reference) {}
  // Takes a reference of its own; the lock must be held.
  static PyObjectPtr share(PyObjectPtr_Borrowed borrowed) noexcept {
    Py_IncRef(borrowed.get());
    return PyObjectPtr(borrowed.get());
  }
  PyObjectPtr(PyObjectPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  PyObjectPtr& operator=(PyObjectPtr&& other) noexcept {
    PyObjectPtr(std::move(other)).swap(*this);
    return *this;
  }
  PyObjectPtr(const PyObjectPtr&) = delete;
  PyObjectPtr& operator=(const PyObjectPtr&) = delete;
  ~PyObjectPtr() {
    if (object_ != nullptr) {
      release_reference(object_);
    }
  }

  PyObject* get() const noexcept LING_LIFETIMEBOUND { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }
  // Hands the reference over to a caller or callee that steals it.
  [[nodiscard]] PyObject* release() noexcept { return std::exchange(object_, nullptr); }
  void swap(PyObjectPtr& other) noexcept { std::swap(object_, other.object_); }

 private:
  static void release_reference(PyObject* object) noexcept;

  PyObject* object_ = nullptr;
};

}  // namespace ling::cpython
