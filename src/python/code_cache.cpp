// Finding kept code objects and making room for new ones.
#include "python/code_cache.h"

#include <algorithm>
#include <functional>

namespace ling::cpython {

namespace {

std::size_t hash_of(const void* kind, int flags, std::string_view code, std::span<const String> names) noexcept {
  std::size_t hash =
      std::hash<std::string_view>()(code) ^ std::hash<const void*>()(kind) ^ static_cast<std::size_t>(flags);
  for (const String& name : names) {
    hash = hash * 31 + std::hash<std::string_view>()(name.view());
  }
  return hash;
}

// Each name stands in the text three times, and is kept besides.
std::size_t size_of(std::string_view code, std::span<const String> names) noexcept {
  constexpr std::size_t lines_around_name = 64;
  std::size_t size = code.size();
  for (const String& name : names) {
    size += lines_around_name + 4 * name.size();
  }
  return size;
}

}  // namespace

code_key::code_key(const void* of_kind, int inherited, std::string_view text, std::span<const String> given) noexcept
    : kind(of_kind),
      flags(inherited),
      code(text),
      names(given),
      hash(hash_of(of_kind, inherited, text, given)),
      size(size_of(text, given)) {}

PyObjectPtr code_cache::find(const code_key& key) {
  const auto [first, last] = by_hash_.equal_range(key.hash);
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
  if (key.size > most_text) {
    return;
  }
  // Dies last: the end of a code object may run Python code that comes here.
  row gone;
  while (by_use_.size() >= most_codes || size_ + key.size > most_text) {
    const auto oldest = std::prev(by_use_.end());
    const auto [first, last] = by_hash_.equal_range(oldest->hash);
    by_hash_.erase(std::find_if(first, last, [&](const auto& each) { return each.second == oldest; }));
    size_ -= oldest->size;
    gone.splice(gone.begin(), by_use_, oldest);
  }
  row made;
  made.push_back({
      key.hash,
      key.size,
      key.kind,
      key.flags,
      std::string(key.code),
      {key.names.begin(), key.names.end()},
      PyObjectPtr::share(code)
  });
  by_hash_.emplace(made.front().hash, made.begin());
  by_use_.splice(by_use_.begin(), made);
  size_ += key.size;
}

}  // namespace ling::cpython
