// member_table: from an interned name to what a class has under it, in one probe and without a lock.
//
// Readers never wait; writers are serialised by the caller. Entries are replaced, never removed, and what was replaced
// is kept for readers that may still look at it: classes change a handful of times in their life.
#pragma once

#include "ling/any.h"
#include "ling/name.h"
#include "ling/string.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

namespace ling {

class object_value_property;
class object_value_callable;

// A field as a class declares it.
struct class_field {
  const name_entry* name;
  Any default_value;
  String doc;
};

// What a class has under one name; a name may be a field, a property and a method at once. Immutable once published.
struct class_member {
  const name_entry* name = nullptr;
  const class_field* field = nullptr;
  std::size_t field_index = 0;
  Any property;  // a Property, or empty
  Any method;    // an I_Callable_Generic, or empty
};

class LING_API member_table {
 public:
  member_table();
  ~member_table();
  member_table(const member_table&) = delete;
  member_table& operator=(const member_table&) = delete;

  // The member of that name, null when there is none. Any thread, at any time.
  const class_member* find(const name_entry& name) const noexcept {
    const row* rows = rows_.load(std::memory_order_acquire);
    for (std::size_t i = name.hash & rows->mask;; i = (i + 1) & rows->mask) {
      const class_member* member = rows->slots[i].load(std::memory_order_acquire);
      if (member == nullptr || member->name == &name) {
        return member;
      }
    }
  }
  // Adds or replaces. The caller serialises writers.
  void store(class_member member);
  // All members in the order their names were first stored. The caller keeps writers away.
  const std::vector<const class_member*>& ordered() const noexcept { return ordered_; }

 private:
  struct row {
    explicit row(std::size_t capacity)
        : mask(capacity - 1), slots(std::make_unique<std::atomic<const class_member*>[]>(capacity)) {}
    std::size_t mask;
    std::unique_ptr<std::atomic<const class_member*>[]> slots;
  };
  void place(row& into, const class_member* member) noexcept;

  std::atomic<row*> rows_;
  std::vector<const class_member*> ordered_;
  std::vector<std::unique_ptr<row>> all_rows_;                // the current one last
  std::vector<std::unique_ptr<const class_member>> storage_;  // current and replaced members
};

}  // namespace ling
