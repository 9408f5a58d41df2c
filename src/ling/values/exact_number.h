// Exact relations between integers and floating point numbers. Doubles carry 53 bits and integers 64, so a conversion
// in either direction would make different numbers equal.
#pragma once

#include "ling/number.h"
#include "ling/ordering.h"

#include <cmath>
#include <cstdint>
#include <optional>

namespace ling::internal {

inline constexpr double two_to_63 = 9223372036854775808.0;
inline constexpr double two_to_64 = 18446744073709551616.0;

// The bits of the integer that equals `value`, two's complement when it is negative; empty when there is none.
inline std::optional<std::uint64_t> exact_integer_bits(double value) noexcept {
  if (!(value >= -two_to_63 && value < two_to_64) || std::trunc(value) != value) {
    return std::nullopt;
  }
  return value < 0 ? static_cast<std::uint64_t>(static_cast<std::int64_t>(value)) : static_cast<std::uint64_t>(value);
}

ordering_value compare_integers(const object_value_integer& a, const object_value_integer& b) noexcept;
ordering_value compare_floats(double a, double b) noexcept;
ordering_value compare_integer_with_float(const object_value_integer& a, double b) noexcept;

}  // namespace ling::internal
