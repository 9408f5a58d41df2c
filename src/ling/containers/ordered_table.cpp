// The ordered hash table.
#include "ling/containers/ordered_table.h"

#include <algorithm>

namespace ling::internal {

namespace {

constexpr std::size_t fewest_slots = 8;
// Below this many entries gaps cost less than closing them.
constexpr std::size_t tolerated_entries = 32;

constexpr std::size_t capacity_of(std::size_t slots) noexcept { return slots - slots / 3; }

}  // namespace

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

}  // namespace ling::internal
