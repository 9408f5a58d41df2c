// under_way: what the calls of one kind that run on this thread are about, so that one that comes back is known.
#pragma once

#include <utility>

namespace ling::internal {

// A scope, nested as the calls are. Each kind of call has a type of subject of its own.
template <class Subject>
class [[nodiscard]] under_way {
 public:
  explicit under_way(Subject subject) noexcept : subject_(subject), outer_(std::exchange(innermost_, this)) {}
  ~under_way() { innermost_ = outer_; }
  under_way(const under_way&) = delete;
  under_way& operator=(const under_way&) = delete;

  // Whether the test holds for one of them, innermost first.
  template <class Test>
  static bool any(const Test& test) noexcept {
    const under_way* each = innermost_;
    while (each != nullptr && !test(each->subject_)) {
      each = each->outer_;
    }
    return each != nullptr;
  }
  static bool any() noexcept { return innermost_ != nullptr; }
  static bool has(const Subject& subject) noexcept {
    return any([&](const Subject& each) { return each == subject; });
  }

 private:
  const Subject subject_;
  const under_way* const outer_;
  static inline constinit thread_local const under_way* innermost_ = nullptr;
};

}  // namespace ling::internal
