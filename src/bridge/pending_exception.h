// What is done with a pending Python exception that is not the caller's concern. The lock must be held.
#pragma once

#include "extension/python_api.h"

#include <new>

namespace ling::cpython {

// The C API must not be entered with an exception pending, and whoever clears its own would clear the caller's as well.
// At the end the exception is pending again, and whatever the scope left behind is gone.
class [[nodiscard]] pending_exception_aside {
 public:
  pending_exception_aside() noexcept { PyErr_Fetch(&type_, &value_, &traceback_); }
  ~pending_exception_aside() { PyErr_Restore(type_, value_, traceback_); }
  pending_exception_aside(const pending_exception_aside&) = delete;
  pending_exception_aside& operator=(const pending_exception_aside&) = delete;

  // Of the exception put aside; borrowed, may be null.
  PyObject* traceback() const noexcept { return traceback_; }

 private:
  PyObject* type_ = nullptr;
  PyObject* value_ = nullptr;
  PyObject* traceback_ = nullptr;
};

// Clears the pending exception, if there is one, for those who make do without what it keeps from them. Exhausted memory
// is nothing to make do with, or the answer would be a wrong one: it is thrown on, as std::bad_alloc.
inline void tolerate_exception() {
  if (PyErr_Occurred() == nullptr) [[likely]] {
    return;
  }
  const bool is_out_of_memory = PyErr_ExceptionMatches(PyExc_MemoryError) != 0;
  PyErr_Clear();
  if (is_out_of_memory) {
    throw std::bad_alloc();
  }
}

}  // namespace ling::cpython
