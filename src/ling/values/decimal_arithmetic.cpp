// Calculating with decimals, digit by digit.
#include "ling/values/decimal_arithmetic.h"

#include "ling/detail/hash_mix.h"
#include "ling/values/decimal_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <system_error>

namespace ling::internal {

namespace {

ordering_value order_of_sign(int sign, bool is_negative) noexcept {
  return static_cast<ordering_value>(is_negative ? -sign : sign);
}

// Without zeros at the end: what numbers of equal value have in common. Only for finite ones.
void normalize(decimal_parts& parts) {
  const std::size_t last = parts.digits.find_last_not_of('0');
  if (last == std::string::npos) {
    parts.digits = "0";
    parts.exponent = 0;
    parts.is_negative = false;
    return;
  }
  parts.exponent += static_cast<std::int64_t>(parts.digits.size() - 1 - last);
  parts.digits.resize(last + 1);
}

// The first digits of both have the same place.
int compare_aligned(std::string_view a, std::string_view b) noexcept {
  const std::size_t common = std::min(a.size(), b.size());
  if (const int order = a.substr(0, common).compare(b.substr(0, common)); order != 0) {
    return order < 0 ? -1 : 1;
  }
  if (a.find_first_not_of('0', common) != std::string_view::npos) {
    return 1;
  }
  return b.find_first_not_of('0', common) != std::string_view::npos ? -1 : 0;
}

int compare_magnitudes(const decimal_parts& a, const decimal_parts& b) noexcept {
  if (a.is_zero() || b.is_zero()) {
    return static_cast<int>(b.is_zero()) - static_cast<int>(a.is_zero());
  }
  const std::int64_t difference = adjusted_exponent(a) - adjusted_exponent(b);
  return difference != 0 ? (difference < 0 ? -1 : 1) : compare_aligned(a.digits, b.digits);
}

// The bits of the integer that a normalized number is, two's complement when it is negative; empty when there is none.
std::optional<std::uint64_t> integer_bits(const decimal_parts& parts) {
  if (parts.exponent < 0 || adjusted_exponent(parts) > 19) {
    return std::nullopt;
  }
  const std::string text =
      (parts.is_negative ? "-" : "") + parts.digits + std::string(static_cast<std::size_t>(parts.exponent), '0');
  std::int64_t small = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), small).ec == std::errc()) {
    return static_cast<std::uint64_t>(small);
  }
  std::uint64_t large = 0;
  const bool fits = std::from_chars(text.data(), text.data() + text.size(), large).ec == std::errc();
  return fits && !parts.is_negative ? std::optional(large) : std::nullopt;
}

// The double that a normalized number is exactly.
std::optional<double> exact_double(const decimal_parts& parts) {
  constexpr std::size_t most_digits = 767;  // of a double
  // A fraction of halves, quarters, eighths ends with a 5; this spares most numbers the rest.
  if (parts.digits.size() > most_digits || (parts.exponent < 0 && parts.digits.back() != '5')) {
    return std::nullopt;
  }
  const double nearest = nearest_double(parts);
  const bool is_exact =
      std::isfinite(nearest) && compare_decimals(decimal_of_double(nearest), parts) == ordering_value::Equal;
  return is_exact ? std::optional(nearest) : std::nullopt;
}

std::uint64_t bits_of(double value) noexcept {
  std::uint64_t bits;
  static_assert(sizeof bits == sizeof value);
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

// A NaN among the operands decides before anything is calculated.
std::optional<arithmetic_fault> take_nan(const decimal_parts& a, const decimal_parts& b, decimal_parts& result) {
  if (a.kind == decimal_kind::signalling_nan || b.kind == decimal_kind::signalling_nan) {
    return arithmetic_fault::signalling;
  }
  if (!a.is_nan() && !b.is_nan()) {
    return std::nullopt;
  }
  result = a.is_nan() ? a : b;
  return arithmetic_fault::none;
}

// The digits with zeros behind, so that their last one has the place of `exponent`.
std::string shifted_digits(const decimal_parts& parts, std::int64_t exponent) {
  return parts.is_zero() ? "0" : parts.digits + std::string(static_cast<std::size_t>(parts.exponent - exponent), '0');
}

// The sum of two rows of digits that end at the same place, or the difference when the sign is -1: then `a` is not the
// smaller one.
std::string add_digits(std::string a, const std::string& b, int sign) {
  a.insert(0, 1 + b.size() - std::min(a.size(), b.size()), '0');
  int carry = 0;
  const std::size_t offset = a.size() - b.size();
  for (std::size_t i = a.size(); i-- > 0 && (i >= offset || carry != 0);) {
    int digit = a[i] - '0' + carry + (i >= offset ? sign * (b[i - offset] - '0') : 0);
    carry = digit < 0 ? -1 : digit / 10;
    digit -= carry * 10;
    a[i] = static_cast<char>('0' + digit);
  }
  return a.erase(0, std::min(a.find_first_not_of('0'), a.size() - 1));
}

arithmetic_fault add_infinity(const decimal_parts& a, const decimal_parts& b, decimal_parts& sum) {
  if (a.kind == b.kind && a.is_negative != b.is_negative) {
    return arithmetic_fault::undefined;
  }
  sum = a.kind == decimal_kind::infinity ? a : b;
  return arithmetic_fault::none;
}

}  // namespace

// --- binary numbers --------------------------------------------------------------------------------------------------

decimal_parts decimal_of_integer(const object_value_integer& integer) {
  decimal_parts parts;
  parts.is_negative = integer.is_signed() && integer.signed_value() < 0;
  parts.digits = std::to_string(parts.is_negative ? 0 - integer.unsigned_value() : integer.unsigned_value());
  return parts;
}

