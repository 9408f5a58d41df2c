// Calculating with decimals: order, hash, exact sums and products, and how they relate to binary numbers.
#pragma once

#include "ling/decimal.h"
#include "ling/number.h"
#include "ling/ordering.h"

#include <cstdint>
#include <string>

namespace ling::internal {

decimal_parts decimal_of_integer(const object_value_integer& integer);
decimal_parts decimal_of_double(double value);
double nearest_double(const decimal_parts& parts) noexcept;

ordering_value compare_decimals(const decimal_parts& a, const decimal_parts& b) noexcept;
// Equal numbers have equal hashes whatever their scale. A number that an Integer or a Float holds exactly has the bits
// of that one, because it is equal to it.
std::uint64_t decimal_hash(const decimal_parts& parts);

// The results may have this many digits.
inline constexpr std::int64_t most_result_digits = 1'000'000;
enum class arithmetic_fault { none, undefined, signalling, too_many_digits, out_of_range };
arithmetic_fault add_decimals(const decimal_parts& a, const decimal_parts& b, decimal_parts& sum);
arithmetic_fault multiply_decimals(const decimal_parts& a, const decimal_parts& b, decimal_parts& product);

// The product of two rows of digits, without zeros in front.
std::string multiply_digits(const std::string& a, const std::string& b);

}  // namespace ling::internal
