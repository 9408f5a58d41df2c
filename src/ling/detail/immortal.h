// immortal: storage of an object that is never destroyed, because exit handlers and other libraries still use it. As a
// constinit variable it exists before any static initialiser runs; otherwise it is a static of the function that lends
// it.
#pragma once

#include <utility>

namespace ling::internal {

template <class T>
union immortal {
  T object;

  template <class... Arguments>
  constexpr explicit immortal(Arguments&&... arguments) : object(std::forward<Arguments>(arguments)...) {}
  ~immortal() {}
};

}  // namespace ling::internal