decimal_parts decimal_of_double(double value) {
  decimal_parts parts;
  if (std::isnan(value)) {
    parts.kind = decimal_kind::nan;
    parts.digits.clear();
    return parts;
  }
  // Every double is a decimal of 767 digits at most.
  char text[800];
  const auto [end, error] = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, 766);
  read_decimal(std::string_view(text, error == std::errc() ? static_cast<std::size_t>(end - text) : 0), parts);
  if (parts.kind == decimal_kind::finite && !parts.is_zero()) {
    normalize(parts);
  }
  // An integer is written with its zeros, not with an exponent; a zero has none either way.
  if (parts.exponent > 0) {
    parts.digits.append(static_cast<std::size_t>(parts.exponent), '0');
  }
  if (parts.exponent > 0 || parts.is_zero()) {
    parts.exponent = 0;
  }
  return parts;
}

double nearest_double(const decimal_parts& parts) noexcept {
  double value = 0;
  if (parts.is_nan()) {
    value = std::numeric_limits<double>::quiet_NaN();
  } else if (parts.kind == decimal_kind::infinity || (!parts.is_zero() && adjusted_exponent(parts) > 400)) {
    value = std::numeric_limits<double>::infinity();
  } else if (adjusted_exponent(parts) >= -400) {
    const std::string text = parts.digits + 'e' + std::to_string(parts.exponent);
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
      value = adjusted_exponent(parts) > 0 ? std::numeric_limits<double>::infinity() : 0;
    }
  }
  return parts.is_negative ? -value : value;
}

// --- order and hash --------------------------------------------------------------------------------------------------

ordering_value compare_decimals(const decimal_parts& a, const decimal_parts& b) noexcept {
  if (a.is_nan() || b.is_nan()) {
    return ordering_value::Incomparable;
  }
  const bool a_is_zero = a.is_zero();
  const bool b_is_zero = b.is_zero();
  if (a_is_zero && b_is_zero) {
    return ordering_value::Equal;
  }
  // Without its sign a zero is neither; it takes the other one's, so that the magnitudes decide.
  const bool a_is_negative = a_is_zero ? b.is_negative : a.is_negative;
  const bool b_is_negative = b_is_zero ? a.is_negative : b.is_negative;
  if (a_is_negative != b_is_negative) {
    return order_of_sign(1, a_is_negative);
  }
  if (a.kind != decimal_kind::finite || b.kind != decimal_kind::finite) {
    const int sign =
        static_cast<int>(a.kind != decimal_kind::finite) - static_cast<int>(b.kind != decimal_kind::finite);
    return order_of_sign(sign, a_is_negative);
  }
  return order_of_sign(compare_magnitudes(a, b), a_is_negative);
}

std::uint64_t decimal_hash(const decimal_parts& parts) {
  if (parts.kind != decimal_kind::finite) {
    return bits_of(nearest_double(parts));
  }
  decimal_parts normal = parts;
  normalize(normal);
  if (const auto bits = integer_bits(normal)) {
    return *bits;
  }
  if (const auto value = exact_double(normal)) {
    return bits_of(*value);
  }
  const std::uint64_t of_digits = hash_bytes(normal.digits, normal.is_negative ? 1 : 0);
  return hash_combine(of_digits, static_cast<std::uint64_t>(normal.exponent));
}

// --- sums and products -----------------------------------------------------------------------------------------------

arithmetic_fault add_decimals(const decimal_parts& a, const decimal_parts& b, decimal_parts& sum) {
  if (const auto decided = take_nan(a, b, sum)) {
    return *decided;
  }
  if (a.kind == decimal_kind::infinity || b.kind == decimal_kind::infinity) {
    return add_infinity(a, b, sum);
  }
  sum.exponent = std::min(a.exponent, b.exponent);
  for (const decimal_parts* each : {&a, &b}) {
    if (!each->is_zero() && adjusted_exponent(*each) - sum.exponent >= most_result_digits) {
      return arithmetic_fault::too_many_digits;
    }
  }
  const bool same_sign = a.is_negative == b.is_negative;
  const bool swapped = compare_magnitudes(a, b) < 0;
  const decimal_parts& larger = swapped ? b : a;
  const decimal_parts& smaller = swapped ? a : b;
  sum.digits =
      add_digits(shifted_digits(larger, sum.exponent), shifted_digits(smaller, sum.exponent), same_sign ? 1 : -1);
  sum.is_negative = larger.is_negative && (same_sign || !sum.is_zero());
  return is_in_range(sum) ? arithmetic_fault::none : arithmetic_fault::out_of_range;
}

arithmetic_fault multiply_decimals(const decimal_parts& a, const decimal_parts& b, decimal_parts& product) {
  if (const auto decided = take_nan(a, b, product)) {
    return *decided;
  }
  product.is_negative = a.is_negative != b.is_negative;
  if (a.kind == decimal_kind::infinity || b.kind == decimal_kind::infinity) {
    product.kind = decimal_kind::infinity;
    product.digits.clear();
    return a.is_zero() || b.is_zero() ? arithmetic_fault::undefined : arithmetic_fault::none;
  }
  // Of as many digits as both have together, or one less.
  if (!a.is_zero() && !b.is_zero() &&
      static_cast<std::int64_t>(a.digits.size() + b.digits.size()) > most_result_digits + 1) {
    return arithmetic_fault::too_many_digits;
  }
  product.digits = a.is_zero() || b.is_zero() ? "0" : multiply_digits(a.digits, b.digits);
  if (static_cast<std::int64_t>(product.digits.size()) > most_result_digits) {
    return arithmetic_fault::too_many_digits;
  }
  product.exponent = a.exponent + b.exponent;
  return is_in_range(product) ? arithmetic_fault::none : arithmetic_fault::out_of_range;
}

}  // namespace ling::internal
