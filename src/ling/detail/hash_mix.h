// The mixing behind all hashes: every bit of the input reaches every bit of the hash, so that small integers and
// neighbouring addresses spread over a table whatever its size.
#pragma once

#include <cstddef>
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

// Fewer bytes than a word, as a word: a copy of so few bytes, whose number only the run tells, would be a call.
inline std::uint64_t partial_word(const char* bytes, std::size_t size) noexcept {
  if (size >= sizeof(std::uint32_t)) {
    std::uint32_t first;
    std::uint32_t last;  // overlaps the first
    std::memcpy(&first, bytes, sizeof first);
    std::memcpy(&last, bytes + size - sizeof last, sizeof last);
    return first | std::uint64_t{last} << 8 * (size - sizeof last);
  }
  const auto byte = [&](std::size_t at) { return std::uint64_t{static_cast<unsigned char>(bytes[at])} << 8 * at; };
  return byte(0) | byte(size / 2) | byte(size - 1);
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
    hash = hash_combine(hash, partial_word(at, left));
  }
  return hash;
}

// The hash of a text, whether or not it is a value; never 0.
inline std::uint64_t hash_text(std::string_view utf8) noexcept {
  const std::uint64_t hash = hash_bytes(utf8, 0x7465787400000000ull);
  return hash == 0 ? 1 : hash;
}

}  // namespace ling::internal
