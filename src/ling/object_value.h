// object_value: the base of every runtime object, and ObjectType, the kinds of object there are.
//
// An object is created with one reference, which the creator adopts into a handle (`Any::adopt`, `make`). Handles count
// with atomic operations, so an object may be shared between threads and is destroyed on whichever thread drops the
// last handle. Immortal objects (None, the booleans, small integers, classes) ignore counting: they are touched from
// every thread all the time, and a shared counter would make the threads wait for each other's cache line.
#pragma once

#include "ling/export.h"

#include <atomic>
#include <cstdint>
#include <utility>

namespace ling {

class object_value_class;

// What an object is, as far as code outside the runtime tells objects apart.
enum class ObjectType : std::uint8_t {
  None,
  Undefined,
  Boolean,
  Integer,
  Float,
  String,
  ByteArray,
  Tuple,
  List,
  HashMap,
  HashSet,
  Class,
  Callable,
  Multimethod,
  Instance,
  External,
  Computed,
  WeakReference,
};

// Constant facts about an object, answered without a virtual call.
enum class object_traits : std::uint32_t {
  none = 0,
  immortal = 1u << 0,
  error = 1u << 1,          // an Error or an instance of a class derived from it
  lazy = 1u << 2,           // Computed or External: `unwrap` yields another object
  instance = 1u << 3,       // derives from object_value_instance
  callable = 1u << 4,       // derives from object_value_callable
  out_of_memory = 1u << 5,  // an Error that says that memory has run out
  interruption = 1u << 6,   // an Error that stands for a request to stop
  leaf = 1u << 7,           // holds no other object, so that its end is that of no other
};
constexpr object_traits operator|(object_traits a, object_traits b) noexcept {
  return static_cast<object_traits>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}

class LING_API object_value {
 public:
  object_value(const object_value&) = delete;
  object_value& operator=(const object_value&) = delete;

  virtual ObjectType type() const noexcept = 0;
  // The class of the object; borrowed, classes of objects are immortal.
  virtual object_value_class& object_class() const = 0;
  // What tells the object from every other one that is alive: its address, or the address of what it stands for where
  // several objects may stand for one thing.
  virtual std::uintptr_t identity() const noexcept { return reinterpret_cast<std::uintptr_t>(this); }

  bool has(object_traits trait) const noexcept { return (traits_ & static_cast<std::uint32_t>(trait)) != 0; }

  void retain() const noexcept {
    if (!has(object_traits::immortal)) {
      references_.fetch_add(1, std::memory_order_relaxed);
    }
  }
  void release() const noexcept {
    if (!has(object_traits::immortal) && references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      const_cast<object_value*>(this)->dispose();
    }
  }
  // Takes a reference unless the last one is already gone; for weak references.
  bool try_retain() const noexcept;
  // The number of references at this moment; for tests and diagnostics. Immortal objects answer 1.
  std::uint32_t reference_count() const noexcept {
    return has(object_traits::immortal) ? 1 : references_.load(std::memory_order_relaxed);
  }

 protected:
  // constexpr, so that shared objects exist before any static initialiser runs.
  constexpr explicit object_value(object_traits traits = object_traits::none) noexcept
      : traits_(static_cast<std::uint32_t>(traits)) {}
  virtual ~object_value();

 private:
  friend class object_value_weak_reference;

  // Destroys the object. Nested destruction is flattened: a list in a list in a list, a hundred thousand deep, does not
  // use a hundred thousand stack frames. Takes no memory.
  void dispose() noexcept;

  mutable std::atomic<std::uint32_t> references_{1};
  std::uint32_t traits_;
  // Of a live object: not null once a weak reference to it was made, which tells `dispose` to look for it. Of a dead
  // one: the next of those that wait for their destruction.
  mutable std::atomic<const object_value*> weakly_referenced_or_next_dead_{nullptr};
};

}  // namespace ling
