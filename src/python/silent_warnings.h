// Python's warnings put to silence.
#pragma once

#include "python/pyobject_ptr.h"

namespace ling::cpython {

// For a scope, what Python code warns of is neither shown nor raised, nor remembered as shown: reading all members of a
// module meets those that are on their way out, which is not the program's doing. Filters that are added meanwhile
// stay. Warnings of other threads are silent as well. Does nothing where `warnings` cannot be had. The lock must be
// held, no exception pending; none is left.
class [[nodiscard]] silent_warnings {
 public:
  silent_warnings() noexcept;
  ~silent_warnings();
  silent_warnings(const silent_warnings&) = delete;
  silent_warnings& operator=(const silent_warnings&) = delete;

 private:
  PyObjectPtr filter_;
  PyObjectPtr filters_;  // the list that has it
  PyObjectPtr globals_;  // where there was no registry of warnings
};

}  // namespace ling::cpython
