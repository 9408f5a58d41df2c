// Who initialises: one thread at a time loads extensions and runs init handlers, the others wait for it.
#pragma once

#include "ling/none.h"
#include "ling/union.h"

#include <cstddef>

namespace ling::internal {

// Holds the turn for a scope; nests, so a handler may load a further extension. A thread that has to wait lets go of
// the locks of the languages meanwhile.
class [[nodiscard]] initialization_turn {
 public:
  initialization_turn() { take({}); }
  ~initialization_turn();
  initialization_turn(const initialization_turn&) = delete;
  initialization_turn& operator=(const initialization_turn&) = delete;
  // Whether the thread had the turn before.
  bool is_nested() const;

 private:
  // Without the locks of the first `languages_asked` languages.
  static void take(std::size_t languages_asked);
};

// How many handlers wait to be run.
std::size_t waiting_handlers();
// Runs the handlers behind the first `from` ones, by level; the first Error after all have run. The caller has the
// turn.
Result<None> run_handlers(std::size_t from);

}  // namespace ling::internal
