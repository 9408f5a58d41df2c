// What is tried while allocations fail.
#pragma once

#include <span>

namespace faults {

// Python code, in three parts that share their variables: what there is before, run without faults; statements that are
// tried, which may set `result`; and an expression whose text tells what they have left behind. `also` is what the
// interpreter is known to make of missing memory instead of a MemoryError, as a pattern of texts.
struct scenario {
  const char* name;
  const char* before;
  const char* action;
  const char* state = "None";
  const char* also = "";
};
std::span<const scenario> scenarios();

}  // namespace faults
