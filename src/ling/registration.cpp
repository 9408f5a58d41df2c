// The queue of init handlers.
#include "ling/registration.h"

#include "ling/error.h"
#include "ling/none.h"
#include "ling/spinlock.h"

#include <algorithm>
#include <mutex>

namespace ling {

namespace {
// Made before the first static initialiser that registers, and never destroyed.
struct handler_queue {
  spinlock lock;
  std::vector<internal::init_handler> waiting;
};
handler_queue& queue() {
  static handler_queue& handlers = *new handler_queue;
  return handlers;
}

// Takes the handler of the lowest level, the first queued among equals.
bool take_next(internal::init_handler& next) {
  const std::lock_guard guard(queue().lock);
  std::vector<internal::init_handler>& waiting = queue().waiting;
  const auto first =
      std::min_element(waiting.begin(), waiting.end(), [](const auto& a, const auto& b) { return a.level < b.level; });
  if (first == waiting.end()) {
    return false;
  }
  next = *first;
  waiting.erase(first);
  return true;
}

}  // namespace

void internal::add_init_handler(InitLevel level, init_function handler) {
  const std::lock_guard guard(queue().lock);
  queue().waiting.push_back({level, handler});
}

std::vector<internal::init_handler>& internal::init_handlers_unsafe() { return queue().waiting; }

Result<None> initialize() {
  Any first_error;
  for (internal::init_handler next{}; take_next(next);) {
    const Result<None> made = internal::guarded(next.function);
    if (made.is_error() && first_error.empty()) {
      first_error = made;
    }
  }
  return Result<None>::unchecked(first_error);
}

}  // namespace ling
