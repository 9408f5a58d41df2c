// The queue of init handlers.
#include "ling/registration.h"

#include "ling/detail/immortal.h"
#include "ling/error.h"
#include "ling/modules/initialization.h"
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
  static internal::immortal<handler_queue> handlers;
  return handlers.object;
}

// Takes the handler of the lowest level behind the first `from` ones, the first queued among equals.
bool take_next(std::size_t from, internal::init_handler& next) {
  const std::lock_guard guard(queue().lock);
  std::vector<internal::init_handler>& waiting = queue().waiting;
  const auto begin = waiting.begin() + static_cast<std::ptrdiff_t>(std::min(from, waiting.size()));
  const auto first =
      std::min_element(begin, waiting.end(), [](const auto& a, const auto& b) { return a.level < b.level; });
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

std::size_t internal::waiting_handlers() {
  const std::lock_guard guard(queue().lock);
  return queue().waiting.size();
}

Result<None> internal::run_handlers(std::size_t from) {
  Any first_error;
  for (init_handler next{}; take_next(from, next);) {
    const Result<None> made = guarded(next.function);
    if (made.is_error() && first_error.empty()) {
      first_error = made;
    }
  }
  return Result<None>::unchecked(first_error);
}

Result<None> initialize() {
  const internal::initialization_turn turn;
  return internal::run_handlers(0);
}

}  // namespace ling
