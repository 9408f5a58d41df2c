// Puts the pending Python exception aside for a scope. The lock must be held.
#pragma once

#include "extension/python_api.h"

namespace ling::cpython {

// The C API must not be entered with an exception pending, and whoever clears its own would clear the caller's as well.
// At the end the exception is pending again, and whatever the scope left behind is gone.
class [[nodiscard]] pending_exception_aside {
 public:
  pending_exception_aside() noexcept { PyErr_Fetch(&type_, &value_, &traceback_); }
  ~pending_exception_aside() { PyErr_Restore(type_, value_, traceback_); }
  pending_exception_aside(const pending_exception_aside&) = delete;
  pending_exception_aside& operator=(const pending_exception_aside&) = delete;

 private:
  PyObject* type_ = nullptr;
  PyObject* value_ = nullptr;
  PyObject* traceback_ = nullptr;
};

}  // namespace ling::cpython
