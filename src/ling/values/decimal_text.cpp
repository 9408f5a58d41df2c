// Decimals out of texts and texts out of decimals. Digits are stored as they are written, so that both take time in
// proportion to the text, also for those with a hundred thousand digits.
#include "ling/values/decimal_text.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace ling::internal {

namespace {

bool is_digit(char character) noexcept { return character >= '0' && character <= '9'; }

// Takes a word from the front, in letters of either case.
bool take_word(std::string_view& text, std::string_view lower_case) noexcept {
  const auto same = [](char given, char wanted) { return (given | 0x20) == wanted; };
  if (text.size() < lower_case.size() || !std::equal(lower_case.begin(), lower_case.end(), text.begin(),
                                                     [&](char wanted, char given) { return same(given, wanted); })) {
    return false;
  }
  text.remove_prefix(lower_case.size());
  return true;
}

std::string_view take_digits(std::string_view& text) noexcept {
  const std::size_t count =
      static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), &is_digit) - text.begin());
  const std::string_view taken = text.substr(0, count);
  text.remove_prefix(count);
  return taken;
}

std::string_view without_leading_zeros(std::string_view digits) noexcept {
  return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
}

numeral_fault read_nan(std::string_view text, decimal_kind kind, decimal_parts& parts) {
  parts.kind = kind;
  parts.digits = without_leading_zeros(take_digits(text));
  return text.empty() ? numeral_fault::none : numeral_fault::not_a_numeral;
}

// Behind the "e".
numeral_fault read_exponent(std::string_view text, std::int64_t& exponent) noexcept {
  if (text.starts_with('+') && text.size() > 1 && is_digit(text[1])) {
    text.remove_prefix(1);  // from_chars does not know it
  }
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), exponent);
  if (error == std::errc::invalid_argument || end != text.data() + text.size()) {
    return numeral_fault::not_a_numeral;
  }
  // Far from where the sum with a number of digits could overflow.
  const bool too_far = error != std::errc() || exponent > INT64_MAX / 2 || exponent < INT64_MIN / 2;
  return too_far ? numeral_fault::out_of_range : numeral_fault::none;
}

numeral_fault read_finite(std::string_view text, decimal_parts& parts) {
  const std::string_view whole = take_digits(text);
  std::string_view fraction;
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    fraction = take_digits(text);
  }
  if (whole.empty() && fraction.empty()) {
    return numeral_fault::not_a_numeral;
  }
  std::int64_t exponent = 0;
  if (take_word(text, "e")) {
    if (const numeral_fault fault = read_exponent(text, exponent); fault != numeral_fault::none) {
      return fault;
    }
  } else if (!text.empty()) {
    return numeral_fault::not_a_numeral;
  }
  parts.digits = without_leading_zeros(whole);
  parts.digits += parts.digits.empty() ? without_leading_zeros(fraction) : fraction;
  if (parts.digits.empty()) {
    parts.digits = "0";
  }
  parts.exponent = exponent - static_cast<std::int64_t>(fraction.size());
  return is_in_range(parts) ? numeral_fault::none : numeral_fault::out_of_range;
}

std::string nan_or_infinity_text(const decimal_parts& parts) {
  if (parts.kind == decimal_kind::infinity) {
    return "Infinity";
  }
  return (parts.kind == decimal_kind::nan ? "NaN" : "sNaN") + parts.digits;
}

void write_with_point(std::string& text, const decimal_parts& parts) {
  const std::int64_t before_point = static_cast<std::int64_t>(parts.digits.size()) + parts.exponent;
  if (before_point > 0) {
    text.append(parts.digits, 0, static_cast<std::size_t>(before_point));
  } else {
    (text += "0.").append(static_cast<std::size_t>(-before_point), '0');
  }
  if (before_point > 0 && parts.exponent < 0) {
    text += '.';
  }
  text.append(parts.digits, static_cast<std::size_t>(std::max<std::int64_t>(before_point, 0)));
}

void write_scientific(std::string& text, const decimal_parts& parts, std::int64_t adjusted) {
  text += parts.digits.front();
  if (parts.digits.size() > 1) {
    (text += '.').append(parts.digits, 1);
  }
  text += adjusted < 0 ? "E" : "E+";
  text += std::to_string(adjusted);
}

}  // namespace

numeral_fault read_decimal(std::string_view text, decimal_parts& parts) {
  parts = decimal_parts{};
  parts.is_negative = text.starts_with('-');
  if (parts.is_negative || text.starts_with('+')) {
    text.remove_prefix(1);
  }
  if (take_word(text, "snan")) {
    return read_nan(text, decimal_kind::signalling_nan, parts);
  }
  if (take_word(text, "nan")) {
    return read_nan(text, decimal_kind::nan, parts);
  }
  if (take_word(text, "inf")) {
    parts.kind = decimal_kind::infinity;
    parts.digits.clear();
    take_word(text, "inity");
    return text.empty() ? numeral_fault::none : numeral_fault::not_a_numeral;
  }
  return read_finite(text, parts);
}

std::string decimal_text(const decimal_parts& parts) {
  std::string text(parts.is_negative ? "-" : "");
  if (parts.kind != decimal_kind::finite) {
    return text += nan_or_infinity_text(parts);
  }
  text.reserve(parts.digits.size() + 32);
  const std::int64_t adjusted = adjusted_exponent(parts);
  // Plain digits as long as they neither pretend to places that nobody gave nor begin with many zeros.
  parts.exponent <= 0 && adjusted >= -6 ? write_with_point(text, parts) : write_scientific(text, parts, adjusted);
  return text;
}

}  // namespace ling::internal
