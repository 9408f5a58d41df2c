// Growing and filling the member table.
#include "ling/member_table.h"

#include <algorithm>

namespace ling {

namespace {
constexpr std::size_t initial_capacity = 16;

template <class T>
void make_room(std::vector<T>& row) {
  if (row.size() == row.capacity()) {
    row.reserve(row.size() * 2 + 1);
  }
}
}  // namespace

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

// Memory first: when there is none, nothing has changed yet.
void member_table::store(class_member member) {
  row& rows = *all_rows_.back();
  std::size_t place_of_name = member.name->hash & rows.mask;
  const class_member* former = nullptr;
  while ((former = rows.slots[place_of_name].load(std::memory_order_relaxed)) != nullptr &&
         former->name != member.name) {
    place_of_name = (place_of_name + 1) & rows.mask;
  }
  auto stored = std::make_unique<const class_member>(std::move(member));
  make_room(storage_);
  if (former != nullptr) {
    rows.slots[place_of_name].store(stored.get(), std::memory_order_release);
    std::replace(ordered_.begin(), ordered_.end(), former, stored.get());
    storage_.push_back(std::move(stored));
    return;
  }
  make_room(ordered_);
  make_room(all_rows_);
  // At most half full, so that a probe for a missing name ends soon.
  const bool is_full = (ordered_.size() + 1) * 2 > rows.mask + 1;
  std::unique_ptr<row> larger = is_full ? std::make_unique<row>((rows.mask + 1) * 2) : nullptr;
  ordered_.push_back(stored.get());
  storage_.push_back(std::move(stored));
  if (larger == nullptr) {
    rows.slots[place_of_name].store(ordered_.back(), std::memory_order_release);
    return;
  }
  for (const class_member* each : ordered_) {
    place(*larger, each);
  }
  rows_.store(larger.get(), std::memory_order_release);
  all_rows_.push_back(std::move(larger));
}

}  // namespace ling
