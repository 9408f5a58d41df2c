// The end of threads by way of thread-specific data, whose destructors run after those of thread-local objects and,
// unlike those, not in exit(). They run in rounds for as long as one of them sets a value again, four times at least.
#include "python/thread_end.h"

#include <pthread.h>

#include <optional>

namespace ling::cpython {

namespace {

std::optional<pthread_key_t> key;  // absent when there is no room for it

bool make_key(const thread_events& events) noexcept {
  pthread_key_t made;
  if (pthread_key_create(&made, events.ended) != 0 || pthread_atfork(nullptr, nullptr, events.forked) != 0) {
    return false;
  }
  key = made;
  return true;
}

}  // namespace

bool watch_thread(const thread_events& events, void* value) noexcept {
  static const bool made = make_key(events);
  return made && pthread_setspecific(*key, value) == 0;
}

bool watch_end_again(void* value) noexcept { return pthread_setspecific(*key, value) == 0; }

}  // namespace ling::cpython
