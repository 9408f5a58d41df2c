// A row of arguments with one more in front: how a receiver, or the class being called, joins the arguments.
#pragma once

#include "ling/any.h"

#include <cstddef>
#include <new>
#include <span>
#include <vector>

namespace ling::internal {

// Borrows the handles: the slots are built without taking references and never destroyed. Valid as long as they are.
class prefixed_row {
 public:
  prefixed_row(const Any& first, std::span<const Any> rest) : length_(rest.size() + 1) {
    if (length_ > inline_capacity) {
      more_.resize(length_ * sizeof(Any));
      slots_ = more_.data();
    }
    borrow(0, first);
    for (std::size_t i = 0; i < rest.size(); ++i) {
      borrow(i + 1, rest[i]);
    }
  }
  prefixed_row(const prefixed_row&) = delete;
  prefixed_row& operator=(const prefixed_row&) = delete;

  operator std::span<const Any>() const noexcept {
    return {std::launder(reinterpret_cast<const Any*>(slots_)), length_};
  }

 private:
  static constexpr std::size_t inline_capacity = 9;

  void borrow(std::size_t index, const Any& value) noexcept {
    new (slots_ + index * sizeof(Any)) Any(Any::adopt(value.get()));
  }

  std::size_t length_;
  alignas(Any) std::byte inline_[inline_capacity * sizeof(Any)];
  std::vector<std::byte> more_;
  std::byte* slots_ = inline_;
};

}  // namespace ling::internal
