// An attribute of a Python module, looked up once and kept for the life of the process.
#pragma once

#include "ling/published.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// A constant at namespace scope. An import may give the lock away, so two threads may look the attribute up at once:
// the first to finish decides, and nobody waits. What is missing is looked for three times: what has kept it away,
// such as exhausted memory that an import hides, may have passed.
class module_attribute {
 public:
  constexpr module_attribute(const char* module, const char* name) noexcept : module_(module), name_(name) {}

  // Borrowed; null when the module or the attribute is missing. No exception must be pending, none is left. The lock
  // must be held.
  PyObject* get() const {
    PyObject* const found = found_.get();
    return found != nullptr || attempts_left_ <= 0 ? found : look_up();
  }

 private:
  PyObject* look_up() const;

  const char* module_;
  const char* name_;
  mutable internal::published<PyObject> found_;
  mutable int attempts_left_ = 3;  // guarded by the lock
};

}  // namespace ling::cpython
