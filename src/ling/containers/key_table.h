// key_table: the keys of a HashMap or a HashSet and what stands under them, with the lock that guards them.
//
// Threads: every operation is atomic, although the lock is given up while keys are compared whose equality is decided
// by meta-methods. What leaves the table dies after the lock.
#pragma once

#include "ling/containers/ordered_table.h"
#include "ling/detail/container_keys.h"
#include "ling/hash_map.h"

#include <optional>
#include <vector>

namespace ling::internal {

// Whether the key was there, or was not, as wanted.
Result<Boolean> answer(const key_lookup& outcome, bool wanted);

class key_table {
 public:
  // What messages call a key, and the container.
  struct words {
    const char* key;
    const char* container;
  };
  explicit key_table(const words& names) noexcept : names_(names) {}

  // Changes with every change.
  std::uint64_t version() const noexcept;
  std::size_t length() const noexcept;
  key_lookup find(const Any& key) const;
  // The same without the value.
  key_lookup contains(const Any& key) const;
  // The same without a value of the key. Empty when a key that decides itself what it equals must be asked before.
  std::optional<key_lookup> find(const plain_key& key) const;
  std::optional<key_lookup> contains(const plain_key& key) const;
  // Puts the value under the key, after all others when it is new. Tells whether it was there, not what stood there.
  key_lookup store(const Any& key, Any value);
  key_lookup store(const plain_key& key, Any value);
  // Takes out the key and the value.
  key_lookup remove(const Any& key);
  void clear() noexcept;
  void copy_from(const key_table& other);

  // The keys or the values, in order.
  std::vector<Any> copy(Any ordered_table::entry::*part) const;
  std::vector<std::pair<Any, Any>> copy_pairs() const;

 private:
  key_lookup store_by_search(const Any& key, Any value);

  const words& names_;
  mutable spinlock lock_;
  ordered_table entries_;
};

}  // namespace ling::internal
