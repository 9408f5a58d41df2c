// Time: its class.
#include "ling/time.h"

#include "ling/detail/definitions.h"
#include "ling/detail/hash_mix.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"
#include "ling/values/calendar.h"
#include "ling/values/date_text.h"

namespace ling {

namespace {

// Times with offsets are compared in UTC, where they may lie on the day before.
std::int64_t nanoseconds_in_utc(const Time& time) noexcept {
  return time.nanoSecondsOfDay() - time.offset().value_or(0) * internal::nanoseconds_per_second;
}

Any compare(const Time& self, const Any& other) {
  const auto time = Time::cast(internal::unwrap(other));
  if (!time || self.offset().has_value() != time->offset().has_value()) {
    return Undefined();
  }
  return Ordering::fromSign(nanoseconds_in_utc(self) - nanoseconds_in_utc(*time));
}

std::uint64_t hash(const Time& self) {
  return internal::hash_combine(self.offset().has_value() ? 1 : 0,
                                static_cast<std::uint64_t>(nanoseconds_in_utc(self)));
}

}  // namespace

constinit const class_definition<Time> internal::time_class("Time", [](class_builder<Time>& c) {
  c.module("ling")
      .doc("A time of day to the nanosecond, with or without an offset from UTC.")
      .parent(I_Immutable::getClass())
      .constructor(
          "hour, minute, second, nanoSeconds, offset, zoneName, fold",
          "A time of day; the offset counts seconds east of UTC.",
          [](const Class_Generic&, std::int64_t hour, std::int64_t minute, std::int64_t second,
             std::int64_t nanoseconds, std::optional<std::int64_t> offset, const String& zone_name,
             std::int64_t fold) { return Time::from(hour, minute, second, nanoseconds, offset, zone_name, fold); },
          {0, 0, None(), "", 0})
      .class_method("fromString", "text", "From a text such as \"23:59:59.5\" or \"08:00+02:00\".", &Time::fromString)
      .property("hour", "From 0 to 23.", &Time::hour)
      .property("minute", "From 0 to 59.", &Time::minute)
      .property("second", "From 0 to 59.", &Time::second)
      .property("nanoSeconds", "The fraction of the second.", &Time::nanoSeconds)
      .property("fold", "1 for the second of two times that a clock shows twice.", &Time::fold)
      .property("offset", "Seconds east of UTC, none for the time of some clock.", &Time::offset)
      .property("zoneName", "What the zone is called, if anything.", &Time::zoneName)
      .property("nanoSecondsOfDay", "The nanoseconds since midnight by the clock.", &Time::nanoSecondsOfDay)
      .method("toString", "", "The text as in \"23:59:59.123456\".", &Time::toString)
      .method("isoformat", "", "The same: the name says that it is the text of ISO 8601.", &Time::toString)
      .method(Any::__compare__, "other", &compare)
      .method(Any::__hash__, "", &hash)
      .method(Any::__display__, "", &Time::toString);
});

object_value_time::object_value_time(std::uint8_t of_hour, std::uint8_t of_minute, std::uint8_t of_second,
                                     std::uint32_t of_nanoseconds, std::optional<std::uint32_t> of_offset,
                                     String of_zone, std::uint8_t of_fold)
    : object_value_instance(internal::time_class.required()),
      hour(of_hour),
      minute(of_minute),
      second(of_second),
      fold(of_fold),
      nanoseconds(of_nanoseconds),
      offset(of_offset),
      zone_name(std::move(of_zone)) {}

Result<Time> Time::from(std::int64_t hour, std::int64_t minute, std::int64_t second, std::int64_t nanoSeconds,
                        std::optional<std::int64_t> offset, const String& zoneName, std::int64_t fold) {
  TRY(internal::check_field("hour", hour, 0, 23));
  TRY(internal::check_field("minute", minute, 0, 59));
  TRY(internal::check_field("second", second, 0, 59));
  TRY(internal::check_field("nanosecond", nanoSeconds, 0, internal::nanoseconds_per_second - 1));
  TRY(internal::check_field("offset", offset.value_or(0), 0, internal::seconds_per_day - 1));
  TRY(internal::check_field("fold", fold, 0, 1));
  std::optional<std::uint32_t> seconds_east;
  if (offset) {
    seconds_east = static_cast<std::uint32_t>(*offset);
  }
  return Time(new object_value_time(static_cast<std::uint8_t>(hour), static_cast<std::uint8_t>(minute),
                                    static_cast<std::uint8_t>(second), static_cast<std::uint32_t>(nanoSeconds),
                                    seconds_east, offset ? zoneName : String(), static_cast<std::uint8_t>(fold)));
}

Result<Time> Time::fromString(const String& text) {
  internal::iso_scanner scanner(text.view());
  const auto fields = scanner.time();
  if (!fields || !scanner.at_end()) {
    return Error(String("The text '{}' is not a time such as '23:59:59.123456'.").arg(text));
  }
  return Time::from(fields->hour, fields->minute, fields->second, fields->nanoseconds, fields->offset);
}

std::int64_t Time::nanoSecondsOfDay() const noexcept {
  return (hour() * 3'600 + minute() * 60 + second()) * internal::nanoseconds_per_second + nanoSeconds();
}

String Time::toString() const {
  std::string text;
  internal::write_time(text, hour(), minute(), second(), nanoSeconds());
  if (offset()) {
    internal::write_offset(text, *offset());
  }
  return text;
}

bool Time::matches(const object_value* object) noexcept {
  return internal::is_handle_object<object_value_time>(object, internal::time_class);
}
Type Time::getType() { return Type::of(getClass()); }
Class_Generic Time::getClass() { return internal::time_class.required(); }

}  // namespace ling
