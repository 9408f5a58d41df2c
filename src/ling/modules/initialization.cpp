// Taking turns.
#include "ling/modules/initialization.h"

#include "ling/detail/immortal.h"
#include "ling/registration.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace ling::internal {

namespace {

// Never destroyed: threads may be waiting when the process ends.
struct turn_state {
  std::mutex mutex;  // guards what follows
  std::condition_variable changed;
  std::thread::id owner;
  int depth = 0;
  std::vector<lock_release> languages;
};
turn_state& state() {
  static immortal<turn_state> turns;
  return turns.object;
}

}  // namespace

void initialization_turn::take(std::size_t languages_asked) {
  turn_state& turns = state();
  std::unique_lock guard(turns.mutex);
  while (turns.depth != 0 && turns.owner != std::this_thread::get_id()) {
    if (languages_asked == turns.languages.size()) {
      turns.changed.wait(guard);
      continue;
    }
    // A language that is being loaded joins in after the waiting has begun.
    const lock_release without_lock = turns.languages[languages_asked++];
    guard.unlock();
    without_lock([](void* asked) { take(*static_cast<const std::size_t*>(asked)); }, &languages_asked);
    return;
  }
  turns.owner = std::this_thread::get_id();
  ++turns.depth;
}

initialization_turn::~initialization_turn() {
  turn_state& turns = state();
  const std::lock_guard guard(turns.mutex);
  if (--turns.depth == 0) {
    turns.changed.notify_all();
  }
}

bool initialization_turn::is_nested() const {
  turn_state& turns = state();
  const std::lock_guard guard(turns.mutex);
  return turns.depth > 1;
}

void add_lock_release(lock_release without_lock) {
  turn_state& turns = state();
  const std::lock_guard guard(turns.mutex);
  turns.languages.push_back(without_lock);
  turns.changed.notify_all();
}

}  // namespace ling::internal
