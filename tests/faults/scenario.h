// What is tried while allocations fail.
#pragma once

#include "ling/any.h"

#include <functional>
#include <span>

namespace faults {

// Python code, in three parts that share their variables: what there is before, run without faults; statements that are
// tried, which may set `result`; and an expression whose text tells what they have left behind. `also` is what the
// interpreter is known to make of missing memory instead of a MemoryError, as a pattern of texts.
struct python_row {
  const char* name;
  const char* before;
  const char* action;
  const char* state = "None";
  const char* also = "";
};
std::span<const python_row> python_rows();

// The same as functions of a host, which holds no lock: `before` makes what `action` works on, whose text is the state.
struct host_row {
  const char* name;
  ling::Any (*before)();
  std::function<ling::Any(const ling::Any& subject)> action;
  const char* also = "";
  unsigned traits = 0;
};
enum host_traits : unsigned {
  on_new_thread = 1,  // that has never come before
  keeps_memory = 2,   // what is made lives for ever
};
std::span<const host_row> host_rows();

// What code returns that is evaluated without faults; without a result it ends the process.
ling::Any made_by_python(const char* code);

}  // namespace faults
