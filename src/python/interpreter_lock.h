// The interpreter lock. The interpreter is entered from any host thread and the lock is never kept between calls:
// whatever touches a Python object opens a GilGuard or a gil_lock first. No lock is taken unless the interpreter runs
// (`ensure_interpreter`).
// Defined in thread_state.cpp.
#pragma once

#include "python/python_api.h"

#include <exception>
#include <optional>

namespace ling::cpython {

// Whether this thread holds the lock, as far as it can be told; a no may be wrong. The interpreter must run.
bool holds_lock() noexcept;

// Holds the interpreter lock for a scope; nests. A thread that comes for the first time gets a Python thread state that
// it keeps until it ends, so that coming again is cheap.
class [[nodiscard]] gil_lock {
 public:
  gil_lock() noexcept;
  ~gil_lock() {
    if (taken_ != taken::not_at_all) {
      give_back();
    }
  }
  gil_lock(const gil_lock&) = delete;
  gil_lock& operator=(const gil_lock&) = delete;

 private:
  enum class taken : unsigned char {
    not_at_all,          // an outer scope holds it
    with_kept_state,     // that the thread has in any case
    with_counted_state,  // that Python makes and deletes as needed
  };

  void give_back() noexcept;

  taken taken_ = taken::not_at_all;
  PyGILState_STATE state_ = PyGILState_UNLOCKED;
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

}  // namespace ling::cpython
