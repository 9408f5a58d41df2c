// Keys of containers: which values may be keys, finding them, the operations.
#include "ling/containers/key_table.h"

#include "ling/algorithms/equality.h"
#include "ling/detail/container_errors.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"
#include "ling/reflection.h"
#include "ling/tuple.h"
#include "ling/values/exact_number.h"

#include <mutex>
#include <optional>

namespace ling::internal {

namespace {

// Whether a value may be a key: an immutable value that holds only immutable ones.
bool is_key(const Any& value) {
  if (value.type() != ObjectType::Tuple) {
    return I_Immutable::matches(value.get());
  }
  // Tuples are walked without recursion: a tuple may hold tuples as deep as it likes.
  std::vector<const object_value_tuple*> open{static_cast<const object_value_tuple*>(value.get())};
  while (!open.empty()) {
    const object_value_tuple& tuple = *open.back();
    open.pop_back();
    for (const Any& item : tuple.items()) {
      if (item.type() == ObjectType::Tuple) {
        open.push_back(static_cast<const object_value_tuple*>(item.get()));
      } else if (!is_plain(item.type()) && !I_Immutable::matches(item.get())) {
        return false;
      }
    }
  }
  return true;
}

// Whether the key of an entry is the one looked for.
equality compare_key(const Any& candidate, const plain_key& key) noexcept {
  switch (candidate.type()) {
    case ObjectType::String:
      return key.is_text() && static_cast<const object_value_string*>(candidate.get())->view() == key.text()
                 ? equality::same
                 : equality::different;
    case ObjectType::Integer: {
      const auto& number = static_cast<const object_value_integer&>(*candidate.get());
      const bool is_negative = number.is_signed() && number.signed_value() < 0;
      return !key.is_text() && number.unsigned_value() == key.bits() && is_negative == key.is_negative()
                 ? equality::same
                 : equality::different;
    }
    case ObjectType::Float: {
      const double number = static_cast<const object_value_float*>(candidate.get())->value();
      const auto bits = exact_integer_bits(number);
      return !key.is_text() && bits && *bits == key.bits() && (number < 0) == key.is_negative() ? equality::same
                                                                                                : equality::different;
    }
    default:
      return is_plain(candidate.type()) ? equality::different : equality::unknown;
  }
}

// The position of the key, `nowhere` when it is not there. Empty when only key_search can tell: a key with an equality
// of its own comes before it under the same hash.
std::optional<std::uint32_t> position_of(const ordered_table& table, const plain_key& key) noexcept {
  std::size_t slot = table.first_slot(key.hash());
  for (;;) {
    const std::uint32_t position = table.next_candidate(key.hash(), slot);
    if (position == ordered_table::nowhere) {
      return position;
    }
    const equality outcome = compare_key(table.at(position).key, key);
    if (outcome == equality::same) {
      return position;
    }
    if (outcome == equality::unknown) {
      return std::nullopt;
    }
  }
}

// Finds one key, giving up the lock while it compares keys whose equality is decided by meta-methods. Stands before the
// lock, because what it keeps alive must die after unlocking.
class key_search {
 public:
  explicit key_search(const Any& key) noexcept : key_(&key) {}
  key_search(const key_search&) = delete;
  key_search& operator=(const key_search&) = delete;

  // Hashes the key, locks, and tells whether the key is there. An Error when the key is not immutable, its `__hash__`
  // gives one, or keys cannot be compared. No key in the table is compared twice, so a meta-method that changes the
  // table cannot keep the search going for ever.
  key_lookup run(const char* role, std::unique_lock<spinlock>& lock, const ordered_table& table);

  const Any& key() const noexcept { return *key_; }
  std::uint64_t hash() const noexcept { return hash_; }
  std::uint32_t position() const noexcept { return position_; }  // when it has been found

 private:
  Result<None> prepare(const char* role);
  Result<Boolean> find(std::unique_lock<spinlock>& held, const ordered_table& table);
  struct comparison {
    Any candidate;
    equality outcome;
  };
  void set_hash(std::uint64_t hash) noexcept { hash_ = hash == 0 ? 1 : hash; }  // 0 marks gaps
  equality recall(const Any& candidate) const noexcept;

