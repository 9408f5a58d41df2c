// What importing a foreign module must not change for the process.
#pragma once

#include "python/pyobject_ptr.h"

namespace ling::cpython {

// For a scope, Python's standard streams lead nowhere and `sys.argv` is that of no program. At its end these, the file
// descriptors behind the streams, the environment, the working directory and Python's signal handlers are what they
// were; who kept a stream meanwhile has the real one from then on. Only what goes through Python's streams is lost:
// what a child process or a C library prints is not. The lock must be held, no exception pending.
class [[nodiscard]] process_shield {
 public:
  process_shield();
  ~process_shield();
  process_shield(const process_shield&) = delete;
  process_shield& operator=(const process_shield&) = delete;
  // Whether there is a shield; a process that has run out of files gets none.
  explicit operator bool() const noexcept { return static_cast<bool>(restore_); }

 private:
  PyObjectPtr restore_;
};

}  // namespace ling::cpython
