// HashMaps: the operations.
#include "ling/hash_map.h"

#include "ling/containers/container_errors.h"
#include "ling/containers/ordered_table.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"

#include <cassert>
#include <mutex>

namespace ling {

using internal::key_search;
using internal::ordered_table;

namespace {
constexpr const char* key_role = "key";
}  // namespace

object_value_hash_map::object_value_hash_map(object_value_class* typed_class)
    : class_(typed_class), table_(std::make_unique<ordered_table>()) {}

object_value_hash_map::~object_value_hash_map() = default;

std::size_t object_value_hash_map::length() const noexcept {
  const std::lock_guard guard(lock_);
  return table_->length();
}

Any object_value_hash_map::find(const Any& key, Any* value, bool* found) const {
  key_search search(key, key_role);
  TRY(search.prepare());
  std::uint32_t position = ordered_table::nowhere;
  Any copy;
  {
    std::unique_lock guard(lock_);
    TRY(search.find(guard, *table_, position));
    if (position != ordered_table::nowhere && value != nullptr) {
      copy = table_->at(position).value;
    }
  }
  *found = position != ordered_table::nowhere;
  if (*found && value != nullptr) {
    *value = std::move(copy);
  }
  return None();
}

Any object_value_hash_map::set(const Any& key, Any value) {
  key_search search(key, key_role);
  TRY(search.prepare());
  std::unique_lock guard(lock_);
  std::uint32_t position = ordered_table::nowhere;
  TRY(search.find(guard, *table_, position));
  if (position != ordered_table::nowhere) {
    table_->at(position).value.swap(value);  // the former value dies with the parameter, after the lock
    return None();
  }
  if (table_->append(search.hash(), search.key(), std::move(value))) {
    return None();
  }
  guard.unlock();
  return internal::error_full("map");
}

Any object_value_hash_map::remove(const Any& key, Any* value, bool* removed) {
  key_search search(key, key_role);
  TRY(search.prepare());
  ordered_table::entry taken;
  {
    std::unique_lock guard(lock_);
    std::uint32_t position = ordered_table::nowhere;
    TRY(search.find(guard, *table_, position));
    *removed = position != ordered_table::nowhere;
    if (*removed) {
      taken = table_->extract(position);
    }
  }
  if (*removed && value != nullptr) {
    *value = std::move(taken.value);
  }
  return None();
}

void object_value_hash_map::clear() noexcept {
  ordered_table::row former;
  const std::lock_guard guard(lock_);
  former = table_->extract_all();
}

std::vector<std::pair<Any, Any>> object_value_hash_map::copy_pairs() const {
  std::vector<std::pair<Any, Any>> pairs;
  const std::lock_guard guard(lock_);
  pairs.reserve(table_->length());
  table_->for_each([&](const ordered_table::entry& each) { pairs.emplace_back(each.key, each.value); });
  return pairs;
}

std::vector<Any> object_value_hash_map::copy_keys() const {
  const std::lock_guard guard(lock_);
  return table_->copy(&ordered_table::entry::key);
}

std::vector<Any> object_value_hash_map::copy_values() const {
  const std::lock_guard guard(lock_);
  return table_->copy(&ordered_table::entry::value);
}

Any object_value_hash_map::clone() const {
  auto copy = HashMap_Generic::unchecked(make<object_value_hash_map>(class_));
  const std::lock_guard guard(lock_);
  *copy.object().table_ = *table_;
  return copy;
}

Result<None> object_value_hash_map::extend(const I_Map_Generic& map) {
  const auto self = HashMap_Generic::unchecked(Any::share(this));
  std::vector<std::pair<Any, Any>> pairs;
  TRY(map.pairs(pairs));
  for (const auto& [key, value] : pairs) {
    TRY(Result<None>::unchecked(self.setChecked(key, value)));
  }
  return None();
}

// --- the handle ------------------------------------------------------------------------------------------------------

bool HashMap_Generic::contains(const Any& key) const {
  bool found = false;
  internal::tolerate_error(object().find(key, nullptr, &found));
  return found;
}

Any HashMap_Generic::get(const Any& key, const Any& otherwise) const {
  Any value;
  bool found = false;
  internal::tolerate_error(object().find(key, &value, &found));
  return found ? value : otherwise;
}

void HashMap_Generic::set(const Any& key, const Any& value) const {
  const Any outcome = object().set(key, value);
  internal::tolerate_error(outcome);
  assert(!is_error_result(outcome));
}

Any HashMap_Generic::setChecked(const Any& key, const Any& value) const {
  TRY(internal::check_type_argument(object().object_class(), 0, key_role, key));
  TRY(internal::check_type_argument(object().object_class(), 1, "value", value));
  return object().set(key, value);
}

bool HashMap_Generic::remove(const Any& key) const {
  bool removed = false;
  internal::tolerate_error(object().remove(key, nullptr, &removed));
  return removed;
}

Type HashMap_Generic::keysType() const { return internal::type_or_untyped(object().object_class(), 0); }

Type HashMap_Generic::valuesType() const { return internal::type_or_untyped(object().object_class(), 1); }

}  // namespace ling
