// Reading and writing the fields of ISO 8601 texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ling::internal {

// What a text says, before anybody has checked whether there is such a day or such an hour.
struct date_fields {
  std::int64_t year = 0;
  std::int64_t month = 0;
  std::int64_t day = 0;
};
struct time_fields {
  std::int64_t hour = 0;
  std::int64_t minute = 0;
  std::int64_t second = 0;
  std::int64_t nanoseconds = 0;
  std::optional<std::int64_t> offset;  // seconds east of UTC
};

// Walks through a text. What does not fit leaves it where it is.
class iso_scanner {
 public:
  explicit iso_scanner(std::string_view text) noexcept : rest_(text) {}

  bool at_end() const noexcept { return rest_.empty(); }
  // One of the characters; which one.
  std::optional<char> any_of(std::string_view characters) noexcept;
  // "2020-02-29"; years beyond four digits, and those before the year 0, have a sign.
  std::optional<date_fields> date() noexcept;
  // "23:59", "23:59:59", "23:59:59.123456789", each with an offset or without: "Z", "+02:00", "-02:00:30".
  std::optional<time_fields> time() noexcept;

 private:
  std::optional<std::int64_t> digits(std::size_t least, std::size_t most) noexcept;
  bool fraction(time_fields& fields) noexcept;
  bool offset(time_fields& fields) noexcept;

  std::string_view rest_;
};

// With zeros in front up to the width.
void write_padded(std::string& text, std::int64_t value, std::size_t width);
void write_date(std::string& text, std::int64_t year, int month, int day);
// A fraction has six digits, or nine when microseconds do not do.
void write_time(std::string& text, int hour, int minute, int second, std::uint32_t nanoseconds);
void write_offset(std::string& text, std::uint32_t seconds);

}  // namespace ling::internal
