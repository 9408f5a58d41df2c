// immortal: storage of an object that exists before any static initialiser runs and is never destroyed, because other
// libraries' initialisers and exit handlers still use it.
#pragma once

#include <utility>

namespace ling::internal {

template <class T>
union immortal {
  T object;

  template <class... Arguments>
  constexpr explicit immortal(Arguments&&... arguments) noexcept : object(std::forward<Arguments>(arguments)...) {}
  ~immortal() {}
};

}  // namespace ling::internal
