// A scenario, ready to be tried again and again by a thread that holds the lock.
#pragma once

#include "faults/allocation_faults.h"
#include "faults/scenario.h"
#include "python/pyobject_ptr.h"

#include <string>

namespace faults {

constexpr char memory_error[] = "MemoryError";
class attempt {
 public:
  explicit attempt(const scenario& row);

  void before();
  // How many allocations have failed. The outcome is the text of the result, `memory_error`, or that of a failure.
  std::size_t act(const plan& what_fails);
  // The text of an expression of the same variables.
  std::string value(const std::string& expression) const;

  std::string outcome;

 private:
  ling::cpython::PyObjectPtr compile(const std::string& text) const;
  ling::cpython::PyObjectPtr run(const ling::cpython::PyObjectPtr& code) const;

  const ling::cpython::PyObjectPtr names_, before_, action_;
};

[[noreturn]] void give_up(const char* what);
// Spares what of the interpreter does not survive a lack of memory. Once, before anything is tried.
void spare_what_breaks();

}  // namespace faults
