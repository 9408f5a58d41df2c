// A Python function of the module's own, compiled once and kept for the life of the process.
#pragma once

#include "ling/published.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// A constant at namespace scope. Two threads may compile it at once: the first to finish decides, and nobody waits.
class python_helper {
 public:
  // `source` defines the function `name`.
  constexpr python_helper(const char* name, const char* source) noexcept : name_(name), source_(source) {}

  // Borrowed; null with an exception set when it cannot be compiled. The lock must be held.
  PyObject* get() const noexcept {
    PyObject* const made = made_.get();
    return made != nullptr ? made : compile();
  }

 private:
  PyObject* compile() const noexcept;

  const char* name_;
  const char* source_;
  mutable internal::published<PyObject> made_;
};

}  // namespace ling::cpython
