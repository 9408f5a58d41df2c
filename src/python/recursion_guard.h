// Python's recursion limit for what recurses through C++. The lock must be held.
#pragma once

#include "python/python_api.h"

namespace ling::cpython {

// Counts one level for a scope, so that recursion without end is a RecursionError and no crash.
class [[nodiscard]] recursion_guard {
 public:
  // The words say in the exception's message what recurses.
  explicit recursion_guard(const char* where = " in a call of the host") noexcept
      : entered_(Py_EnterRecursiveCall(where) == 0) {}
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
