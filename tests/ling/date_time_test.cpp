// Dates and times: which exist, their texts, their order, and calculating with them.
#include "ling/ling.h"

#include <gtest/gtest.h>

namespace {

using namespace ling;

Any date(const char* text) { return Date::fromString(text); }
Any time_of(const char* text) { return Time::fromString(text); }
Any date_time(const char* text) { return DateTime::fromString(text); }

template <class... Arguments>
std::string called(const Any& value, const char* method, const Arguments&... arguments) {
  const Any row[] = {Any(arguments)...};
  return std::string(display_text(call_method(value, meta_method_untyped(method), row)).view());
}
template <class... Arguments>
std::string made(const Class_Generic& of_class, const Arguments&... arguments) {
  return std::string(display_text(of_class(Any(arguments)...)).view());
}
std::string property(const Any& value, const char* name) {
  return std::string(display_text(value.propertyValue(meta_property_untyped(name))).view());
}

TEST(Date, ExistsInTheCalendarOnly) {
  const Class_Generic dates = Date::getClass();
  EXPECT_EQ(made(dates, 2020, 2, 29), "2020-02-29");
  EXPECT_EQ(made(dates, 2000, 2, 29), "2000-02-29");
  EXPECT_EQ(made(dates, 1900, 2, 29), "Error: The day 29 is not between 1 and 28.");
  EXPECT_EQ(made(dates, 2021, 13, 1), "Error: The month 13 is not between 1 and 12.");
  EXPECT_EQ(made(dates, 2021, 0, 1), "Error: The month 0 is not between 1 and 12.");
  EXPECT_EQ(made(dates, 2021, 4, 31), "Error: The day 31 is not between 1 and 30.");
  EXPECT_EQ(made(dates, std::int64_t{INT32_MAX} + 1, 1, 1),
            "Error: The year 2147483648 is not between -2147483648 and 2147483647.");
  EXPECT_TRUE(is_error_result(dates("2020-02-29")));
  EXPECT_TRUE(I_Immutable::matches(date("2020-02-29").get()));
}

TEST(Time, ExistsOnTheClockOnly) {
  const Class_Generic times = Time::getClass();
  EXPECT_EQ(made(times, 23, 59), "23:59:00");
  EXPECT_EQ(made(times, 23, 59, 59, 999'999'999), "23:59:59.999999999");
  EXPECT_EQ(made(times, 8, 0, 0, 0, 86'399, "far east", 1), "08:00:00+23:59:59");
  EXPECT_EQ(made(times, 24, 0, 0, 0), "Error: The hour 24 is not between 0 and 23.");
  EXPECT_EQ(made(times, 0, -1, 0, 0), "Error: The minute -1 is not between 0 and 59.");
  EXPECT_EQ(made(times, 0, 0, 60, 0), "Error: The second 60 is not between 0 and 59.");
  EXPECT_EQ(made(times, 0, 0, 0, 1'000'000'000), "Error: The nanosecond 1000000000 is not between 0 and 999999999.");
  EXPECT_EQ(made(times, 0, 0, 0, 0, 86'400, "", 0), "Error: The offset 86400 is not between 0 and 86399.");
  EXPECT_EQ(made(times, 0, 0, 0, 0, -1, "", 0), "Error: The offset -1 is not between 0 and 86399.");
  EXPECT_EQ(made(times, 0, 0, 0, 0, None(), "", 2), "Error: The fold 2 is not between 0 and 1.");
  const Any zoned = times(1, 2, 3, 4, 7'200, "CEST", 1);
  EXPECT_EQ(property(zoned, "offset") + property(zoned, "zoneName") + property(zoned, "fold"), "7200CEST1");
  EXPECT_EQ(property(time_of("01:00"), "offset"), "None");
}

TEST(DateAndTime, ReadTheTextsTheyWrite) {
  for (const char* text : {"0000-01-01", "0001-01-01", "9999-12-31", "+10000-01-01", "-0001-02-28", "+2147483647-12-31",
                           "-2147483648-01-01"}) {
    EXPECT_EQ(display_text(date(text)).view(), text);
  }
  const struct {
    const char* text;
    const char* written;
  } times[] = {
      {"23:59",                       "23:59:00"                   },
      {"00:00:00",                    "00:00:00"                   },
      {"10:20:30.5",                  "10:20:30.500000"            },
      {"10:20:30,000000001",          "10:20:30.000000001"         },
      {"10:20:30.000001",             "10:20:30.000001"            },
      {"10:20:30Z",                   "10:20:30+00:00"             },
      {"10:20-00:00",                 "10:20:00+00:00"             },
      {"10:20:30.123456789+23:59:59", "10:20:30.123456789+23:59:59"},
  };
  for (const auto& each : times) {
    EXPECT_EQ(display_text(time_of(each.text)).view(), each.written);
    const std::string moment = "2020-02-29T" + std::string(each.text);
    EXPECT_EQ(display_text(date_time(moment.c_str())).view(), "2020-02-29T" + std::string(each.written));
  }
  EXPECT_EQ(display_text(date_time("2020-02-29 10:20")).view(), "2020-02-29T10:20:00");
}

TEST(DateAndTime, RefuseOtherTexts) {
  for (const char* text : {"", "2020", "2020-2-29", "2020-02-29 ", "20200229", "12345-01-01", "+123-01-01",
                           "2020-02-30", "--20-01-01", "2020-02-29T00:00", "+99999999999-01-01"}) {
    EXPECT_TRUE(is_error_result(date(text))) << text;
  }
  for (const char* text : {"", "1", "24:00", "10:2", "10:20:", "10:20:30.", "10:20:30.1234567890", "10:20+2",
                           "10:20+01:60", "10:20+24:00", "10:20-05:00", "10:20 Z", "T10:20"}) {
    EXPECT_TRUE(is_error_result(time_of(text))) << text;
  }
  for (const char* text : {"2020-02-29", "2020-02-29T", "2020-02-29T24:00", "2020-02-30T00:00", "T10:20", "10:20"}) {
    EXPECT_TRUE(is_error_result(date_time(text))) << text;
  }
  EXPECT_EQ(display_text(date("soon")).view(), "Error: The text 'soon' is not a date such as '2020-02-29'.");
}

TEST(DateAndTime, CompareAndHashByValue) {
  using enum ordering_value;
  const struct {
    Any a, b;
    ordering_value expected;
  } cases[] = {
      {date("2020-02-29"), date("2020-02-29"), Equal},
      {date("-0001-12-31"), date("0000-01-01"), Less},
      {date("+10000-01-01"), date("9999-12-31"), Greater},
      {time_of("10:00"), time_of("10:00:00.000000001"), Less},
      {time_of("10:00+02:00"), time_of("09:00+01:00"), Equal},
      {time_of("00:30+01:00"), time_of("00:00Z"), Less},
      {time_of("10:00"), time_of("10:00Z"), Incomparable},
      {Time::getClass()(1, 0, 0, 0, 60, "a", 0), Time::getClass()(1, 0, 0, 0, 60, "b", 1), Equal},
      {date_time("2020-01-01T00:30+01:00"), date_time("2019-12-31T23:30Z"), Equal},
      {date_time("2020-01-01T00:00"), date_time("2019-12-31T23:59:59.999"), Greater},
      {date_time("2020-01-01T00:00"), date_time("2020-01-01T00:00Z"), Incomparable},
      {date_time("2020-01-01T00:00"), date("2020-01-01"), Incomparable},
      {date("2020-01-01"), Any("2020-01-01"), Incomparable},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(compare_objects_value(each.a, each.b), each.expected) << String("{} ? {}").arg(each.a, each.b).view();
    EXPECT_EQ(hash_of(each.a) == hash_of(each.b), each.expected == Equal) << display_text(each.a).view();
  }
}

TEST(Date, CountsDays) {
  const Any leap_day = date("2020-02-29");
  EXPECT_EQ(property(leap_day, "weekday") + " " + property(leap_day, "dayOfYear") + " " +
                property(leap_day, "isLeapYear") + " " + property(leap_day, "dayNumber"),
            "6 60 true 18321");
  EXPECT_EQ(property(date("-0400-12-31"), "dayOfYear") + property(date("-0001-01-01"), "weekday"), "3665");
  EXPECT_EQ(called(leap_day, "__add__", 366), "2021-03-01");
  EXPECT_EQ(called(leap_day, "__sub__", 1), "2020-02-28");
  EXPECT_EQ(called(leap_day, "__sub__", date("0001-01-01")), "737483");
  EXPECT_EQ(called(leap_day, "__add__", 1.5), "Undefined");
  for (const std::int64_t days : {INT64_MIN, INT64_MAX, std::int64_t{1} << 40}) {
    EXPECT_TRUE(called(leap_day, "__add__", days).starts_with("Error: The day number "));
    EXPECT_TRUE(called(leap_day, "__sub__", days).starts_with("Error: The day number "));
  }
  EXPECT_EQ(called(date("+2147483647-12-31"), "addDays", -INT64_C(1'568'704'592'609)), "-2147483648-01-01");
}

TEST(DateTime, CalculatesWithDurations) {
  const Any value = date_time("2020-02-28T23:59:59.999999999+02:00");
  EXPECT_EQ(called(value, "__add__", 1), "2020-02-29T00:00:00+02:00");
  EXPECT_EQ(called(value, "__sub__", 86'400'000'000'000), "2020-02-27T23:59:59.999999999+02:00");
  EXPECT_EQ(called(value, "addSeconds", -366 * 86'400), "2019-02-27T23:59:59.999999999+02:00");
  EXPECT_EQ(called(value, "__sub__", date_time("2020-02-28T23:59:59Z")), "-7199000000001");
  EXPECT_EQ(called(value, "secondsSince", date_time("2020-02-28T23:59:59Z")), "-7200");
  EXPECT_EQ(called(date_time("9999-12-31T23:59:59"), "secondsSince", date_time("0001-01-01T00:00")), "315537897599");
  EXPECT_EQ(called(date_time("9999-12-31T00:00"), "__sub__", date_time("0001-01-01T00:00")),
            "Error: The nanoseconds from 0001-01-01T00:00:00 to 9999-12-31T00:00:00 do not fit into 64 bits.");
  EXPECT_EQ(called(value, "__sub__", date_time("2020-01-01T00:00")),
            "Error: 2020-02-28T23:59:59.999999999+02:00 and 2020-01-01T00:00:00 have no difference: only one of them "
            "has an offset.");
  EXPECT_EQ(called(date_time("1970-01-01T00:00"), "__sub__", INT64_MIN), "2262-04-11T23:47:16.854775808");
  EXPECT_TRUE(called(value, "addSeconds", INT64_MAX).starts_with("Error: The day number "));
  EXPECT_TRUE(called(value, "addSeconds", INT64_MIN).starts_with("Error: The day number "));
}

}  // namespace
