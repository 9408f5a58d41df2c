// The end of threads that this library did not start, and of those that a fork leaves behind.
#pragma once

namespace ling::cpython {

struct thread_events {
  // Runs on a thread that ends, behind the destructors of its thread-local objects, with what was set for the thread.
  // Does not run when the process ends.
  void (*ended)(void* value);
  // Runs in the child of a fork, in which all threads but the calling one are gone.
  void (*forked)();
};

// Has `ended` called with the value when the calling thread ends. The events must be the same in every call. False when
// the system has no room for it.
bool watch_thread(const thread_events& events, void* value) noexcept;
// From inside of `ended`: has it called once more with the value, when others that wait for the end have had their
// turn. False where it is called only once.
bool watch_end_again(void* value) noexcept;

}  // namespace ling::cpython
