// What is tried while allocations fail.
#pragma once

#include "ling/any.h"

#include <span>

namespace faults {

// Python code, in three parts that share their variables: what there is before, run without faults; one statement or
// expression that is tried; and an expression whose text tells what it has left behind.
struct python_row {
  const char* name;
  const char* before;
  const char* action;
  const char* state = "None";
};
std::span<const python_row> python_rows();

// The same as functions of a host, which holds no lock: `before` makes what `action` works on, whose text is the state.
struct host_row {
  const char* name;
  ling::Any (*before)();
  ling::Any (*action)(const ling::Any& subject);
};
std::span<const host_row> host_rows();

// Describes what the rows use. Once, before them.
void prepare_rows();

}  // namespace faults
