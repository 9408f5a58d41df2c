// Iterating over snapshots and over foreign iterables.
#include "ling/detail/iterator.h"

#include "ling/detail/definitions.h"
#include "ling/detail/try.h"
#include "ling/hash_map.h"
#include "ling/hash_set.h"
#include "ling/reflection.h"
#include "ling/tuple.h"

#include <typeinfo>

namespace ling {

constinit const class_definition<internal::snapshot_iterator> internal::iterator_class(
    "Iterator", [](class_builder<internal::snapshot_iterator>& c) {
      c.module("ling")
          .doc("Goes through the items a container had when the iteration began.")
          .parent(I_Iterator_Generic::getClass())
          .parent(I_Iterable_Generic::getClass())
          .method("next", "", "The next item; the Error StopIteration at the end.", &internal::snapshot_iterator::next)
          .method("iter", "", "The iterator itself.", [](const Any& self) { return self; });
    });

namespace internal {

Any snapshot_iterator::next() {
  const Any* item = advance();
  return item == nullptr ? Any(StopIteration()) : *item;
}

const Any* snapshot_iterator::advance() noexcept {
  // The position stays within the items, so that asking for ever cannot wrap it around.
  std::size_t position = position_.load(std::memory_order_relaxed);
  const std::span<const Any> items = row_.items();
  while (position < items.size()) {
    if (position_.compare_exchange_weak(position, position + 1, std::memory_order_relaxed)) {
      return &items[position];
    }
  }
  return nullptr;
}

namespace {
using iterator_object = object_value_native<snapshot_iterator>;
}

snapshot_iterator* snapshot_iterator_in(const Any& value) noexcept {
  object_value* const object = value.get();
  if (object != nullptr && typeid(*object) == typeid(iterator_object)) [[likely]] {
    return static_cast<snapshot_iterator*>(static_cast<iterator_object*>(object)->native_data());
  }
  return native_cast<snapshot_iterator>(value);
}

I_Iterator_Generic make_iterator(item_row row) {
  return I_Iterator_Generic::unchecked(make<iterator_object>(iterator_class.required(), std::move(row)));
}

namespace {

// The containers of the runtime, whose items need no iterator; false for any other value.
bool collect_own(const Any& container, std::vector<Any>& items) {
  const auto take = [&items](std::vector<Any>&& more) {
    if (items.empty()) {
      items = std::move(more);
    } else {
      items.insert(items.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    }
  };
  switch (container.type()) {
    case ObjectType::List:
      take(List_Generic::unchecked(container).copyItems());
      return true;
    case ObjectType::HashSet:
      take(HashSet_Generic::unchecked(container).copyItems());
      return true;
    case ObjectType::HashMap:
      take(static_cast<const object_value_hash_map*>(container.get())->copy_keys());
      return true;
    case ObjectType::Tuple: {
      const std::span<const Any> row = static_cast<const object_value_tuple*>(container.get())->items();
      items.insert(items.end(), row.begin(), row.end());
      return true;
    }
    default:
      return false;
  }
}

Result<None> drain(const I_Iterator_Generic& iterator, std::vector<Any>& items) {
  const dynamic_member_hooks* const hooks = iterator.get()->object_class().hooks();
  if (hooks != nullptr && hooks->drain != nullptr) {
    Any outcome = hooks->drain(iterator, items);
    if (outcome.type() != ObjectType::Undefined) {
      return Result<None>::unchecked(std::move(outcome));
    }
  }
  for (;;) {
    Any item = unwrap(iterator.next());
    if (!is_error_result(item)) {
      items.push_back(std::move(item));
    } else if (StopIteration::matches(item.get())) {
      return None();
    } else {
      return Error::unchecked(std::move(item));
    }
  }
}

}  // namespace

Result<None> collect(const Any& iterable, std::vector<Any>& items) {
  if (collect_own(iterable, items)) {
    return None();
  }
  const Any value = unwrap(iterable);
  if (is_error_result(value)) {
    return Error::unchecked(value);
  }
  if (collect_own(value, items)) {
    return None();
  }
  if (I_Iterator_Generic::matches(value.get())) {
    return drain(I_Iterator_Generic::unchecked(value), items);
  }
  if (!I_Iterable_Generic::matches(value.get())) {
    return BadArgument(String("Not an iterable: {} ({}).").arg(display_text(value), raw_class_of(value).name()));
  }
  const I_Iterator_Generic iterator = TRY(I_Iterable_Generic::unchecked(value).iter());
  return drain(iterator, items);
}

}  // namespace internal
}  // namespace ling
