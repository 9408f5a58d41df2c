// The proleptic Gregorian calendar: days counted from 1970-01-01, years counted with a year 0.
//
// The calendar of <chrono> ends at the year 32767, so the arithmetic is done here. It repeats every 400 years (an era
// of 146097 days); years are taken to begin in March, so that the leap day is the last day of a year.
#pragma once

#include "ling/error.h"
#include "ling/none.h"
#include "ling/union.h"

#include <cstdint>

namespace ling::internal {

struct civil_date {
  std::int64_t year;
  int month;
  int day;
};

inline constexpr std::int64_t first_year = INT32_MIN;
inline constexpr std::int64_t last_year = INT32_MAX;
inline constexpr std::int64_t seconds_per_day = 86'400;
inline constexpr std::int64_t nanoseconds_per_second = 1'000'000'000;
inline constexpr std::int64_t nanoseconds_per_day = seconds_per_day * nanoseconds_per_second;

// Division that rounds down, also below zero; the divisor is positive.
constexpr std::int64_t floor_division(std::int64_t dividend, std::int64_t divisor) noexcept {
  return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
}
constexpr std::int64_t floor_remainder(std::int64_t dividend, std::int64_t divisor) noexcept {
  return dividend % divisor + (dividend % divisor < 0 ? divisor : 0);
}

constexpr bool is_leap_year(std::int64_t year) noexcept {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr int days_in_month(std::int64_t year, int month) noexcept {
  constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return days[month - 1] + (month == 2 && is_leap_year(year) ? 1 : 0);
}

constexpr std::int64_t days_from_civil(const civil_date& date) noexcept {
  const std::int64_t year = date.year - (date.month <= 2 ? 1 : 0);
  const std::int64_t era = floor_division(year, 400);
  const std::int64_t year_of_era = year - era * 400;
  const std::int64_t month_from_march = (date.month + 9) % 12;
  const std::int64_t day_of_year = (153 * month_from_march + 2) / 5 + date.day - 1;
  const std::int64_t day_of_era = year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
  return era * 146'097 + day_of_era - 719'468;
}

constexpr civil_date civil_from_days(std::int64_t days) noexcept {
  const std::int64_t from_march = days + 719'468;
  const std::int64_t era = floor_division(from_march, 146'097);
  const std::int64_t day_of_era = from_march - era * 146'097;
  const std::int64_t year_of_era = (day_of_era - day_of_era / 1'460 + day_of_era / 36'524 - day_of_era / 146'096) / 365;
  const std::int64_t day_of_year = day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
  const std::int64_t month_from_march = (5 * day_of_year + 2) / 153;
  const int day = static_cast<int>(day_of_year - (153 * month_from_march + 2) / 5 + 1);
  const int month = static_cast<int>(month_from_march < 10 ? month_from_march + 3 : month_from_march - 9);
  return {year_of_era + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

inline constexpr std::int64_t first_day = days_from_civil({first_year, 1, 1});
inline constexpr std::int64_t last_day = days_from_civil({last_year, 12, 31});
static_assert(days_from_civil({1970, 1, 1}) == 0 && days_from_civil({1, 1, 1}) == -719'162);

// An Error that names the field unless the value is within its bounds.
inline Result<None> check_field(const char* field, std::int64_t value, std::int64_t least, std::int64_t most) {
  if (value < least || value > most) {
    return Error(String("The {} {} is not between {} and {}.").arg(field, value, least, most));
  }
  return None();
}

}  // namespace ling::internal
