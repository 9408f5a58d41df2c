// published: a pointer to what is made on first need and then stays.
//
// Two threads may both make it. The first to publish decides, what the other has made is dropped, and nobody waits:
// whatever makes it may come back for it, or hold a lock that the other one needs. One reference belongs to the
// pointer, for good. Any thread may call.
#pragma once

#include <atomic>

namespace ling::internal {

template <class T>
class published {
 public:
  constexpr published() noexcept = default;

  T* get() const noexcept { return pointer_.load(std::memory_order_acquire); }

  // What is published from now on: this, or what came first. Null publishes nothing.
  T* publish(T* made) noexcept {
    T* first = nullptr;
    return pointer_.compare_exchange_strong(first, made, std::memory_order_acq_rel) ? made : first;
  }
  // The same with a handle, which keeps what came too late.
  template <class Handle>
  T* publish(Handle&& handle) noexcept {
    T* const made = static_cast<T*>(handle.get());
    T* first = nullptr;
    if (!pointer_.compare_exchange_strong(first, made, std::memory_order_acq_rel)) {
      return first;
    }
    static_cast<void>(handle.release());
    return made;
  }

  template <class Make>
  T* get_or_make(const Make& make) {
    T* const made = get();
    return made != nullptr ? made : publish(make());
  }

 private:
  std::atomic<T*> pointer_{nullptr};
};

}  // namespace ling::internal
