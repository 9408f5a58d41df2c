// Lists: the operations.
//
// Every operation moves what leaves the list out of it and lets it die after unlocking.
#include "ling/list.h"

#include "ling/algorithms/equality.h"
#include "ling/containers/merge_sort.h"
#include "ling/detail/container_errors.h"
#include "ling/detail/iterator.h"
#include "ling/detail/slice.h"
#include "ling/detail/try.h"

#include <algorithm>
#include <iterator>
#include <mutex>

namespace ling {

using internal::error_index_out_of_range;

std::size_t object_value_list::length() const noexcept {
  const std::lock_guard guard(lock_);
  return items_.items().size();
}

std::vector<Any> object_value_list::copy_items() const {
  // Copied without the lock.
  const item_row row = share_items();
  return {row.items().begin(), row.items().end()};
}

item_row object_value_list::share_items() const noexcept {
  const std::lock_guard guard(lock_);
  return items_;
}

Any object_value_list::slice(std::int64_t start, std::int64_t stop) const {
  const item_row row = share_items();
  const internal::slice_range range = internal::clamp_slice(start, stop, row.items().size());
  const std::span<const Any> selected = row.items().subspan(range.start, range.stop - range.start);
  return make<object_value_list>(class_, std::vector<Any>(selected.begin(), selected.end()));
}

Any object_value_list::at(std::int64_t index) const {
  std::unique_lock guard(lock_);
  const std::span<const Any> items = items_.items();
  const std::size_t length = items.size();
  if (const auto position = internal::resolve_index(index, length)) {
    return items[*position];
  }
  guard.unlock();
  return error_index_out_of_range(index, length);
}

Any object_value_list::at_or(std::int64_t index, const Any& otherwise) const {
  const std::lock_guard guard(lock_);
  const std::span<const Any> items = items_.items();
  const auto position = internal::resolve_index(index, items.size());
  return position ? items[*position] : otherwise;
}

Any object_value_list::set(std::int64_t index, Any value) {
  std::unique_lock guard(lock_);
  const std::size_t length = items_.items().size();
  if (const auto position = internal::resolve_index(index, length)) {
    items_.change()[*position].swap(value);
    return None();
  }
  guard.unlock();
  return error_index_out_of_range(index, length);
}

Any object_value_list::set_checked(std::int64_t index, const Any& value) {
  TRY(internal::check_type_argument(object_class(), 0, "item", value));
  return set(index, value);
}

void object_value_list::append(Any value) {
  const std::lock_guard guard(lock_);
  items_.change().push_back(std::move(value));
}

void object_value_list::append_all(std::vector<Any>&& values) {
  const std::lock_guard guard(lock_);
  std::vector<Any>& items = items_.change();
  if (items.empty()) {
    items.swap(values);
  } else {
    items.insert(items.end(), std::make_move_iterator(values.begin()), std::make_move_iterator(values.end()));
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
  std::vector<Any>& items = items_.change();
  const std::size_t position = internal::clamp_slice(index, INT64_MAX, items.size()).start;
  items.insert(items.begin() + static_cast<std::ptrdiff_t>(position), std::move(value));
  return None();
}

Any object_value_list::remove_at(std::int64_t index, std::int64_t count) {
  if (count <= 0) {
    return None();
  }
  std::vector<Any> removed;
  std::unique_lock guard(lock_);
  const std::size_t length = items_.items().size();
  const auto position = internal::resolve_index(index, length);
  if (position && static_cast<std::uint64_t>(count) <= length - *position) {
    std::vector<Any>& items = items_.change();
    const auto first = items.begin() + static_cast<std::ptrdiff_t>(*position);
    const auto last = first + static_cast<std::ptrdiff_t>(count);
    removed.assign(std::make_move_iterator(first), std::make_move_iterator(last));
    items.erase(first, last);
    return None();
  }
  guard.unlock();
  // Where the first position is good, the first one that is not comes right behind the list.
  return error_index_out_of_range(position ? static_cast<std::int64_t>(length) : index, length);
}

Any object_value_list::pop(std::int64_t index) {
  std::unique_lock guard(lock_);
  const std::size_t length = items_.items().size();
  if (const auto position = internal::resolve_index(index, length)) {
    std::vector<Any>& items = items_.change();
    Any popped = std::move(items[*position]);
    items.erase(items.begin() + static_cast<std::ptrdiff_t>(*position));
    return popped;
  }
  guard.unlock();
  return error_index_out_of_range(index, length);
}

void object_value_list::clear() noexcept {
  item_row former;
  const std::lock_guard guard(lock_);
  items_.swap(former);
}

void object_value_list::replace_all(std::vector<Any> items) {
  item_row row(std::move(items));
  const std::lock_guard guard(lock_);
  items_.swap(row);
  // The former items die with the row, after the lock.
}

void object_value_list::splice(std::size_t start, std::size_t count, std::vector<Any> items) {
  const std::size_t added = items.size();
  items.resize(std::max(added, count));  // room for what is replaced
  const std::lock_guard guard(lock_);
  std::vector<Any>& all = items_.change();
  const std::size_t first = std::min(start, all.size());
  const std::size_t replaced = std::min(count, all.size() - first);
  const auto end = all.begin() + static_cast<std::ptrdiff_t>(first + replaced);
  if (added > replaced) {
    all.insert(end, added - replaced, Any());
  }
  for (std::size_t i = 0; i < std::max(added, replaced); ++i) {
    all[first + i].swap(items[i]);
  }
  if (added < replaced) {
    all.erase(all.begin() + static_cast<std::ptrdiff_t>(first + added), end);
  }
}

void object_value_list::reverse() {
  const std::lock_guard guard(lock_);
  std::ranges::reverse(items_.change());
}

Result<Integer> object_value_list::index_of(const Any& value, std::int64_t from) const {
  // Comparing may run code of the host, so it works on the items of this moment.
  const item_row row = share_items();
  return internal::index_of_equal(row.items(), value, from);
}

Result<Boolean> object_value_list::remove_one(const Any& value) {
  const item_row row = share_items();
  for (const Any& item : row.items()) {
    const Boolean equal = TRY(internal::are_equal(item, value));
    if (!equal.value()) {
      continue;
    }
    // Others may have changed the list in the meantime: what is removed is the item that was compared, if it is there.
    const std::lock_guard guard(lock_);
    std::vector<Any>& items = items_.change();
    const auto place = std::ranges::find_if(items, [&](const Any& each) { return each.is_same(item); });
    if (place != items.end()) {
      items.erase(place);  // the row holds the item: nothing dies under the lock
      return Boolean(true);
    }
  }
  return Boolean(false);
}

Result<None> object_value_list::sort() {
  const item_row before = share_items();
  std::vector<Any> sorted(before.items().begin(), before.items().end());
  TRY(internal::merge_sort(sorted));
  item_row row(std::move(sorted));
  {
    const std::lock_guard guard(lock_);
    // A change while the row is held makes another one.
    if (items_.items().data() == before.items().data() && items_.items().size() == before.items().size()) {
      items_.swap(row);
      return None();
    }
  }
  return Error("The list was changed while it was sorted.");
}

Result<None> object_value_list::repeat(std::int64_t count) {
  item_row former;
  std::unique_lock guard(lock_);
  const std::size_t length = items_.items().size();
  if (count <= 0) {
    items_.swap(former);
    return None();
  }
  if (internal::is_repetition_too_long(length, count)) {
    guard.unlock();
    return internal::error_too_long(length, count);
  }
  std::vector<Any>& items = items_.change();
  items.reserve(length * static_cast<std::size_t>(count));
  for (std::size_t missing = length * static_cast<std::size_t>(count - 1), i = 0; i < missing; ++i) {
    items.push_back(items[i]);
  }
  return None();
}

// --- the handle ------------------------------------------------------------------------------------------------------

Any List_Generic::set(std::int64_t index, const Any& value) const { return object().set_checked(index, value); }

Any List_Generic::appendChecked(const Any& value) const {
  TRY(internal::check_type_argument(object().object_class(), 0, "item", value));
  object().append(value);
  return None();
}

Type List_Generic::elementsType() const { return internal::type_or_untyped(object().object_class(), 0); }

}  // namespace ling
