// item_row: the items of a container that is changed while others go through it. Who goes through it holds the row as
// it is; it is copied only when it is changed meanwhile.
//
// Threads: the owner's lock guards the handle; the items behind it do not change while more than one handle holds them.
#pragma once

#include "ling/any.h"

#include <atomic>
#include <span>
#include <utility>
#include <vector>

namespace ling {

class item_row {
 public:
  item_row() noexcept = default;
  explicit item_row(std::vector<Any> items) : block_(items.empty() ? nullptr : new block{1, std::move(items)}) {}
  item_row(const item_row& other) noexcept : block_(other.block_) {
    if (block_ != nullptr) {
      block_->holders.fetch_add(1, std::memory_order_relaxed);
    }
  }
  item_row(item_row&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  item_row& operator=(item_row other) noexcept {
    swap(other);
    return *this;
  }
  ~item_row() { release(block_); }

  void swap(item_row& other) noexcept { std::swap(block_, other.block_); }
  std::span<const Any> items() const& noexcept { return block_ == nullptr ? std::span<const Any>() : block_->items; }
  std::span<const Any> items() const&& = delete;
  // The items for changing them, the handle's own.
  std::vector<Any>& change() {
    if (block_ == nullptr) {
      block_ = new block{1, {}};
    } else if (block_->holders.load(std::memory_order_acquire) != 1) {
      // Nothing dies with the former row: the copy holds all its items.
      release(std::exchange(block_, new block{1, block_->items}));
    }
    return block_->items;
  }

 private:
  struct block {
    std::atomic<std::size_t> holders;
    std::vector<Any> items;
  };

  static void release(block* row) noexcept {
    if (row != nullptr && row->holders.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      delete row;
    }
  }

  block* block_ = nullptr;
};

}  // namespace ling
