// UTF-8: repairing foreign bytes, and positions in text that is known to be valid.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ling::internal::utf8 {

constexpr bool is_continuation(char byte) noexcept { return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u; }

// What a text made of foreign bytes measures. Every maximal part of an ill-formed sequence counts as one U+FFFD.
struct measure {
  std::size_t size = 0;    // bytes, after repair
  std::size_t length = 0;  // code points
  bool valid = true;       // nothing needs repair
};
measure measure_bytes(std::string_view bytes) noexcept;

// Writes the repaired text, `measure::size` bytes of it.
void repair(std::string_view bytes, char* out) noexcept;

// The following expect valid text.
std::size_t count(std::string_view text) noexcept;
// The byte at which code point `position` begins; the size of the text when it has no such code point.
std::size_t offset_of(std::string_view text, std::size_t position) noexcept;

}  // namespace ling::internal::utf8
