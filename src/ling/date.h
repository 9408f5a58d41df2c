// Date: a day of the proleptic Gregorian calendar.
//
// Years are counted with a year 0, which precedes the year 1, and reach as far as 32 signed bits do. Dates compare by
// time; a Date and a DateTime have no order. The text of a date is that of ISO 8601: "2020-02-29", with a sign for
// years that are not within 0 and 9999, "+12345-01-01".
//
// Threads: immutable, shared freely.
#pragma once

#include "ling/instance.h"
#include "ling/string.h"
#include "ling/union.h"

#include <cstdint>

namespace ling {

class Class_Generic;

class LING_API object_value_date final : public object_value_instance {
 public:
  // A day that exists.
  object_value_date(std::int32_t year, std::uint8_t month, std::uint8_t day);
  const std::int32_t year;
  const std::uint8_t month;
  const std::uint8_t day;
};

class LING_API Date : public Handle<Date, object_value_date> {
  LING_HANDLE(Date, object_value_date)
  // An Error that names the field when there is no such day.
  static Result<Date> from(std::int64_t year, std::int64_t month, std::int64_t day);
  // The day so many days after 1970-01-01; an Error beyond the last year and before the first.
  static Result<Date> fromDayNumber(std::int64_t days);
  // The inverse of toString; an Error for any other text.
  static Result<Date> fromString(const String& text);

  std::int32_t year() const noexcept { return object().year; }
  std::uint8_t month() const noexcept { return object().month; }
  std::uint8_t day() const noexcept { return object().day; }
  // The days since 1970-01-01, negative before.
  std::int64_t dayNumber() const noexcept;
  // From 1, Monday, to 7, Sunday.
  int weekday() const noexcept;
  // From 1 to 366.
  int dayOfYear() const noexcept;
  bool isLeapYear() const noexcept;
  // The day so many days later; earlier for a negative number.
  Result<Date> addDays(std::int64_t days) const;
  String toString() const;

  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
