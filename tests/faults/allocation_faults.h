// Allocations that fail on purpose: the program's own malloc and operator new, which serve every library in the
// process, refuse what a plan says. Plans are for the thread that makes them; other threads are left alone.
#pragma once

#include <cstddef>
#include <cstdint>

namespace faults {

// Allocations of the thread are counted from 1. The `first` one fails, then every `period`th behind it, `count` in all.
struct plan {
  std::size_t first;
  std::size_t period;
  std::size_t count;
};
constexpr std::size_t without_end = SIZE_MAX;

void arm(const plan& what_fails) noexcept;
// Ends the plan; how many allocations have failed.
std::size_t disarm() noexcept;
// Whether the last one that failed was one of Python code, and of the functions of the interpreter that it calls, which
// do not release everything then. What the module asks of the interpreter does not count.
bool failed_in_python_code() noexcept;
// From now on those do not fail: some versions of the interpreter do not survive it.
void spare_python_code() noexcept;

// For a scope: whether the plan, which rests elsewhere meanwhile, is for this thread.
class [[nodiscard]] exposure {
 public:
  explicit exposure(bool exposed) noexcept;
  ~exposure();
  exposure(const exposure&) = delete;
  exposure& operator=(const exposure&) = delete;

 private:
  const bool was_exposed_;
};

// Blocks of memory that the whole process holds.
long long live_blocks() noexcept;

// Writes the call stack of each failure to standard error.
void show_failures(bool shown) noexcept;

}  // namespace faults
