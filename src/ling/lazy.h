// Lazy values: Computed (computed once, on first need), External (loaded from elsewhere), and weak references.
//
// Errors: what cannot be computed or loaded is an Error in the place of the value, told by `unwrap` (union.h). Threads:
// any; what computes or loads runs on the thread that needs the value.
#pragma once

#include "ling/spinlock.h"
#include "ling/union.h"

#include <atomic>
#include <functional>
#include <memory>

namespace ling {

class Class_Generic;

namespace internal {
struct weak_cell;
}

// A value computed on first need and kept. Two threads that need it at once may both compute it; the first stays.
class LING_API object_value_computed final : public object_value {
 public:
  explicit object_value_computed(std::function<Any()> compute)
      : object_value(object_traits::lazy), compute_(std::make_shared<const std::function<Any()>>(std::move(compute))) {}
  ObjectType type() const noexcept override { return ObjectType::Computed; }
  object_value_class& object_class() const override;
  // The value, which may be an Error: the computation's, one for its C++ exception, or one for a computation that needs
  // its own result or that of too many others behind each other.
  Any force();

 private:
  spinlock lock_;  // guards compute_, and value_ until computed_ is set
  std::atomic<bool> computed_{false};
  std::shared_ptr<const std::function<Any()>> compute_;  // shared: another thread may still run it when it is dropped
  Any value_;
};

template <class T>
Computed<T> make_computed(std::function<Any()> compute) {
  return Computed<T>::unchecked(make<object_value_computed>(std::move(compute)));
}

// A value that lives elsewhere and is loaded when it is looked at; every load may give another object.
class LING_API object_value_external : public object_value {
 public:
  object_value_external() noexcept : object_value(object_traits::lazy) {}
  ObjectType type() const noexcept override { return ObjectType::External; }
  object_value_class& object_class() const override;
  virtual Any load() = 0;
};

class LING_API External_Generic : public Handle<External_Generic, object_value_external> {
  LING_HANDLE(External_Generic, object_value_external)
  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::External;
  }
  static Type getType();
  static Class_Generic getClass();
};

// Refers to an object without keeping it alive.
class LING_API object_value_weak_reference final : public object_value {
 public:
  explicit object_value_weak_reference(const Any& target);
  ~object_value_weak_reference() override;
  ObjectType type() const noexcept override { return ObjectType::WeakReference; }
  object_value_class& object_class() const override;
  // The object, or an empty handle once it is gone.
  Any get() const noexcept;

 private:
  const object_value* const bucket_key_;  // the address of the target, which may be gone
  internal::weak_cell* cell_ = nullptr;
};

class LING_API WeakReference : public Handle<WeakReference, object_value_weak_reference> {
  LING_HANDLE(WeakReference, object_value_weak_reference)
  explicit WeakReference(const Any& target) : Handle(new object_value_weak_reference(target)) {}
  Any lock() const noexcept { return object().get(); }
  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::WeakReference;
  }
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
