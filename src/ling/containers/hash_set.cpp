// HashSets: the operations.
#include "ling/hash_set.h"

#include "ling/containers/container_errors.h"
#include "ling/containers/ordered_table.h"
#include "ling/detail/iterator.h"
#include "ling/detail/try.h"

#include <mutex>

namespace ling {

using internal::key_search;
using internal::ordered_table;

namespace {
constexpr const char* item_role = "value of a set";
}  // namespace

object_value_hash_set::object_value_hash_set(object_value_class* typed_class)
    : class_(typed_class), table_(std::make_unique<ordered_table>()) {}

object_value_hash_set::~object_value_hash_set() = default;

std::size_t object_value_hash_set::length() const noexcept {
  const std::lock_guard guard(lock_);
  return table_->length();
}

Any object_value_hash_set::contains(const Any& value, bool* found) const {
  key_search search(value, item_role);
  TRY(search.prepare());
  std::unique_lock guard(lock_);
  std::uint32_t position = ordered_table::nowhere;
  TRY(search.find(guard, *table_, position));
  *found = position != ordered_table::nowhere;
  return None();
}

Any object_value_hash_set::insert(const Any& value, bool* inserted) {
  key_search search(value, item_role);
  TRY(search.prepare());
  std::unique_lock guard(lock_);
  std::uint32_t position = ordered_table::nowhere;
  TRY(search.find(guard, *table_, position));
  *inserted = position == ordered_table::nowhere;
  if (!*inserted || table_->append(search.hash(), search.key(), {})) {
    return None();
  }
  guard.unlock();
  return internal::error_full("set");
}

Any object_value_hash_set::remove(const Any& value, bool* removed) {
  key_search search(value, item_role);
  TRY(search.prepare());
  ordered_table::entry taken;
  std::unique_lock guard(lock_);
  std::uint32_t position = ordered_table::nowhere;
  TRY(search.find(guard, *table_, position));
  *removed = position != ordered_table::nowhere;
  if (*removed) {
    taken = table_->extract(position);
  }
  return None();
}

void object_value_hash_set::clear() noexcept {
  ordered_table::row former;
  const std::lock_guard guard(lock_);
  former = table_->extract_all();
}

std::vector<Any> object_value_hash_set::copy_items() const {
  const std::lock_guard guard(lock_);
  return table_->copy(&ordered_table::entry::key);
}

Any object_value_hash_set::clone() const {
  auto copy = HashSet_Generic::unchecked(make<object_value_hash_set>(class_));
  const std::lock_guard guard(lock_);
  *copy.object().table_ = *table_;
  return copy;
}

Result<None> object_value_hash_set::extend(const Any& iterable) {
  const auto self = HashSet_Generic::unchecked(Any::share(this));
  std::vector<Any> items;
  TRY(internal::collect(iterable, items));
  for (const Any& item : items) {
    TRY(Result<Any>::unchecked(self.insert(item)));
  }
  return None();
}

// --- the handle ------------------------------------------------------------------------------------------------------

bool HashSet_Generic::contains(const Any& value) const {
  bool found = false;
  internal::tolerate_error(object().contains(value, &found));
  return found;
}

Any HashSet_Generic::insert(const Any& value) const {
  TRY(internal::check_type_argument(object().object_class(), 0, item_role, value));
  bool inserted = false;
  Any outcome = object().insert(value, &inserted);
  return is_error_result(outcome) ? outcome : Any(inserted);
}

bool HashSet_Generic::remove(const Any& value) const {
  bool removed = false;
  internal::tolerate_error(object().remove(value, &removed));
  return removed;
}

Type HashSet_Generic::elementsType() const { return internal::type_or_untyped(object().object_class(), 0); }

}  // namespace ling
