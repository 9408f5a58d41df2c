// Decimals out of texts and texts out of decimals.
#pragma once

#include "ling/decimal.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ling::internal {

// The range that the scripting side's decimals have as well, so that every Decimal can cross.
inline constexpr std::int64_t largest_adjusted_exponent = 999'999'999'999'999'999;
inline constexpr std::int64_t least_exponent = -1'999'999'999'999'999'997;

// The exponent that the number has with one digit before the point.
inline std::int64_t adjusted_exponent(const decimal_parts& parts) noexcept {
  return parts.exponent + static_cast<std::int64_t>(parts.digits.size()) - 1;
}
inline bool is_in_range(const decimal_parts& parts) noexcept {
  return parts.kind != decimal_kind::finite ||
         (parts.exponent >= least_exponent && adjusted_exponent(parts) <= largest_adjusted_exponent);
}

enum class numeral_fault { none, not_a_numeral, out_of_range };
// Fills the parts; what they hold after a fault says nothing.
numeral_fault read_decimal(std::string_view text, decimal_parts& parts);

std::string decimal_text(const decimal_parts& parts);

}  // namespace ling::internal
