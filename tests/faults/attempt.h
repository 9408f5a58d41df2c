// A row of the tables, ready to be tried again and again.
#pragma once

#include "faults/allocation_faults.h"
#include "faults/scenario.h"
#include "python/interpreter.h"

#include <memory>
#include <string>

namespace faults {

constexpr char memory_error[] = "MemoryError";
constexpr int unusable = 3;  // the exit status of a process that cannot even prepare its scenario

class attempt {
 public:
  attempt(const char* name_of_row, const char* also_known, PyGILState_STATE lock_at_work, unsigned traits_of_row)
      : name(name_of_row), also(also_known), lock(lock_at_work), traits(traits_of_row) {}
  virtual ~attempt() = default;
  attempt(const attempt&) = delete;
  attempt& operator=(const attempt&) = delete;

  virtual void before() = 0;
  // How many allocations have failed. The outcome is the text of the result, `memory_error`, or that of a failure.
  virtual std::size_t act(const plan& what_fails) = 0;
  virtual std::string state() = 0;

  const char* const name;
  const char* const also;
  const PyGILState_STATE lock;  // as it must be afterwards
  const unsigned traits;
  std::string outcome;
};
// The first kind is for whoever holds the lock.
std::unique_ptr<attempt> prepared(const python_row& row);
std::unique_ptr<attempt> prepared(const host_row& row);

[[noreturn]] void give_up(const char* what);

}  // namespace faults
