// The ordered hash table and the search for a key.
#include "ling/containers/ordered_table.h"

#include "ling/containers/container_errors.h"
#include "ling/interfaces.h"
#include "ling/reflection.h"
#include "ling/tuple.h"

#include <algorithm>

namespace ling::internal {

namespace {

constexpr std::size_t fewest_slots = 8;
// Below this many entries gaps cost less than closing them.
constexpr std::size_t tolerated_entries = 32;

constexpr std::size_t capacity_of(std::size_t slots) noexcept { return slots - slots / 3; }

}  // namespace

std::size_t ordered_table::first_slot(std::uint64_t hash) const noexcept {
  return index_.empty() ? 0 : hash & (index_.size() - 1);
}

std::uint32_t ordered_table::next_candidate(std::uint64_t hash, std::size_t& slot) const noexcept {
  if (index_.empty()) {
    return nowhere;
  }
  for (;;) {
    const std::uint32_t position = index_[slot];
    slot = (slot + 1) & (index_.size() - 1);
    if (position == nowhere || entries_[position].hash == hash) {
      return position;
    }
  }
}

bool ordered_table::append(std::uint64_t hash, const Any& key, Any&& value) {
  if (entries_.size() == std::min(capacity_of(index_.size()), most_entries)) {
    if (length_ == most_entries) {
      return false;
    }
    rebuild(std::min(length_ + length_ / 2 + 1, most_entries));
  }
  entries_.push_back({hash, key, std::move(value)});
  link(static_cast<std::uint32_t>(entries_.size() - 1));
  ++length_;
  ++version_;
  return true;
}

ordered_table::entry ordered_table::extract(std::uint32_t position) noexcept {
  entry taken = std::move(entries_[position]);
  entries_[position].hash = 0;
  --length_;
  ++version_;
  if (entries_.size() > tolerated_entries && length_ < entries_.size() / 4) {
    rebuild(length_ + length_ / 2 + 1);  // smaller than before, so it allocates nothing
  }
  return taken;
}

ordered_table::row ordered_table::extract_all() noexcept {
  row taken = std::move(entries_);
  entries_ = {};
  index_ = {};
  length_ = 0;
  ++version_;
  return taken;
}

std::vector<Any> ordered_table::copy(Any entry::*part) const {
  std::vector<Any> copies;
  copies.reserve(length_);
  for_each([&](const entry& each) { copies.push_back(each.*part); });
  return copies;
}

void ordered_table::rebuild(std::size_t capacity) {
  std::size_t slots = fewest_slots;
  while (capacity_of(slots) < capacity) {
    slots *= 2;
  }
  // Memory first: when there is none, nothing has changed yet.
  entries_.reserve(std::min(capacity_of(slots), most_entries));
  index_.reserve(slots);
  const auto is_gap = [](const entry& each) { return each.hash == 0; };
  entries_.erase(std::remove_if(entries_.begin(), entries_.end(), is_gap), entries_.end());
  index_.assign(slots, nowhere);
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    link(static_cast<std::uint32_t>(i));
  }
  ++version_;
}

void ordered_table::link(std::uint32_t position) noexcept {
  std::size_t slot = first_slot(entries_[position].hash);
  while (index_[slot] != nowhere) {
    slot = (slot + 1) & (index_.size() - 1);
  }
  index_[slot] = position;
}

// --- key_search ------------------------------------------------------------------------------------------------------

bool is_key(const Any& value) {
  if (is_plain(value.type())) [[likely]] {
    return true;
  }
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

Result<None> key_search::prepare() {
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
    return error_not_immutable(role_, *key_);
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

Result<None> key_search::find(std::unique_lock<spinlock>& held, const ordered_table& table, std::uint32_t& position) {
  std::size_t slot = table.first_slot(hash_);
  while ((position = table.next_candidate(hash_, slot)) != ordered_table::nowhere) {
    const Any& candidate = table.at(position).key;
    equality outcome = compare_plain(candidate, *key_);
    if (outcome == equality::unknown) {
      outcome = recall(candidate);
    }
    if (outcome == equality::same) {
      return None();
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
      return None();
    }
  }
  return None();
}

}  // namespace ling::internal
