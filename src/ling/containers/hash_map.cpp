// HashMaps: the operations.
#include "ling/hash_map.h"

#include "ling/containers/key_table.h"
#include "ling/detail/container_errors.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"

#include <cassert>

namespace ling {

namespace {
constexpr internal::key_table::words words{"key", "map"};
}  // namespace

object_value_hash_map::object_value_hash_map(object_value_class* typed_class)
    : class_(typed_class), table_(std::make_unique<internal::key_table>(words)) {}

object_value_hash_map::~object_value_hash_map() = default;

std::uint64_t object_value_hash_map::version() const noexcept { return table_->version(); }

std::size_t object_value_hash_map::length() const noexcept { return table_->length(); }

internal::key_lookup object_value_hash_map::find(const Any& key) const { return table_->find(key); }

std::optional<internal::key_lookup> object_value_hash_map::find(const internal::plain_key& key) const {
  return table_->find(key);
}

Result<Boolean> object_value_hash_map::contains(const Any& key) const {
  return internal::answer(table_->contains(key), true);
}

std::optional<bool> object_value_hash_map::contains(const internal::plain_key& key) const {
  const auto outcome = table_->contains(key);
  return outcome ? std::optional(outcome->found) : std::nullopt;
}

Result<None> object_value_hash_map::set(const Any& key, Any value) {
  return Result<None>::unchecked(table_->store(key, std::move(value)).error);
}

Result<None> object_value_hash_map::set_checked(const Any& key, const Any& value) {
  TRY(internal::check_type_argument(object_class(), 0, words.key, key));
  TRY(internal::check_type_argument(object_class(), 1, "value", value));
  return set(key, value);
}

Result<None> object_value_hash_map::set_checked(const internal::plain_key& key, const Any& value) {
  if (!object_class().type_arguments().empty()) [[unlikely]] {
    return set_checked(key.value(), value);
  }
  return Result<None>::unchecked(table_->store(key, value).error);
}

internal::key_lookup object_value_hash_map::remove(const Any& key) { return table_->remove(key); }

void object_value_hash_map::clear() noexcept { table_->clear(); }

std::vector<std::pair<Any, Any>> object_value_hash_map::copy_pairs() const { return table_->copy_pairs(); }

std::vector<Any> object_value_hash_map::copy_keys() const { return table_->copy(&internal::ordered_table::entry::key); }

std::vector<Any> object_value_hash_map::copy_values() const {
  return table_->copy(&internal::ordered_table::entry::value);
}

Any object_value_hash_map::clone() const {
  auto copy = HashMap_Generic::unchecked(make<object_value_hash_map>(class_));
  copy.object().table_->copy_from(*table_);
  return copy;
}

Result<None> object_value_hash_map::extend(const I_Map_Generic& map) {
  std::vector<std::pair<Any, Any>> pairs;
  TRY(map.pairs(pairs));
  for (const auto& [key, value] : pairs) {
    TRY(set_checked(key, value));
  }
  return None();
}

// --- the handle ------------------------------------------------------------------------------------------------------

bool HashMap_Generic::contains(const Any& key) const {
  const Result<Boolean> found = object().contains(key);
  internal::tolerate_error(found);
  return found && found.value().value();
}

Any HashMap_Generic::get(const Any& key, const Any& otherwise) const {
  internal::key_lookup outcome = object().find(key);
  internal::tolerate_error(outcome.error);
  return outcome.found ? std::move(outcome.value) : otherwise;
}

void HashMap_Generic::set(const Any& key, const Any& value) const {
  const Result<None> outcome = object().set(key, value);
  internal::tolerate_error(outcome);
  assert(!outcome.is_error());
}

bool HashMap_Generic::remove(const Any& key) const {
  const internal::key_lookup outcome = object().remove(key);
  internal::tolerate_error(outcome.error);
  return outcome.found;
}

Type HashMap_Generic::keysType() const { return internal::type_or_untyped(object().object_class(), 0); }

Type HashMap_Generic::valuesType() const { return internal::type_or_untyped(object().object_class(), 1); }

}  // namespace ling
