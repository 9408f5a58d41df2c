// Finding kept code objects and making room for new ones.
#include "python/code_cache.h"

#include <algorithm>
#include <functional>

namespace ling::cpython {

namespace {

std::size_t hash_of(const code_key& key) noexcept {
  std::size_t hash = std::hash<std::string_view>()(key.code) ^ std::hash<const void*>()(key.kind) ^
                     static_cast<std::size_t>(key.flags);
  for (const String& name : key.names) {
    hash = hash * 31 + std::hash<std::string_view>()(name.view());
  }
  return hash;
}

}  // namespace

PyObjectPtr code_cache::find(const code_key& key) {
  const auto [first, last] = by_hash_.equal_range(hash_of(key));
  for (auto each = first; each != last; ++each) {
    const kept_code& kept = *each->second;
    if (kept.kind == key.kind && kept.flags == key.flags && kept.text == key.code &&
        std::ranges::equal(kept.names, key.names)) {
      by_use_.splice(by_use_.begin(), by_use_, each->second);
      return PyObjectPtr::share(kept.code.get());
    }
  }
  return {};
}

void code_cache::add(const code_key& key, PyObjectPtr_Borrowed code) {
  if (key.code.size() > most_text) {
    return;
  }
  // Dies last: the end of a code object may run Python code that comes here.
  row gone;
  while (by_use_.size() >= most_codes || text_size_ + key.code.size() > most_text) {
    const auto oldest = std::prev(by_use_.end());
    const auto [first, last] = by_hash_.equal_range(oldest->hash);
    by_hash_.erase(std::find_if(first, last, [&](const auto& each) { return each.second == oldest; }));
    text_size_ -= oldest->text.size();
    gone.splice(gone.begin(), by_use_, oldest);
  }
  row made;
  made.push_back({
      hash_of(key),
      key.kind,
      key.flags,
      std::string(key.code),
      {key.names.begin(), key.names.end()},
      PyObjectPtr::share(code)
  });
  by_hash_.emplace(made.front().hash, made.begin());
  by_use_.splice(by_use_.begin(), made);
  text_size_ += key.code.size();
}

}  // namespace ling::cpython
