// Growing and filling the member table.
#include "ling/member_table.h"

namespace ling {

namespace {
constexpr std::size_t initial_capacity = 16;
}

member_table::member_table() {
  all_rows_.push_back(std::make_unique<row>(initial_capacity));
  rows_.store(all_rows_.back().get(), std::memory_order_release);
}

member_table::~member_table() = default;

void member_table::place(row& into, const class_member* member) noexcept {
  std::size_t i = member->name->hash & into.mask;
  while (into.slots[i].load(std::memory_order_relaxed) != nullptr) {
    i = (i + 1) & into.mask;
  }
  into.slots[i].store(member, std::memory_order_release);
}

void member_table::store(class_member member) {
  const class_member* stored = storage_.emplace_back(std::make_unique<const class_member>(std::move(member))).get();
  row* rows = all_rows_.back().get();
  for (std::size_t i = stored->name->hash & rows->mask;; i = (i + 1) & rows->mask) {
    const class_member* present = rows->slots[i].load(std::memory_order_relaxed);
    if (present == nullptr) {
      break;
    }
    if (present->name == stored->name) {
      rows->slots[i].store(stored, std::memory_order_release);
      for (const class_member*& each : ordered_) {
        if (each == present) {
          each = stored;
        }
      }
      return;
    }
  }
  ordered_.push_back(stored);
  // At most half full, so that a probe for a missing name ends soon.
  if (ordered_.size() * 2 <= rows->mask + 1) {
    place(*rows, stored);
    return;
  }
  auto larger = std::make_unique<row>((rows->mask + 1) * 2);
  for (const class_member* each : ordered_) {
    place(*larger, each);
  }
  rows_.store(larger.get(), std::memory_order_release);
  all_rows_.push_back(std::move(larger));
}

}  // namespace ling
