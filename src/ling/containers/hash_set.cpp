// HashSets: the operations.
#include "ling/hash_set.h"

#include "ling/containers/key_table.h"
#include "ling/detail/container_errors.h"
#include "ling/detail/iterator.h"
#include "ling/detail/try.h"

namespace ling {

using internal::answer;

namespace {
constexpr internal::key_table::words words{"value of a set", "set"};
}  // namespace

object_value_hash_set::object_value_hash_set(object_value_class* typed_class)
    : class_(typed_class), table_(std::make_unique<internal::key_table>(words)) {}

object_value_hash_set::~object_value_hash_set() = default;

std::size_t object_value_hash_set::length() const noexcept { return table_->length(); }

Result<Boolean> object_value_hash_set::contains(const Any& value) const {
  return answer(table_->contains(value), true);
}

std::optional<bool> object_value_hash_set::contains(const internal::plain_key& value) const {
  const auto outcome = table_->contains(value);
  return outcome ? std::optional(outcome->found) : std::nullopt;
}

Result<Boolean> object_value_hash_set::insert(const Any& value) { return answer(table_->store(value, {}), false); }

Result<Boolean> object_value_hash_set::insert_checked(const Any& value) {
  TRY(internal::check_type_argument(object_class(), 0, words.key, value));
  return insert(value);
}

Result<Boolean> object_value_hash_set::remove(const Any& value) { return answer(table_->remove(value), true); }

void object_value_hash_set::clear() noexcept { table_->clear(); }

std::vector<Any> object_value_hash_set::copy_items() const {
  return table_->copy(&internal::ordered_table::entry::key);
}

Any object_value_hash_set::clone() const {
  auto copy = HashSet_Generic::unchecked(make<object_value_hash_set>(class_));
  copy.object().table_->copy_from(*table_);
  return copy;
}

Result<None> object_value_hash_set::extend(const Any& iterable) {
  std::vector<Any> items;
  TRY(internal::collect(iterable, items));
  for (const Any& item : items) {
    TRY(insert_checked(item));
  }
  return None();
}

// --- the handle ------------------------------------------------------------------------------------------------------

bool HashSet_Generic::contains(const Any& value) const {
  const Result<Boolean> found = object().contains(value);
  internal::tolerate_error(found);
  return found && found.value().value();
}

bool HashSet_Generic::remove(const Any& value) const {
  const Result<Boolean> removed = object().remove(value);
  internal::tolerate_error(removed);
  return removed && removed.value().value();
}

Type HashSet_Generic::elementsType() const { return internal::type_or_untyped(object().object_class(), 0); }

}  // namespace ling
