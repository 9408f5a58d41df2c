// The slow path of the spinlock.
#include "ling/spinlock.h"

#include <thread>

namespace ling {

void spinlock::lock_contended() noexcept {
  constexpr int spins_before_yield = 64;
  for (int spins = 0;; ++spins) {
    // Reading before trying keeps the cache line shared while somebody else holds the lock.
    while (locked_.load(std::memory_order_relaxed)) {
      if (++spins > spins_before_yield) {
        std::this_thread::yield();
      }
    }
    if (!locked_.exchange(true, std::memory_order_acquire)) {
      return;
    }
  }
}

}  // namespace ling
