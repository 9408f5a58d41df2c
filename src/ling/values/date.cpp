// Date: its class and its calendar.
#include "ling/date.h"

#include "ling/detail/definitions.h"
#include "ling/detail/hash_mix.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"
#include "ling/values/calendar.h"
#include "ling/values/date_text.h"

#include <algorithm>

namespace ling {

namespace {

// Operators answer Undefined for operands that are not their business.

Any add(const Date& self, const Any& other) {
  const auto days = Int64::cast(internal::unwrap(other));
  return days ? Any(self.addDays(days->value())) : Any(Undefined());
}

Any subtract(const Date& self, const Any& other) {
  const Any operand = internal::unwrap(other);
  if (const auto date = Date::cast(operand)) {
    return self.dayNumber() - date->dayNumber();
  }
  const auto days = Int64::cast(operand);
  // The least integer has no negative; a day more or less is out of range all the same.
  return days ? Any(self.addDays(-std::max(days->value(), -INT64_MAX))) : Any(Undefined());
}

Any compare(const Date& self, const Any& other) {
  const auto date = Date::cast(internal::unwrap(other));
  return date ? Any(Ordering::fromSign(self.dayNumber() - date->dayNumber())) : Any(Undefined());
}

}  // namespace

constinit const class_definition<Date> internal::date_class("Date", [](class_builder<Date>& c) {
  c.module("ling")
      .doc("A day of the Gregorian calendar, which is taken to have been in use for ever.")
      .parent(I_Immutable::getClass())
      .constructor("year, month, day", "A day that exists.",
                   [](const Class_Generic&, std::int64_t year, std::int64_t month, std::int64_t day) {
                     return Date::from(year, month, day);
                   })
      .class_method("fromString", "text", "From a text such as \"2020-02-29\".", &Date::fromString)
      .class_method("fromDayNumber", "days", "The day so many days after 1970-01-01.", &Date::fromDayNumber)
      .property("year", "The year; there is a year 0.", &Date::year)
      .property("month", "From 1 to 12.", &Date::month)
      .property("day", "The day of the month.", &Date::day)
      .property("dayNumber", "The days since 1970-01-01.", &Date::dayNumber)
      .property("weekday", "From 1, Monday, to 7, Sunday.", &Date::weekday)
      .property("dayOfYear", "From 1 to 366.", &Date::dayOfYear)
      .property("isLeapYear", "Whether the year has 366 days.", &Date::isLeapYear)
      .method("addDays", "days", "The day so many days later.", &Date::addDays)
      .method("toString", "", "The text as in \"2020-02-29\".", &Date::toString)
      .method("isoformat", "", "The same: the name says that it is the text of ISO 8601.", &Date::toString)
      .method(Any::__add__, "days", &add)
      .method(Any::__sub__, "other", &subtract)
      .method(Any::__compare__, "other", &compare)
      .method(Any::__hash__, "",
              [](const Date& self) { return internal::hash_mix(static_cast<std::uint64_t>(self.dayNumber())); })
      .method(Any::__display__, "", &Date::toString);
});

object_value_date::object_value_date(std::int32_t of_year, std::uint8_t of_month, std::uint8_t of_day)
    : object_value_instance(internal::date_class.required()), year(of_year), month(of_month), day(of_day) {}

Result<Date> Date::from(std::int64_t year, std::int64_t month, std::int64_t day) {
  TRY(internal::check_field("year", year, internal::first_year, internal::last_year));
  TRY(internal::check_field("month", month, 1, 12));
  TRY(internal::check_field("day", day, 1, internal::days_in_month(year, static_cast<int>(month))));
  return Date(new object_value_date(static_cast<std::int32_t>(year), static_cast<std::uint8_t>(month),
                                    static_cast<std::uint8_t>(day)));
}

Result<Date> Date::fromDayNumber(std::int64_t days) {
  TRY(internal::check_field("day number", days, internal::first_day, internal::last_day));
  const internal::civil_date date = internal::civil_from_days(days);
  return Date::from(date.year, date.month, date.day);
}

Result<Date> Date::fromString(const String& text) {
  internal::iso_scanner scanner(text.view());
  const auto fields = scanner.date();
  if (!fields || !scanner.at_end()) {
    return Error(String("The text '{}' is not a date such as '2020-02-29'.").arg(text));
  }
  return Date::from(fields->year, fields->month, fields->day);
}

std::int64_t Date::dayNumber() const noexcept { return internal::days_from_civil({year(), month(), day()}); }

int Date::weekday() const noexcept {
  constexpr int thursday = 4;  // the day 0
  return static_cast<int>(internal::floor_remainder(dayNumber() + thursday - 1, 7)) + 1;
}

int Date::dayOfYear() const noexcept {
  return static_cast<int>(dayNumber() - internal::days_from_civil({year(), 1, 1})) + 1;
}

bool Date::isLeapYear() const noexcept { return internal::is_leap_year(year()); }

Result<Date> Date::addDays(std::int64_t days) const {
  // Bounded before the sum, so that it cannot overflow.
  constexpr std::int64_t too_far = internal::last_day - internal::first_day + 1;
  return fromDayNumber(dayNumber() + std::clamp(days, -too_far, too_far));
}

String Date::toString() const {
  std::string text;
  internal::write_date(text, year(), month(), day());
  return text;
}

bool Date::matches(const object_value* object) noexcept {
  return internal::is_handle_object<object_value_date>(object, internal::date_class);
}
Type Date::getType() { return Type::of(getClass()); }
Class_Generic Date::getClass() { return internal::date_class.required(); }

}  // namespace ling