  const Any* key_;
  Any forced_;  // what a lazy key turned out to be
  std::uint64_t hash_ = 0;
  std::uint32_t position_ = ordered_table::nowhere;
  std::vector<comparison> done_;
};

Result<None> key_search::prepare(const char* role) {
  if (is_plain(key_->type())) [[likely]] {
    set_hash(hash_of(*key_));
    return None();
  }
  if (key_->has(object_traits::lazy)) {
    forced_ = unwrap(*key_);
    key_ = &forced_;
  }
  if (is_error_result(*key_)) {
    return Error::unchecked(*key_);
  }
  if (!is_key(*key_)) {
    return error_not_immutable(role, *key_);
  }
  Any error;
  set_hash(hash_of_key(*key_, error));
  return error.empty() ? Result<None>(None()) : Error::unchecked(std::move(error));
}

equality key_search::recall(const Any& candidate) const noexcept {
  for (const comparison& each : done_) {
    if (each.candidate.is_same(candidate)) {
      return each.outcome;
    }
  }
  return equality::unknown;
}

// Gives up the lock only in between.
Result<Boolean> key_search::find(std::unique_lock<spinlock>& held, const ordered_table& table) {
  std::size_t slot = table.first_slot(hash_);
  while ((position_ = table.next_candidate(hash_, slot)) != ordered_table::nowhere) {
    const Any& candidate = table.at(position_).key;
    equality outcome = compare_plain(candidate, *key_);
    if (outcome == equality::unknown) {
      outcome = recall(candidate);
    }
    if (outcome == equality::same) {
      return true;
    }
    if (outcome == equality::different) {
      continue;
    }
    done_.push_back({candidate, equality::unknown});
    const std::uint64_t version = table.version();
    held.unlock();
    const Result<Boolean> compared = equal_objects(done_.back().candidate, *key_);
    held.lock();
    if (compared.is_error()) {
      return compared.error();
    }
    const bool equal = compared.value().value();
    done_.back().outcome = equal ? equality::same : equality::different;
    if (table.version() != version) {
      slot = table.first_slot(hash_);
    } else if (equal) {
      return true;
    }
  }
  return false;
}

key_lookup key_search::run(const char* role, std::unique_lock<spinlock>& lock, const ordered_table& table) {
  if (auto prepared = prepare(role); prepared.is_error()) {
    return {.error = std::move(prepared)};
  }
  lock.lock();
  const Result<Boolean> found = find(lock, table);
  return found.is_error() ? key_lookup{.error = found} : key_lookup{.found = found.value().value()};
}

}  // namespace

Result<Boolean> answer(const key_lookup& outcome, bool wanted) {
  return outcome.error.empty() ? Result<Boolean>(outcome.found == wanted) : Result<Boolean>::unchecked(outcome.error);
}

std::uint64_t key_table::version() const noexcept {
  const std::lock_guard guard(lock_);
  return entries_.version();
}

std::size_t key_table::length() const noexcept {
  const std::lock_guard guard(lock_);
  return entries_.length();
}

// Plain keys are looked up without giving up the lock; the others, and they too where that cannot tell, by a
// key_search.

std::optional<key_lookup> key_table::find(const plain_key& key) const {
  std::optional<key_lookup> outcome;
  const std::lock_guard guard(lock_);
  if (const auto position = position_of(entries_, key)) [[likely]] {
    outcome.emplace();
    if (*position != ordered_table::nowhere) {
      outcome->found = true;
      outcome->value = entries_.at(*position).value;
    }
  }
  return outcome;
}

key_lookup key_table::find(const Any& key) const {
  if (const auto plain = plain_key::of(key)) {
    if (auto outcome = find(*plain)) [[likely]] {
      return *std::move(outcome);
    }
  }
  key_search search(key);
  std::unique_lock guard(lock_, std::defer_lock);
  key_lookup outcome = search.run(names_.key, guard, entries_);
  if (outcome.found) {
    outcome.value = entries_.at(search.position()).value;
  }
  return outcome;
}

std::optional<key_lookup> key_table::contains(const plain_key& key) const {
  const std::lock_guard guard(lock_);
  const auto position = position_of(entries_, key);
  return position ? std::optional(key_lookup{.found = *position != ordered_table::nowhere}) : std::nullopt;
}

key_lookup key_table::contains(const Any& key) const {
  if (const auto plain = plain_key::of(key)) {
    if (auto outcome = contains(*plain)) [[likely]] {
      return *std::move(outcome);
    }
  }
  key_search search(key);
  std::unique_lock guard(lock_, std::defer_lock);
  return search.run(names_.key, guard, entries_);
}

key_lookup key_table::store(const plain_key& key, Any value) {
  Any new_key;  // dies after the lock
  key_lookup outcome;
  {
    const std::lock_guard guard(lock_);
    if (const auto position = position_of(entries_, key)) [[likely]] {
      outcome.found = *position != ordered_table::nowhere;
      if (outcome.found) {
        entries_.replace(*position, value);  // the former value dies with the parameter, after the lock
        return outcome;
      }
      new_key = key.value();
      if (entries_.append(key.hash(), new_key, std::move(value))) [[likely]] {
        return outcome;
      }
    }
  }
  // Also for a table that is full: what says so stands there.
  return store_by_search(key.value(), std::move(value));
}

key_lookup key_table::store(const Any& key, Any value) {
  const auto plain = plain_key::of(key);
  return plain ? store(*plain, std::move(value)) : store_by_search(key, std::move(value));
}

key_lookup key_table::store_by_search(const Any& key, Any value) {
  key_search search(key);
  std::unique_lock guard(lock_, std::defer_lock);
  key_lookup outcome = search.run(names_.key, guard, entries_);
  if (outcome.found) {
    entries_.replace(search.position(), value);  // the former value dies with the parameter, after the lock
  } else if (outcome.error.empty() && !entries_.append(search.hash(), search.key(), std::move(value))) {
    guard.unlock();
    outcome.error = error_full(names_.container);
  }
  return outcome;
}

key_lookup key_table::remove(const Any& key) {
  key_search search(key);
  ordered_table::entry taken;
  std::unique_lock guard(lock_, std::defer_lock);
  key_lookup outcome = search.run(names_.key, guard, entries_);
  if (outcome.found) {
    taken = entries_.extract(search.position());
    outcome.value.swap(taken.value);
  }
  return outcome;
}

void key_table::clear() noexcept {
  ordered_table::row former;
  const std::lock_guard guard(lock_);
  former = entries_.extract_all();
}

void key_table::copy_from(const key_table& other) {
  const std::lock_guard guard(other.lock_);
  entries_ = other.entries_;
}

std::vector<Any> key_table::copy(Any ordered_table::entry::*part) const {
  const std::lock_guard guard(lock_);
  return entries_.copy(part);
}

std::vector<std::pair<Any, Any>> key_table::copy_pairs() const {
  std::vector<std::pair<Any, Any>> pairs;
  const std::lock_guard guard(lock_);
  pairs.reserve(entries_.length());
  entries_.for_each([&](const ordered_table::entry& each) { pairs.emplace_back(each.key, each.value); });
  return pairs;
}

}  // namespace ling::internal
