// The end of threads by way of fiber-local storage, which Windows clears with a callback when a thread ends, once.
#include "python/thread_end.h"

#include <windows.h>

namespace ling::cpython {

namespace {

void (*thread_ended)(void*) = nullptr;

void WINAPI on_end(void* value) {
  if (value != nullptr) {
    thread_ended(value);
  }
}

DWORD make_slot(const thread_events& events) noexcept {
  thread_ended = events.ended;
  return FlsAlloc(&on_end);
}

}  // namespace

bool watch_thread(const thread_events& events, void* value) noexcept {
  static const DWORD slot = make_slot(events);
  return slot != FLS_OUT_OF_INDEXES && FlsSetValue(slot, value) != 0;
}

bool watch_end_again(void*) noexcept { return false; }

}  // namespace ling::cpython
