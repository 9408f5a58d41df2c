// References to Python objects and the interpreter lock.
//
// The interpreter is entered from any host thread and the lock is never kept between calls: whatever touches a Python
// object opens a GilGuard first and puts each new reference into a PyObjectPtr at once. No lock is taken unless the
// interpreter runs (`ensure_interpreter`).
#pragma once

#include "ling/export.h"
#include "python/python_api.h"

#include <exception>
#include <optional>
#include <utility>

namespace ling::cpython {

// Holds the interpreter lock for a scope; nests. A thread that comes for the first time gets a Python thread state that
// it keeps until it ends, so that coming again is cheap.
class [[nodiscard]] gil_lock {
 public:
  gil_lock() noexcept;
  ~gil_lock() { PyGILState_Release(state_); }
  gil_lock(const gil_lock&) = delete;
  gil_lock& operator=(const gil_lock&) = delete;

 private:
  PyGILState_STATE state_;
};

// The same for whatever may throw: a C++ exception that leaves the scope takes the place of a Python exception that is
// pending there. Not for functions that leave one pending for their caller, who may be a destructor.
class [[nodiscard]] GilGuard : gil_lock {
 public:
  GilGuard() noexcept = default;
  ~GilGuard() {
    if (PyErr_Occurred() != nullptr && std::uncaught_exceptions() != 0) [[unlikely]] {
      PyErr_Clear();
    }
  }
};

// Gives the lock back for a scope if the thread holds it, however often: for a wait for a thread that may need it.
class [[nodiscard]] lock_given_away {
 public:
  lock_given_away() noexcept;
  ~lock_given_away() {
    if (state_ != nullptr) {
      PyEval_RestoreThread(state_);
    }
  }
  lock_given_away(const lock_given_away&) = delete;
  lock_given_away& operator=(const lock_given_away&) = delete;

 private:
  std::optional<gil_lock> held_;
  PyThreadState* state_ = nullptr;
};

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
