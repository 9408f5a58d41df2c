// Time: a time of day to the nanosecond, with or without an offset from UTC.
//
// A time without an offset is that of some clock on a wall; one with an offset names a place on the day's scale in UTC
// and may say what its zone is called. Times of one sort compare with each other, by UTC when they have offsets; those
// of different sorts have no order. The zone's name and the fold do not take part.
//
// The text of a time is that of ISO 8601: "23:59:59", "23:59:59.123456", "23:59:59.123456789+02:00". It leaves out the
// zone's name and the fold.
//
// Threads: immutable, shared freely.
#pragma once

#include "ling/instance.h"
#include "ling/string.h"
#include "ling/union.h"

#include <cstdint>
#include <optional>

namespace ling {

class Class_Generic;

class LING_API object_value_time final : public object_value_instance {
 public:
  // Fields within their bounds.
  object_value_time(std::uint8_t hour, std::uint8_t minute, std::uint8_t second, std::uint32_t nanoseconds,
                    std::optional<std::uint32_t> offset, String zone_name, std::uint8_t fold);
  const std::uint8_t hour;
  const std::uint8_t minute;
  const std::uint8_t second;
  const std::uint8_t fold;
  const std::uint32_t nanoseconds;
  const std::optional<std::uint32_t> offset;
  const String zone_name;
};

class LING_API Time : public Handle<Time, object_value_time> {
  LING_HANDLE(Time, object_value_time)
  // The offset counts seconds east of UTC, from 0 to 86399: there is no room for zones west of it. The fold is 1 for
  // the second of two times that a clock shows twice, when it is put back; else 0. An Error names a field that is out
  // of its bounds.
  static Result<Time> from(std::int64_t hour, std::int64_t minute, std::int64_t second, std::int64_t nanoSeconds,
                           std::optional<std::int64_t> offset = {}, const String& zoneName = {}, std::int64_t fold = 0);
  // The inverse of toString; also without seconds, and with "Z" for UTC. An Error for any other text.
  static Result<Time> fromString(const String& text);

  std::uint8_t hour() const noexcept { return object().hour; }
  std::uint8_t minute() const noexcept { return object().minute; }
  std::uint8_t second() const noexcept { return object().second; }
  std::uint32_t nanoSeconds() const noexcept { return object().nanoseconds; }
  std::uint8_t fold() const noexcept { return object().fold; }
  std::optional<std::uint32_t> offset() const noexcept { return object().offset; }
  // Empty when the time has no offset or nobody gave the zone a name.
  String zoneName() const { return object().zone_name; }
  // The nanoseconds since midnight by the clock that shows this time.
  std::int64_t nanoSecondsOfDay() const noexcept;
  String toString() const;

  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
