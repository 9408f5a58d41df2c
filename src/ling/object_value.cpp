// Life and death of objects.
#include "ling/object_value.h"

#include "ling/detail/weak.h"

#include <vector>

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

// Objects that died while others were being destroyed on this thread, to be destroyed by the outermost destruction.
// Plain data: it must work while the thread ends, after thread-local objects with destructors are gone.
struct pending_destruction {
  unsigned depth;
  std::vector<object_value*>* deferred;
};
thread_local pending_destruction pending{0, nullptr};

constexpr unsigned maximum_destruction_depth = 64;

}  // namespace

void object_value::dispose() noexcept {
  if (weakly_referenced_.load(std::memory_order_acquire)) {
    internal::clear_weak_references(*this);
  }
  if (pending.depth >= maximum_destruction_depth) {
    if (pending.deferred == nullptr) {
      pending.deferred = new std::vector<object_value*>;
    }
    pending.deferred->push_back(this);
    return;
  }
  ++pending.depth;
  delete this;
  if (--pending.depth == 0 && pending.deferred != nullptr) {
    // What dies here may defer more; the depth keeps nested destructions from starting this loop again.
    ++pending.depth;
    while (!pending.deferred->empty()) {
      object_value* next = pending.deferred->back();
      pending.deferred->pop_back();
      delete next;
    }
    delete pending.deferred;
    pending.deferred = nullptr;
    --pending.depth;
  }
}

}  // namespace ling
