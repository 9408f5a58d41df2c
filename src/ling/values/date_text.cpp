// Reading and writing the fields of ISO 8601 texts.
#include "ling/values/date_text.h"

#include <algorithm>

namespace ling::internal {

std::optional<char> iso_scanner::any_of(std::string_view characters) noexcept {
  if (rest_.empty() || characters.find(rest_.front()) == std::string_view::npos) {
    return std::nullopt;
  }
  const char found = rest_.front();
  rest_.remove_prefix(1);
  return found;
}

std::optional<std::int64_t> iso_scanner::digits(std::size_t least, std::size_t most) noexcept {
  std::size_t count = 0;
  std::int64_t value = 0;
  for (; count < std::min(most, rest_.size()) && rest_[count] >= '0' && rest_[count] <= '9'; ++count) {
    value = value * 10 + (rest_[count] - '0');
  }
  if (count < least) {
    return std::nullopt;
  }
  rest_.remove_prefix(count);
  return value;
}

std::optional<date_fields> iso_scanner::date() noexcept {
  const auto sign = any_of("+-");
  const auto year = digits(4, sign ? 10 : 4);
  if (!year || !any_of("-")) {
    return std::nullopt;
  }
  const auto month = digits(2, 2);
  if (!month || !any_of("-")) {
    return std::nullopt;
  }
  const auto day = digits(2, 2);
  if (!day) {
    return std::nullopt;
  }
  return date_fields{sign == '-' ? -*year : *year, *month, *day};
}

std::optional<time_fields> iso_scanner::time() noexcept {
  time_fields fields;
  const auto hour = digits(2, 2);
  if (!hour || !any_of(":")) {
    return std::nullopt;
  }
  const auto minute = digits(2, 2);
  if (!minute) {
    return std::nullopt;
  }
  fields.hour = *hour;
  fields.minute = *minute;
  if (any_of(":")) {
    const auto second = digits(2, 2);
    if (!second || !fraction(fields)) {
      return std::nullopt;
    }
    fields.second = *second;
  }
  return offset(fields) ? std::optional(fields) : std::nullopt;
}

bool iso_scanner::fraction(time_fields& fields) noexcept {
  if (!any_of(".,")) {
    return true;
  }
  const std::size_t before = rest_.size();
  const auto value = digits(1, 9);
  if (!value) {
    return false;
  }
  fields.nanoseconds = *value;
  for (std::size_t count = before - rest_.size(); count < 9; ++count) {
    fields.nanoseconds *= 10;
  }
  return true;
}

bool iso_scanner::offset(time_fields& fields) noexcept {
  const auto sign = any_of("Z+-");
  if (!sign) {
    return true;
  }
  fields.offset = 0;
  if (sign == 'Z') {
    return true;
  }
  const auto hours = digits(2, 2);
  if (!hours || !any_of(":")) {
    return false;
  }
  const auto minutes = digits(2, 2);
  const auto seconds = any_of(":") ? digits(2, 2) : std::optional<std::int64_t>(0);
  // Sixty minutes would be another way to write an hour.
  if (!minutes || !seconds || *minutes > 59 || *seconds > 59) {
    return false;
  }
  const std::int64_t distance = *hours * 3'600 + *minutes * 60 + *seconds;
  fields.offset = sign == '-' ? -distance : distance;
  return true;
}

void write_padded(std::string& text, std::int64_t value, std::size_t width) {
  const std::string digits = std::to_string(value);
  text.append(width - std::min(width, digits.size()), '0');
  text += digits;
}

void write_date(std::string& text, std::int64_t year, int month, int day) {
  if (year < 0 || year > 9'999) {
    text += year < 0 ? '-' : '+';
  }
  write_padded(text, year < 0 ? -year : year, 4);
  text += '-';
  write_padded(text, month, 2);
  text += '-';
  write_padded(text, day, 2);
}

void write_time(std::string& text, int hour, int minute, int second, std::uint32_t nanoseconds) {
  write_padded(text, hour, 2);
  text += ':';
  write_padded(text, minute, 2);
  text += ':';
  write_padded(text, second, 2);
  if (nanoseconds != 0) {
    text += '.';
    nanoseconds % 1'000 == 0 ? write_padded(text, nanoseconds / 1'000, 6) : write_padded(text, nanoseconds, 9);
  }
}

void write_offset(std::string& text, std::uint32_t seconds) {
  text += '+';
  write_padded(text, seconds / 3'600, 2);
  text += ':';
  write_padded(text, seconds / 60 % 60, 2);
  if (seconds % 60 != 0) {
    text += ':';
    write_padded(text, seconds % 60, 2);
  }
}

}  // namespace ling::internal
