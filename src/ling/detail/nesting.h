// nesting: bounds recursion over values that hold values.
//
// One counter per thread for all walks, because a walk re-enters through meta-methods (`__compare__` of an instance may
// compare its fields, `__display__` may display them) and the levels in between do not know of each other.
#pragma once

namespace ling::internal {

class [[nodiscard]] nesting {
 public:
  // Levels that fit the smallest stack a host gives its threads, with a meta-method's frames on every level.
  static constexpr int limit = 200;

  nesting() noexcept { ++depth_; }
  ~nesting() { --depth_; }
  nesting(const nesting&) = delete;
  nesting& operator=(const nesting&) = delete;

  bool too_deep() const noexcept { return depth_ > limit; }

 private:
  static inline constinit thread_local int depth_ = 0;
};

}  // namespace ling::internal
