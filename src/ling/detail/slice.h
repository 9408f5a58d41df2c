// Positions in a sequence as scripts give them: negative ones count from the end.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace ling::internal {

// The position of an item, empty when there is none at that index.
constexpr std::optional<std::size_t> resolve_index(std::int64_t index, std::size_t length) noexcept {
  const std::int64_t position = index < 0 ? index + static_cast<std::int64_t>(length) : index;
  if (position < 0 || position >= static_cast<std::int64_t>(length)) {
    return std::nullopt;
  }
  return static_cast<std::size_t>(position);
}

struct slice_range {
  std::size_t start;
  std::size_t stop;  // never before `start`
};

// The items from `start` up to `stop`, clamped to what there is.
constexpr slice_range clamp_slice(std::int64_t start, std::int64_t stop, std::size_t length) noexcept {
  const auto size = static_cast<std::int64_t>(length);
  const auto clamp = [size](std::int64_t position) {
    return std::clamp<std::int64_t>(position < 0 ? position + size : position, 0, size);
  };
  const std::int64_t first = clamp(start);
  return {static_cast<std::size_t>(first), static_cast<std::size_t>(std::max(first, clamp(stop)))};
}

}  // namespace ling::internal
