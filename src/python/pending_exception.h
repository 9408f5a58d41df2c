// What is done with a pending Python exception that is not the caller's concern. The lock must be held.
// Defined in pending_exception.cpp; throw_exception, which makes Errors, in bridge/error_bridge.cpp.
#pragma once

#include "python/pyobject_ptr.h"

#include <optional>

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

// The pending exception as an `except` clause would get it, with its traceback; no longer pending. None when there is
// none.
struct fetched_exception {
  PyObjectPtr type;
  PyObjectPtr value;
  PyObjectPtr traceback;
};
std::optional<fetched_exception> fetch_exception();

// Throws the pending exception on: exhausted memory as std::bad_alloc, any other as the Error that carries it.
[[noreturn]] void throw_exception();
// For those who make do without what the pending exception, if there is one, keeps from them, and have nobody to tell:
// clears it. Only exhausted memory is thrown on. An interrupt, which came from outside, comes again as soon as Python
// code runs in this thread; an exit that the code itself has raised goes with what was asked.
void drop_exception();
// The same for those who must not throw: exhausted memory is forgotten, too.
void forget_exception() noexcept;

// The same for those who can tell: an interruption is thrown on, too, to become the Error that is returned, or raised
// again, where the host or Python is answered.
inline void tolerate_exception() {
  if (PyErr_Occurred() == nullptr) [[likely]] {
    return;
  }
  if (PyErr_ExceptionMatches(PyExc_MemoryError) != 0 || PyErr_ExceptionMatches(PyExc_Exception) == 0) {
    throw_exception();
  }
  PyErr_Clear();
}

}  // namespace ling::cpython
