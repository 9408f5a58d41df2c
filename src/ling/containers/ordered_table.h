// ordered_table: the hash table behind HashMap and HashSet, in order of insertion; key_search, which finds keys in it.
//
// Entries stand in one row in the order of insertion; an index of 32-bit positions, open addressing, leads from a hash
// to its entries. Removing leaves a gap, found in constant time; gaps are closed when there are many, at a cost that
// the removals before it have paid for.
//
// Threads: the owner locks. Nothing a table does runs foreign code: entries leave it by being moved out, for the owner
// to destroy after unlocking.
#pragma once

#include "ling/algorithms/equality.h"
#include "ling/none.h"
#include "ling/spinlock.h"
#include "ling/union.h"

#include <cstdint>
#include <mutex>
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
  // Changes whenever positions may have.
  std::uint64_t version() const noexcept { return version_; }
  entry& at(std::uint32_t position) noexcept { return entries_[position]; }
  const entry& at(std::uint32_t position) const noexcept { return entries_[position]; }

  // A walk over the entries of one hash: `slot` starts with `first_slot`; `nowhere` ends it. Valid for one version.
  std::size_t first_slot(std::uint64_t hash) const noexcept;
  std::uint32_t next_candidate(std::uint64_t hash, std::size_t& slot) const noexcept;

  // Adds an entry whose key is not there yet; false when the table is full, which leaves it as it was.
  bool append(std::uint64_t hash, const Any& key, Any&& value);
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

// Finds one key, giving up the lock while it compares keys whose equality is decided by meta-methods. Stands before the
// lock in the owner's function, because what it keeps alive must die after unlocking.
class key_search {
 public:
  // `role` is what the owner calls its keys in messages; a literal.
  key_search(const Any& key, const char* role) noexcept : key_(&key), role_(role) {}
  key_search(const key_search&) = delete;
  key_search& operator=(const key_search&) = delete;

  // The first step, before locking: hashes the key. An Error when it is not immutable or its `__hash__` gives one.
  Result<None> prepare();
  const Any& key() const noexcept { return *key_; }
  std::uint64_t hash() const noexcept { return hash_; }

  // The position of the key, or `nowhere`. `held` is locked before and after, not always in between. An Error when keys
  // cannot be compared. No key in the table is compared twice, so a meta-method that changes the table cannot keep the
  // search going for ever.
  Result<None> find(std::unique_lock<spinlock>& held, const ordered_table& table, std::uint32_t& position);

 private:
  struct comparison {
    Any candidate;
    equality outcome;
  };
  void set_hash(std::uint64_t hash) noexcept { hash_ = hash == 0 ? 1 : hash; }  // 0 marks gaps
  equality recall(const Any& candidate) const noexcept;

  const Any* key_;
  Any forced_;  // what a lazy key turned out to be
  const char* role_;
  std::uint64_t hash_ = 0;
  std::vector<comparison> done_;
};

// Whether a value may be a key: an immutable value that holds only immutable ones.
bool is_key(const Any& value);

}  // namespace ling::internal
