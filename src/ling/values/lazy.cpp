// Computed and external values, and the cells through which weak references look at their targets.
#include "ling/lazy.h"

#include "ling/detail/definitions.h"
#include "ling/detail/nesting.h"
#include "ling/detail/under_way.h"
#include "ling/values/weak.h"

#include <array>
#include <mutex>

namespace ling {

constinit const class_definition<External_Generic> internal::external_class(
    "External", [](class_builder<External_Generic>& c) {
      c.module("ling").doc("A value that lives elsewhere and is loaded when it is looked at.");
    });

constinit const class_definition<WeakReference> internal::weak_reference_class(
    "WeakReference", [](class_builder<WeakReference>& c) {
      c.module("ling")
          .doc("Refers to a value without keeping it alive.")
          .constructor("target", "A reference to the value.",
                       [](const Class_Generic&, const Any& target) { return WeakReference(target); })
          .method("lock", "", "The value, or none once it is gone.", &WeakReference::lock);
    });

// --- computed values -------------------------------------------------------------------------------------------------

namespace {

using computation = internal::under_way<const object_value_computed*>;

Error error_needs_itself() { return Error("A computed value needs itself."); }

}  // namespace

object_value_class& object_value_computed::object_class() const { return internal::computed_class.required(); }
Type Computed_Generic::getType() { return Type::of(getClass()); }
Class_Generic Computed_Generic::getClass() { return internal::computed_class.required(); }

Any object_value_computed::force() {
  if (computed_.load(std::memory_order_acquire)) [[likely]] {
    return value_;
  }
  if (computation::has(this)) {
    return error_needs_itself();
  }
  const internal::nesting level;
  if (level.too_deep()) {
    return Error("Computed values need each other too deeply.");
  }
  std::shared_ptr<const std::function<Any()>> compute;
  {
    const std::lock_guard guard(lock_);
    compute = compute_;
  }
  if (compute == nullptr) {
    return value_;  // computed since the first look; the lock ordered us behind it
  }
  Any value;
  {
    const computation scope(this);
    value = internal::guarded(*compute);
  }
  if (value.get() == this) {
    value = error_needs_itself();  // kept, it would keep itself alive
  }
  if (value.has(internal::intolerable)) {
    return value;  // says nothing of the value: there may be memory, or time, the next time
  }
  const std::lock_guard guard(lock_);
  if (compute_ != nullptr) {
    value_ = std::move(value);  // empty until now: nothing dies here
    compute_.reset();           // nor here: `compute` still holds it
    computed_.store(true, std::memory_order_release);
  }
  return value_;
}

object_value_class& object_value_external::object_class() const { return internal::external_class.required(); }
Type External_Generic::getType() { return Type::of(getClass()); }
Class_Generic External_Generic::getClass() { return internal::external_class.required(); }

// --- weak references -------------------------------------------------------------------------------------------------

// What the weak references to one object share. It outlives the object; the object's place in the table does not.
struct internal::weak_cell {
  object_value* target;    // null once the object is gone
  std::size_t references;  // weak references that use this cell
  weak_cell* next;         // in its bucket, while the object lives
};

namespace {

using internal::weak_cell;

// Cells by the address of their target. A bucket's lock guards its chain and all that its cells hold. Chains instead of
// a growing table, so that nothing is allocated under a lock.
struct cell_bucket {
  spinlock lock;
  weak_cell* first = nullptr;

  weak_cell** place_of(const object_value* target) noexcept {
    weak_cell** place = &first;
    while (*place != nullptr && (*place)->target != target) {
      place = &(*place)->next;
    }
    return place;
  }
};
constexpr std::size_t bucket_bits = 12;
constinit std::array<cell_bucket, std::size_t{1} << bucket_bits> cell_buckets;

cell_bucket& bucket_of(const object_value* target) noexcept {
  const auto address = reinterpret_cast<std::uintptr_t>(target);
  return cell_buckets[(static_cast<std::uint64_t>(address) * 0x9E3779B97F4A7C15u) >> (64 - bucket_bits)];
}

}  // namespace

void internal::clear_weak_references(object_value& object) noexcept {
  cell_bucket& bucket = bucket_of(&object);
  const std::lock_guard guard(bucket.lock);
  weak_cell** place = bucket.place_of(&object);
  if (weak_cell* cell = *place) {
    *place = cell->next;
    cell->target = nullptr;
  }
}

object_value_weak_reference::object_value_weak_reference(const Any& target) : bucket_key_(target.get()) {
  if (target.empty()) {
    return;
  }
  auto fresh = std::make_unique<weak_cell>(weak_cell{target.get(), 1, nullptr});
  // Seen by the thread that lets go of the object last, because we let go of it before.
  target.get()->weakly_referenced_or_next_dead_.store(target.get(), std::memory_order_relaxed);
  cell_bucket& bucket = bucket_of(bucket_key_);
  const std::lock_guard guard(bucket.lock);
  weak_cell** place = bucket.place_of(target.get());
  if (*place != nullptr) {
    ++(*place)->references;
  } else {
    *place = fresh.release();
  }
  cell_ = *place;
}

object_value_weak_reference::~object_value_weak_reference() {
  if (cell_ == nullptr) {
    return;
  }
  std::unique_ptr<weak_cell> unused;
  cell_bucket& bucket = bucket_of(bucket_key_);
  const std::lock_guard guard(bucket.lock);
  if (--cell_->references != 0) {
    return;
  }
  if (cell_->target != nullptr) {
    *bucket.place_of(cell_->target) = cell_->next;
  }
  unused.reset(cell_);
}

Any object_value_weak_reference::get() const noexcept {
  if (cell_ == nullptr) {
    return {};
  }
  // Under the lock the object's memory is there: an object that dies waits for the lock before it goes.
  const std::lock_guard guard(bucket_of(bucket_key_).lock);
  return cell_->target != nullptr && cell_->target->try_retain() ? Any::adopt(cell_->target) : Any();
}

object_value_class& object_value_weak_reference::object_class() const {
  return internal::weak_reference_class.required();
}
Type WeakReference::getType() { return Type::of(getClass()); }
Class_Generic WeakReference::getClass() { return internal::weak_reference_class.required(); }

// --- what a lazy value yields ----------------------------------------------------------------------------------------

Any unwrap(const Any& value) {
  // A lazy value may yield another one; a chain longer than this is a mistake.
  constexpr int maximum_chain = 100;
  Any current = value;
  for (int i = 0; i < maximum_chain; ++i) {
    if (!current.has(object_traits::lazy)) [[likely]] {
      return current;
    }
    if (current.type() == ObjectType::Computed) {
      current = static_cast<object_value_computed*>(current.get())->force();
    } else {
      current = internal::guarded([&] { return static_cast<object_value_external*>(current.get())->load(); });
    }
  }
  return Error("A lazy value keeps yielding lazy values.");
}

}  // namespace ling
