// Code objects of the texts that were compiled last, so that a text which is run again is not compiled again.
//
// Bounded by number and by the size of the texts; what was not used for the longest time goes first. Guarded by the
// interpreter lock.
#pragma once

#include "ling/string.h"
#include "python/pyobject_ptr.h"

#include <cstddef>
#include <list>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ling::cpython {

// All that a code object depends on.
struct code_key {
  code_key(const void* kind, int flags, std::string_view code, std::span<const String> names) noexcept;

  const void* const kind;  // one address for each way to make a text of the code
  const int flags;         // that the compiler takes over from the code that is running
  const std::string_view code;
  const std::span<const String> names;
  const std::size_t hash;
  const std::size_t size;  // of the code and the names
};

class code_cache {
 public:
  static constexpr std::size_t most_codes = 512;
  static constexpr std::size_t most_text = std::size_t{1} << 20;  // bytes

  // Null when it is not there.
  PyObjectPtr find(const code_key& key);
  // A text that is larger than all that is kept is not kept. Must not be there yet.
  void add(const code_key& key, PyObjectPtr_Borrowed code);

 private:
  struct kept_code {
    std::size_t hash;
    std::size_t size;
    const void* kind;
    int flags;
    std::string text;
    std::vector<String> names;
    PyObjectPtr code;
  };
  using row = std::list<kept_code>;

  row by_use_;  // the last used one first
  std::unordered_multimap<std::size_t, row::iterator> by_hash_;
  std::size_t size_ = 0;  // of all texts
};

}  // namespace ling::cpython
