// The embedded interpreter: started once, on first need, and never finalised by this module.
//
// Defined in extension/startup.cpp.
#pragma once

#include "ling/error.h"
#include "ling/none.h"
#include "python/python_api.h"

#include <atomic>

namespace ling::cpython {

enum class interpreter_phase : int { none, starting, running, ended };
// For the functions below.
extern std::atomic<interpreter_phase> known_phase;
Result<None> start_or_wait();

// Whether Python may be touched: there is an interpreter, and not a new one in the place of that which this module
// knew.
inline bool interpreter_runs() noexcept {
  return known_phase.load(std::memory_order_relaxed) != interpreter_phase::ended && Py_IsInitialized() != 0;
}
// Whether another part of the process has ended the interpreter. What this module holds of it is gone then, for good.
inline bool interpreter_has_ended() noexcept {
  return known_phase.load(std::memory_order_relaxed) >= interpreter_phase::running && !interpreter_runs();
}
Error error_interpreter_ended();

// Starts the interpreter unless it runs. Every operation that needs Python calls this before it takes the lock. The
// first caller starts it, others wait for the start to end; a waiting thread that holds the lock gives it back
// meanwhile. A call made by the start itself returns at once. Afterwards two reads. An Error when the interpreter has
// ended; a thread that is using it by then is lost, as Python has it.
inline Result<None> ensure_interpreter() {
  if (known_phase.load(std::memory_order_acquire) == interpreter_phase::running && Py_IsInitialized() != 0) [[likely]] {
    return Result<None>::unchecked({});
  }
  return start_or_wait();
}

}  // namespace ling::cpython
