// DateTime: its class, and the arithmetic of moments.
#include "ling/date_time.h"

#include "ling/detail/definitions.h"
#include "ling/detail/hash_mix.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"
#include "ling/values/calendar.h"
#include "ling/values/date_text.h"

namespace ling {

namespace {

using internal::nanoseconds_per_day;

// A place on the scale of time: days since 1970-01-01 and nanoseconds within the day.
struct moment {
  std::int64_t days;
  std::int64_t nanoseconds;

  friend auto operator<=>(const moment&, const moment&) = default;
};

// The nanoseconds may be more than a day, or negative.
moment normalized(std::int64_t days, std::int64_t nanoseconds) noexcept {
  return {days + internal::floor_division(nanoseconds, nanoseconds_per_day),
          internal::floor_remainder(nanoseconds, nanoseconds_per_day)};
}

moment shown_by_clock(const DateTime& value) {
  return {value.object().date.dayNumber(), value.object().time.nanoSecondsOfDay()};
}

moment in_utc(const DateTime& value) {
  const moment shown = shown_by_clock(value);
  const std::int64_t offset = value.object().time.offset().value_or(0);
  return normalized(shown.days, shown.nanoseconds - offset * internal::nanoseconds_per_second);
}

bool have_no_order(const DateTime& a, const DateTime& b) noexcept {
  return a.object().time.offset().has_value() != b.object().time.offset().has_value();
}

Result<DateTime> moved(const DateTime& value, const moment& to) {
  const Date date = TRY(Date::fromDayNumber(to.days));
  const Time& time = value.object().time;
  const std::int64_t seconds = to.nanoseconds / internal::nanoseconds_per_second;
  std::optional<std::int64_t> offset = time.offset();
  const Time of_day = TRY(Time::from(seconds / 3'600, seconds / 60 % 60, seconds % 60,
                                     to.nanoseconds % internal::nanoseconds_per_second, offset, time.zoneName()));
  return DateTime(date, of_day);
}

// From the other one to this one.
struct distance {
  std::int64_t days;
  std::int64_t nanoseconds;  // within a day, either way
};

distance distance_between(const DateTime& from, const DateTime& to) {
  const moment start = in_utc(from);
  const moment end = in_utc(to);
  return {end.days - start.days, end.nanoseconds - start.nanoseconds};
}

Error error_no_distance(const DateTime& a, const DateTime& b) {
  return Error(String("{} and {} have no difference: only one of them has an offset.").arg(a, b));
}

// --- operators: Undefined for operands that are not their business ---------------------------------------------------

Any add(const DateTime& self, const Any& other) {
  const auto nanoseconds = Int64::cast(internal::unwrap(other));
  return nanoseconds ? Any(self.addNanoSeconds(nanoseconds->value())) : Any(Undefined());
}

Any subtract(const DateTime& self, const Any& other) {
  const Any operand = internal::unwrap(other);
  if (const auto value = DateTime::cast(operand)) {
    return self.nanoSecondsSince(*value);
  }
  const auto nanoseconds = Int64::cast(operand);
  if (!nanoseconds) {
    return Undefined();
  }
  if (nanoseconds->value() != INT64_MIN) {
    return self.addNanoSeconds(-nanoseconds->value());
  }
  // The least integer has no negative.
  const Result<DateTime> nearly = self.addNanoSeconds(INT64_MAX);
  return nearly.is_error() ? Any(nearly) : Any(nearly->addNanoSeconds(1));
}

Any compare(const DateTime& self, const Any& other) {
  const auto value = DateTime::cast(internal::unwrap(other));
  if (!value || have_no_order(self, *value)) {
    return Undefined();
  }
  const auto order = in_utc(self) <=> in_utc(*value);
  return Ordering::fromSign(order < 0 ? -1 : order > 0 ? 1 : 0);
}

std::uint64_t hash(const DateTime& self) {
  const moment at = in_utc(self);
  const std::uint64_t seed = self.object().time.offset().has_value() ? 1 : 0;
  return internal::hash_combine(internal::hash_combine(seed, static_cast<std::uint64_t>(at.days)),
                                static_cast<std::uint64_t>(at.nanoseconds));
}

}  // namespace

constinit const class_definition<DateTime> internal::date_time_class("DateTime", [](class_builder<DateTime>& c) {
  c.module("ling")
      .doc("A time of a day.")
      .parent(I_Immutable::getClass())
      .constructor("date, time", "A time of a day.",
                   [](const Class_Generic&, const Date& date, const Time& time) { return DateTime(date, time); })
      .class_method("fromString", "text", "From a text such as \"2020-02-29T23:59:59\".", &DateTime::fromString)
      .property("date", "The day.", &DateTime::date)
      .property("time", "The time of the day.", &DateTime::time)
      .method("addNanoSeconds", "nanoSeconds", "So much later.", &DateTime::addNanoSeconds)
      .method("addSeconds", "seconds", "So much later.", &DateTime::addSeconds)
      .method("nanoSecondsSince", "other", "How much later this is than another one.", &DateTime::nanoSecondsSince)
      .method("secondsSince", "other", "How much later this is than another one, rounded down.",
              &DateTime::secondsSince)
      .method("toString", "", "The text as in \"2020-02-29T23:59:59\".", &DateTime::toString)
      .method("isoformat", "", "The same: the name says that it is the text of ISO 8601.", &DateTime::toString)
      .method(Any::__add__, "nanoSeconds", &add)
      .method(Any::__sub__, "other", &subtract)
      .method(Any::__compare__, "other", &compare)
      .method(Any::__hash__, "", &hash)
      .method(Any::__display__, "", &DateTime::toString);
});

object_value_date_time::object_value_date_time(Date of_date, Time of_time)
    : object_value_instance(internal::date_time_class.required()), date(std::move(of_date)), time(std::move(of_time)) {}

Result<DateTime> DateTime::fromString(const String& text) {
  internal::iso_scanner scanner(text.view());
  const auto date = scanner.date();
  const auto time = date && scanner.any_of("T ") ? scanner.time() : std::nullopt;
  if (!time || !scanner.at_end()) {
    return Error(String("The text '{}' is not a date and time such as '2020-02-29T23:59:59'.").arg(text));
  }
  const Date day = TRY(Date::from(date->year, date->month, date->day));
  const Time of_day = TRY(Time::from(time->hour, time->minute, time->second, time->nanoseconds, time->offset));
  return DateTime(day, of_day);
}

Result<DateTime> DateTime::addNanoSeconds(std::int64_t nanoSeconds) const {
  const moment from = shown_by_clock(*this);
  const moment step = normalized(0, nanoSeconds);
  return moved(*this, normalized(from.days + step.days, from.nanoseconds + step.nanoseconds));
}

Result<DateTime> DateTime::addSeconds(std::int64_t seconds) const {
  const moment from = shown_by_clock(*this);
  const std::int64_t days = internal::floor_division(seconds, internal::seconds_per_day);
  const std::int64_t rest = internal::floor_remainder(seconds, internal::seconds_per_day);
  return moved(*this, normalized(from.days + days, from.nanoseconds + rest * internal::nanoseconds_per_second));
}

Result<Integer> DateTime::nanoSecondsSince(const DateTime& other) const {
  if (have_no_order(*this, other)) {
    return error_no_distance(*this, other);
  }
  const distance between = distance_between(other, *this);
  constexpr std::int64_t most_days = INT64_MAX / nanoseconds_per_day - 1;
  if (between.days < -most_days || between.days > most_days) {
    return Error(String("The nanoseconds from {} to {} do not fit into 64 bits.").arg(other, *this));
  }
  return Integer(between.days * nanoseconds_per_day + between.nanoseconds);
}

Result<Integer> DateTime::secondsSince(const DateTime& other) const {
  if (have_no_order(*this, other)) {
    return error_no_distance(*this, other);
  }
  const distance between = distance_between(other, *this);
  return Integer(between.days * internal::seconds_per_day +
                 internal::floor_division(between.nanoseconds, internal::nanoseconds_per_second));
}

String DateTime::toString() const { return String("{}T{}").arg(object().date.toString(), object().time.toString()); }

bool DateTime::matches(const object_value* object) noexcept {
  return internal::is_handle_object<object_value_date_time>(object, internal::date_time_class);
}
Type DateTime::getType() { return Type::of(getClass()); }
Class_Generic DateTime::getClass() { return internal::date_time_class.required(); }

}  // namespace ling
