// spinlock: the runtime's smallest mutual exclusion, for critical sections of a few instructions.
//
// Never hold one while foreign code may run: a callback, a destructor of a value, a language interpreter. Copy what is
// needed, unlock, then act.
#pragma once

#include "ling/export.h"

#include <atomic>

namespace ling {

// Satisfies BasicLockable, so std::lock_guard serves as its guard. Not recursive.
class spinlock {
 public:
  constexpr spinlock() noexcept = default;
  spinlock(const spinlock&) = delete;
  spinlock& operator=(const spinlock&) = delete;

  void lock() noexcept {
    if (locked_.exchange(true, std::memory_order_acquire)) [[unlikely]] {
      lock_contended();
    }
  }
  void unlock() noexcept { locked_.store(false, std::memory_order_release); }

 private:
  // Spins briefly, then yields the processor: the holder may have been preempted.
  LING_API void lock_contended() noexcept;

  std::atomic<bool> locked_{false};
};

}  // namespace ling
