// Lists: the operations.
//
// Every operation moves what leaves the list out of it and lets it die after unlocking.
#include "ling/list.h"

#include "ling/detail/container_errors.h"
#include "ling/detail/equality.h"
#include "ling/detail/iterator.h"
#include "ling/detail/merge_sort.h"
#include "ling/detail/slice.h"
#include "ling/detail/try.h"

#include <algorithm>
#include <iterator>
#include <mutex>

namespace ling {

using internal::equality;
using internal::error_index_out_of_range;

namespace {

// How far a search comes without leaving the lock.
struct plain_search {
  std::size_t position;
  equality outcome;  // same: it is at the position; unknown: only compare_objects can tell from there on

  plain_search(std::span<const Any> items, std::size_t from, const Any& value)
      : position(from), outcome(equality::different) {
    for (; position < items.size(); ++position) {
      outcome = internal::compare_plain(items[position], value);
      if (outcome != equality::different) {
        return;
      }
    }
  }
};

std::vector<Any> tail_of(const std::vector<Any>& items, std::size_t from) {
  return {items.begin() + static_cast<std::ptrdiff_t>(from), items.end()};
}

}  // namespace

std::size_t object_value_list::length() const noexcept {
  const std::lock_guard guard(lock_);
  return items_.size();
}

std::vector<Any> object_value_list::copy_items() const {
  const std::lock_guard guard(lock_);
  return items_;
}

Any object_value_list::slice(std::int64_t start, std::int64_t stop) const {
  std::vector<Any> items;
  {
    const std::lock_guard guard(lock_);
    const internal::slice_range range = internal::clamp_slice(start, stop, items_.size());
    const auto begin = items_.begin();
    items.assign(begin + static_cast<std::ptrdiff_t>(range.start), begin + static_cast<std::ptrdiff_t>(range.stop));
  }
  return make<object_value_list>(class_, std::move(items));
}

Any object_value_list::at(std::int64_t index) const {
  std::unique_lock guard(lock_);
  const std::size_t length = items_.size();
  if (const auto position = internal::resolve_index(index, length)) {
    return items_[*position];
  }
  guard.unlock();
  return error_index_out_of_range(index, length);
}

Any object_value_list::at_or(std::int64_t index, const Any& otherwise) const {
  const std::lock_guard guard(lock_);
  const auto position = internal::resolve_index(index, items_.size());
  return position ? items_[*position] : otherwise;
}

Any object_value_list::set(std::int64_t index, Any value) {
  std::unique_lock guard(lock_);
  const std::size_t length = items_.size();
  if (const auto position = internal::resolve_index(index, length)) {
    items_[*position].swap(value);
    return None();
  }
  guard.unlock();
  return error_index_out_of_range(index, length);
}

void object_value_list::append(Any value) {
  const std::lock_guard guard(lock_);
  items_.push_back(std::move(value));
}

void object_value_list::append_all(std::vector<Any>&& values) {
  const std::lock_guard guard(lock_);
  if (items_.empty()) {
    items_.swap(values);
  } else {
    items_.insert(items_.end(), std::make_move_iterator(values.begin()), std::make_move_iterator(values.end()));
  }
}

Result<None> object_value_list::extend(const Any& iterable) {
  std::vector<Any> items;
  TRY(internal::collect(iterable, items));
  if (internal::type_argument(object_class(), 0) != nullptr) {
    for (const Any& item : items) {
      TRY(internal::check_type_argument(object_class(), 0, "item", item));
    }
  }
  append_all(std::move(items));
  return None();
}

Result<None> object_value_list::insert(std::int64_t index, Any value) {
  TRY(internal::check_type_argument(object_class(), 0, "item", value));
  const std::lock_guard guard(lock_);
  const std::size_t position = internal::clamp_slice(index, INT64_MAX, items_.size()).start;
  items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(position), std::move(value));
  return None();
}

Any object_value_list::remove_at(std::int64_t index, std::int64_t count) {
  if (count <= 0) {
    return None();
  }
  std::vector<Any> removed;
  std::unique_lock guard(lock_);
  const std::size_t length = items_.size();
  const auto position = internal::resolve_index(index, length);
  if (position && static_cast<std::uint64_t>(count) <= length - *position) {
    const auto first = items_.begin() + static_cast<std::ptrdiff_t>(*position);
    const auto last = first + static_cast<std::ptrdiff_t>(count);
    removed.assign(std::make_move_iterator(first), std::make_move_iterator(last));
    items_.erase(first, last);
    return None();
  }
  guard.unlock();
  // Where the first position is good, the first one that is not comes right behind the list.
  return error_index_out_of_range(position ? static_cast<std::int64_t>(length) : index, length);
}

