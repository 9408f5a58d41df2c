// The end of threads by way of thread-specific data, whose destructors run after those of thread-local objects and,
// unlike those, not in exit().
#include "extension/thread_end.h"

#include <pthread.h>

#include <optional>

namespace ling::cpython {

namespace {

std::optional<pthread_key_t> make_key(const thread_events& events) noexcept {
  pthread_key_t key;
  if (pthread_key_create(&key, events.ended) != 0 || pthread_atfork(nullptr, nullptr, events.forked) != 0) {
    return std::nullopt;
  }
  return key;
}

}  // namespace

bool watch_thread(const thread_events& events, void* value) noexcept {
  static const std::optional<pthread_key_t> key = make_key(events);
  return key && pthread_setspecific(*key, value) == 0;
}

}  // namespace ling::cpython
