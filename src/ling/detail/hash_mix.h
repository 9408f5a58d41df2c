// The mixing behind all hashes: every bit of the input reaches every bit of the hash, so that small integers and
// neighbouring addresses spread over a table whatever its size.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace ling::internal {

constexpr std::uint64_t hash_mix(std::uint64_t bits) noexcept {
  bits ^= bits >> 32;
  bits *= 0xd6e8feb86659fd93ull;
  bits ^= bits >> 32;
  bits *= 0xd6e8feb86659fd93ull;
  bits ^= bits >> 32;
  return bits;
}

// Order matters: combining a with b differs from combining b with a.
constexpr std::uint64_t hash_combine(std::uint64_t seed, std::uint64_t next) noexcept {
  return hash_mix((seed ^ next) + 0x9e3779b97f4a7c15ull + (seed << 6));
}

inline std::uint64_t hash_bytes(std::string_view bytes, std::uint64_t seed) noexcept {
  std::uint64_t hash = seed ^ bytes.size();
  const char* at = bytes.data();
  std::size_t left = bytes.size();
  for (; left >= sizeof hash; at += sizeof hash, left -= sizeof hash) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    hash = hash_combine(hash, word);
  }
  if (left != 0) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, left);
    hash = hash_combine(hash, word);
  }
  return hash;
}

}  // namespace ling::internal