Any object_value_list::pop(std::int64_t index) {
  std::unique_lock guard(lock_);
  const std::size_t length = items_.size();
  if (const auto position = internal::resolve_index(index, length)) {
    Any popped = std::move(items_[*position]);
    items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(*position));
    return popped;
  }
  guard.unlock();
  return error_index_out_of_range(index, length);
}

void object_value_list::clear() noexcept { replace_all({}); }

void object_value_list::replace_all(std::vector<Any> items) noexcept {
  const std::lock_guard guard(lock_);
  items_.swap(items);
  // The former items die with the parameter, after the lock.
}

void object_value_list::reverse() noexcept {
  const std::lock_guard guard(lock_);
  std::reverse(items_.begin(), items_.end());
}

Result<Integer> object_value_list::index_of(const Any& value, std::int64_t from) const {
  std::vector<Any> rest;  // what must be compared without the lock
  std::size_t position = 0;
  {
    const std::lock_guard guard(lock_);
    const plain_search search(items_, internal::clamp_slice(from, INT64_MAX, items_.size()).start, value);
    if (search.outcome == equality::same) {
      return Integer(search.position);
    }
    position = search.position;
    rest = tail_of(items_, position);
  }
  const Integer further = TRY(internal::index_of_equal(rest, value, 0));
  return further.value() < 0 ? further : Integer(position + static_cast<std::size_t>(further.value()));
}

Result<Boolean> object_value_list::remove_one(const Any& value) {
  Any removed;
  std::vector<Any> rest;
  {
    const std::lock_guard guard(lock_);
    const plain_search search(items_, 0, value);
    if (search.outcome == equality::same) {
      removed = std::move(items_[search.position]);
      items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(search.position));
      return Boolean(true);
    }
    rest = tail_of(items_, search.position);
  }
  for (const Any& item : rest) {
    const Boolean equal = TRY(internal::are_equal(item, value));
    if (!equal.value()) {
      continue;
    }
    // Others may have changed the list in the meantime: what is removed is the item that was compared, if it is there.
    const std::lock_guard guard(lock_);
    const auto place = std::find_if(items_.begin(), items_.end(), [&](const Any& each) { return each.is_same(item); });
    if (place != items_.end()) {
      items_.erase(place);  // `rest` holds the item: nothing dies under the lock
      return Boolean(true);
    }
  }
  return Boolean(false);
}

Result<None> object_value_list::sort() {
  const std::vector<Any> before = copy_items();
  std::vector<Any> sorted = before;
  TRY(internal::merge_sort(sorted));
  const auto same = [](const Any& a, const Any& b) { return a.is_same(b); };
  {
    const std::lock_guard guard(lock_);
    if (std::equal(items_.begin(), items_.end(), before.begin(), before.end(), same)) {
      items_.swap(sorted);
      return None();
    }
  }
  return Error("The list was changed while it was sorted.");
}

Result<None> object_value_list::repeat(std::int64_t count) {
  std::vector<Any> former;
  std::unique_lock guard(lock_);
  const std::size_t length = items_.size();
  if (count <= 0) {
    items_.swap(former);
    return None();
  }
  if (internal::is_repetition_too_long(length, count)) {
    guard.unlock();
    return internal::error_too_long(length, count);
  }
  items_.reserve(length * static_cast<std::size_t>(count));
  for (std::size_t missing = length * static_cast<std::size_t>(count - 1), i = 0; i < missing; ++i) {
    items_.push_back(items_[i]);
  }
  return None();
}

// --- the handle ------------------------------------------------------------------------------------------------------

Any List_Generic::set(std::int64_t index, const Any& value) const {
  TRY(internal::check_type_argument(object().object_class(), 0, "item", value));
  return object().set(index, value);
}

Any List_Generic::appendChecked(const Any& value) const {
  TRY(internal::check_type_argument(object().object_class(), 0, "item", value));
  object().append(value);
  return None();
}

Type List_Generic::elementsType() const { return internal::type_or_untyped(object().object_class(), 0); }

}  // namespace ling
