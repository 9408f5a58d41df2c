// Functions of the interpreter library that the limited API does not declare, although all its versions have them.
//
// Defined in interpreter_function_posix.cpp and interpreter_function_windows.cpp.
#pragma once

#include <atomic>

namespace ling::cpython {

// The address of a symbol of the interpreter library; null when it has none of that name.
void* interpreter_symbol(const char* name) noexcept;

// A constant at namespace scope: the function of that name, or of the name that other versions have for it, looked up
// once. Threads: any.
template <class F>
class interpreter_function {
 public:
  constexpr interpreter_function(const char* name, const char* other_name = nullptr) noexcept
      : names_{name, other_name} {}

  // Null when the interpreter has no such function.
  F* get() const noexcept {
    F* const known = found_.load(std::memory_order_relaxed);
    return known != nullptr ? known : look_up();
  }

 private:
  F* look_up() const noexcept {
    F* found = nullptr;
    for (const char* name : names_) {
      if (found == nullptr && name != nullptr) {
        found = reinterpret_cast<F*>(interpreter_symbol(name));
      }
    }
    found_.store(found, std::memory_order_relaxed);
    return found;
  }

  const char* names_[2];
  mutable std::atomic<F*> found_{nullptr};
};

}  // namespace ling::cpython
