// Life and death of objects.
#include "ling/object_value.h"

#include "ling/values/weak.h"

namespace ling {

object_value::~object_value() = default;

bool object_value::try_retain() const noexcept {
  if (has(object_traits::immortal)) {
    return true;
  }
  std::uint32_t count = references_.load(std::memory_order_relaxed);
  while (count != 0) {
    if (references_.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel, std::memory_order_relaxed)) {
      return true;
    }
  }
  return false;
}

namespace {

// Objects that died while others were being destroyed on this thread, to be destroyed by the outermost destruction;
// each leads to the one that died before it. Plain data: it must work while the thread ends, after thread-local objects
// with destructors are gone.
struct pending_destruction {
  unsigned depth;
  const object_value* last;
};
constinit thread_local pending_destruction pending{0, nullptr};

constexpr unsigned maximum_destruction_depth = 64;

}  // namespace

void object_value::dispose() noexcept {
  if (weakly_referenced_or_next_dead_.load(std::memory_order_acquire) != nullptr) {
    internal::clear_weak_references(*this);
  }
  if (has(object_traits::leaf)) {
    delete this;
    return;
  }
  if (pending.depth >= maximum_destruction_depth) {
    weakly_referenced_or_next_dead_.store(std::exchange(pending.last, this), std::memory_order_relaxed);
    return;
  }
  ++pending.depth;
  delete this;
  // What dies here may defer more; the depth keeps nested destructions from starting this loop again.
  while (pending.depth == 1 && pending.last != nullptr) {
    const object_value* dead = pending.last;
    pending.last = dead->weakly_referenced_or_next_dead_.load(std::memory_order_relaxed);
    delete dead;
  }
  --pending.depth;
}

}  // namespace ling
