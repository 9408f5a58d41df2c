// ordered_table: the hash table behind HashMap and HashSet, in order of insertion.
//
// Entries stand in one row in the order of insertion; an index of 32-bit positions, open addressing, leads from a hash
// to its entries. Removing leaves a gap, found in constant time; gaps are closed when there are many, at a cost that
// the removals before it have paid for.
//
// Threads: the owner locks. Nothing a table does runs foreign code: entries leave it by being moved out, for the owner
// to destroy after unlocking.
#pragma once

#include "ling/any.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ling::internal {

class ordered_table {
 public:
  struct entry {
    std::uint64_t hash = 0;  // 0: a gap
    Any key;
    Any value;
  };
  using row = std::vector<entry>;

  static constexpr std::uint32_t nowhere = UINT32_MAX;
  // More would not fit the 32-bit positions of the index.
  static constexpr std::size_t most_entries = std::size_t{1} << 31;

  std::size_t length() const noexcept { return length_; }
  // Changes with every entry and every value.
  std::uint64_t version() const noexcept { return version_; }
  entry& at(std::uint32_t position) noexcept { return entries_[position]; }
  const entry& at(std::uint32_t position) const noexcept { return entries_[position]; }

  // A walk over the entries of one hash: `slot` starts with `first_slot`; `nowhere` ends it. Valid for one version.
  std::size_t first_slot(std::uint64_t hash) const noexcept { return index_.empty() ? 0 : hash & (index_.size() - 1); }
  std::uint32_t next_candidate(std::uint64_t hash, std::size_t& slot) const noexcept {
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

  // Adds an entry whose key is not there yet; false when the table is full, which leaves it as it was.
  bool append(std::uint64_t hash, const Any& key, Any&& value);
  // Puts a value into an entry; the parameter is the former one afterwards.
  void replace(std::uint32_t position, Any& value) noexcept {
    ++version_;
    entries_[position].value.swap(value);
  }
  // Takes an entry out.
  entry extract(std::uint32_t position) noexcept;
  // Takes all entries out.
  row extract_all() noexcept;

  // The keys or the values of all entries, in order.
  std::vector<Any> copy(Any entry::*part) const;
  template <class Visit>
  void for_each(Visit visit) const {
    for (const entry& each : entries_) {
      if (each.hash != 0) {
        visit(each);
      }
    }
  }

 private:
  // Closes the gaps and sizes the index for `capacity` entries.
  void rebuild(std::size_t capacity);
  void link(std::uint32_t position) noexcept;

  row entries_;
  std::vector<std::uint32_t> index_;  // a power of two of positions, at least a third of them `nowhere`
  std::size_t length_ = 0;
  std::uint64_t version_ = 0;
};

}  // namespace ling::internal
