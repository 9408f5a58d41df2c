// DateTime: a time of a day.
//
// Those whose times have an offset name a moment and compare by it; those without compare by what calendar and clock
// show. The two sorts have no order and no difference. The text is that of ISO 8601, "2020-02-29T23:59:59+02:00".
//
// Durations are whole numbers: nanoseconds within 64 bits, some 292 years, or seconds.
//
// Threads: immutable, shared freely.
#pragma once

#include "ling/date.h"
#include "ling/number.h"
#include "ling/time.h"

namespace ling {

class LING_API object_value_date_time final : public object_value_instance {
 public:
  object_value_date_time(Date date, Time time);
  const Date date;
  const Time time;
};

class LING_API DateTime : public Handle<DateTime, object_value_date_time> {
  LING_HANDLE(DateTime, object_value_date_time)
  DateTime(const Date& date, const Time& time) : Handle(new object_value_date_time(date, time)) {}
  // The inverse of toString; a space may stand for the "T". An Error for any other text.
  static Result<DateTime> fromString(const String& text);

  Date date() const { return object().date; }
  Time time() const { return object().time; }
  // So much later; earlier for a negative number. Keeps the offset and the zone's name; the fold becomes 0. An Error
  // beyond the last year and before the first.
  Result<DateTime> addNanoSeconds(std::int64_t nanoSeconds) const;
  Result<DateTime> addSeconds(std::int64_t seconds) const;
  // How much later this is than the other one. An Error when only one of them has an offset, and for nanoseconds that
  // do not fit into 64 bits. Seconds are rounded down.
  Result<Integer> nanoSecondsSince(const DateTime& other) const;
  Result<Integer> secondsSince(const DateTime& other) const;
  String toString() const;

  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
