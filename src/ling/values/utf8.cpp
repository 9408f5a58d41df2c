// UTF-8 validation, repair and counting.
#include "ling/values/utf8.h"

#include <algorithm>
#include <cstring>

namespace ling::internal::utf8 {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

// Well-formed sequences by their first byte. Only the second byte has a range of its own: it keeps out overlong forms,
// surrogates and what lies above U+10FFFF.
struct lead_row {
  unsigned char first, last;
  unsigned char size;
  unsigned char second_low, second_high;
};
constexpr lead_row lead_rows[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF},
    {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F},
    {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF},
    {0xF4, 0xF4, 4, 0x80, 0x8F},
};

struct sequence {
  std::size_t size;  // bytes to step over
  bool valid;
};

// The sequence at the start of `bytes`, which begin with a byte above the ASCII range.
sequence read_sequence(std::string_view bytes) noexcept {
  const auto lead = static_cast<unsigned char>(bytes[0]);
  for (const lead_row& row : lead_rows) {
    if (lead < row.first || lead > row.last) {
      continue;
    }
    const auto second = bytes.size() > 1 ? static_cast<unsigned char>(bytes[1]) : 0;
    if (second < row.second_low || second > row.second_high) {
      return {1, false};
    }
    std::size_t size = 2;
    while (size < row.size && size < bytes.size() && is_continuation(bytes[size])) {
      ++size;
    }
    return {size, size == row.size};
  }
  return {1, false};
}

// How many bytes at the start are ASCII, eight at a time.
std::size_t ascii_prefix(std::string_view bytes) noexcept {
  std::size_t at = 0;
  for (; at + sizeof(std::uint64_t) <= bytes.size(); at += sizeof(std::uint64_t)) {
    std::uint64_t word;
    std::memcpy(&word, bytes.data() + at, sizeof word);
    if ((word & 0x8080808080808080ull) != 0) {
      break;
    }
  }
  while (at < bytes.size() && static_cast<unsigned char>(bytes[at]) < 0x80) {
    ++at;
  }
  return at;
}

// Calls `ascii(run)` and `other(sequence bytes, valid)` along the bytes.
template <class Ascii, class Other>
void walk(std::string_view bytes, Ascii ascii, Other other) noexcept {
  while (!bytes.empty()) {
    if (const std::size_t run = ascii_prefix(bytes)) {
      ascii(bytes.substr(0, run));
      bytes.remove_prefix(run);
    } else {
      const sequence next = read_sequence(bytes);
      other(bytes.substr(0, next.size), next.valid);
      bytes.remove_prefix(next.size);
    }
  }
}

}  // namespace

measure measure_bytes(std::string_view bytes) noexcept {
  measure total;
  walk(
      bytes,
      [&](std::string_view run) {
        total.size += run.size();
        total.length += run.size();
      },
      [&](std::string_view part, bool valid) {
        total.size += valid ? part.size() : replacement.size();
        total.length += 1;
        total.valid = total.valid && valid;
      });
  return total;
}

void repair(std::string_view bytes, char* out) noexcept {
  const auto write = [&out](std::string_view text) { out = std::copy(text.begin(), text.end(), out); };
  walk(bytes, write, [&](std::string_view part, bool valid) { write(valid ? part : replacement); });
}

std::size_t count(std::string_view text) noexcept {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return !is_continuation(byte); }));
}

std::size_t offset_of(std::string_view text, std::size_t position) noexcept {
  std::size_t offset = 0;
  for (; position > 0 && offset < text.size(); --position) {
    do {
      ++offset;
    } while (offset < text.size() && is_continuation(text[offset]));
  }
  return offset;
}

}  // namespace ling::internal::utf8
