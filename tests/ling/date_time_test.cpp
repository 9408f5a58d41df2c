// Dates and times: which exist, their texts, their order, and calculating with them.
#include "ling/testing.h"

namespace {

using namespace ling::testing;

Any date(const char* text) { return Date::fromString(text); }
Any time_of(const char* text) { return Time::fromString(text); }
Any date_time(const char* text) { return DateTime::fromString(text); }

TEST(DateAndTime, ExistInTheCalendarAndOnTheClock) {
  const Class_Generic dates = Date::getClass();
  const Class_Generic times = Time::getClass();
  const Any zoned = times(1, 2, 3, 4, 7'200, "CEST", 1);
  expect_outcomes({
      {dates(2000, 2, 29), "2000-02-29"},
      {dates(1900, 2, 29), "Error: The day 29 is not between 1 and 28."},
      {dates(2021, 13, 1), "Error: The month 13 is not between 1 and 12."},
      {dates(INT64_C(2147483648), 1, 1), "Error: The year 2147483648 is not between -2147483648 and 2147483647."},
      {times(23, 59, 59, 999'999'999), "23:59:59.999999999"},
      {times(8, 0, 0, 0, 86'399, "far east", 1), "08:00:00+23:59:59"},
      {times(24, 0, 0, 0), "Error: The hour 24 is not between 0 and 23."},
      {times(0, 60, 0, 0), "Error: The minute 60 is not between 0 and 59."},
      {times(0, 0, 60, 0), "Error: The second 60 is not between 0 and 59."},
      {times(0, 0, 0, 1'000'000'000), "Error: The nanosecond 1000000000 is not between 0 and 999999999."},
      {times(0, 0, 0, 0, -1, "", 0), "Error: The offset -1 is not between 0 and 86399."},
      {times(0, 0, 0, 0, None(), "", 2), "Error: The fold 2 is not between 0 and 1."},
      {Tuple_Generic({property(zoned, "offset"), property(zoned, "zoneName"), property(zoned, "fold")}),
       "(7200, \"CEST\", 1)"},
      {property(times(1, 0, 0, 0, None(), "no zone"), "zoneName"), ""},
  });
}

TEST(DateAndTime, ReadTheTextsTheyWrite) {
  for (const char* written :
       {"0000-01-01", "9999-12-31", "+10000-01-01", "-0001-02-28", "+2147483647-12-31", "-2147483648-01-01"}) {
    EXPECT_EQ(text(date(written)), written);
  }
  const std::pair<const char*, const char*> times[] = {
      {"23:59",                       "23:59:00"                   },
      {"10:20:30.5",                  "10:20:30.500000"            },
      {"10:20:30,000000001",          "10:20:30.000000001"         },
      {"10:20:30Z",                   "10:20:30+00:00"             },
      {"10:20:30.123456789+23:59:59", "10:20:30.123456789+23:59:59"},
  };
  for (const auto& [read, written] : times) {
    EXPECT_EQ(text(time_of(read)), written);
    EXPECT_EQ(text(date_time(("2020-02-29T" + std::string(read)).c_str())), "2020-02-29T" + std::string(written));
  }
  EXPECT_EQ(text(date_time("2020-02-29 10:20")), "2020-02-29T10:20:00");
}

TEST(DateAndTime, RefuseOtherTexts) {
  const std::tuple<Any (*)(const char*), String, String> cases[] = {
      {&date,      "The text '{}' is not a date such as '2020-02-29'.",
       "|2020|2020-2-29|2020-02-29 |20200229|12345-01-01|+123-01-01|--20-01-01|2020-02-29T00:00"},
      {&time_of,   "The text '{}' is not a time such as '23:59:59.123456'.",
       "|1|10:2|10:20:|10:20:30.|10:20:30.1234567890|10:20+2|10:20 Z|T10:20"                    },
      {&date_time, "The text '{}' is not a date and time such as '2020-02-29T23:59:59'.",
       "2020-02-29|2020-02-29T|T10:20|10:20"                                                    },
  };
  for (const auto& [read, fault, texts] : cases) {
    for (const String& wrong : texts.split('|')) {
      EXPECT_EQ(message(read(wrong.c_str())), fault.arg(wrong).view());
    }
  }
  for (const Any& outcome :
       {date("2020-02-30"), date("+99999999999-01-01"), time_of("24:00"), time_of("10:20+01:60"),
        time_of("10:20+24:00"), time_of("10:20-05:00"), date_time("2020-02-29T24:00"), date_time("2020-02-30T00:00")}) {
    EXPECT_TRUE(is_error_result(outcome));
  }
}

TEST(DateAndTime, CompareAndHashByValue) {
  using enum ordering_value;
  const std::tuple<Any, Any, ordering_value> cases[] = {
      {date("-0001-12-31"), date("0000-01-01"), Less},
      {time_of("10:00+02:00"), time_of("09:00+01:00"), Equal},
      {time_of("00:30+01:00"), time_of("00:00Z"), Less},
      {time_of("10:00"), time_of("10:00Z"), Incomparable},
      {Time::getClass()(1, 0, 0, 0, 60, "a", 0), Time::getClass()(1, 0, 0, 0, 60, "b", 1), Equal},
      {date_time("2020-01-01T00:30+01:00"), date_time("2019-12-31T23:30Z"), Equal},
      {date_time("2020-01-01T00:00"), date("2020-01-01"), Incomparable},
  };
  for (const auto& [a, b, expected] : cases) {
    EXPECT_EQ(compare_objects_value(a, b), expected) << text(a) << " ? " << text(b);
    EXPECT_EQ(hash_of(a) == hash_of(b), expected == Equal) << text(a);
  }
}

TEST(DateAndTime, CalculateWithinTheirBounds) {
  const Any leap_day = date("2020-02-29");
  const Any moment = date_time("2020-02-28T23:59:59.999999999+02:00");
  const Any zoned = DateTime::getClass()(leap_day, Time::getClass()(1, 2, 3, 4, 7'200, "CEST"));
  const Any first = date_time("0001-01-01T00:00");
  expect_outcomes({
      {property(date("-0400-12-31"), "dayOfYear"), "366"},
      {property(date("-0001-01-01"), "weekday"), "5"},
      {call(leap_day, "__sub__", date("0001-01-01")), "737483"},
      {call(leap_day, "__add__", 1.5), "Undefined"},
      {call(leap_day, "__add__", std::int64_t{1} << 40),
       "Error: The day number 1099511646097 is not between -784353015833 and 784351576776."},
      {call(date("+2147483647-12-31"), "addDays", -INT64_C(1'568'704'592'609)), "-2147483648-01-01"},
      {call(moment, "__sub__", 86'400'000'000'000), "2020-02-27T23:59:59.999999999+02:00"},
      {property(property(call(zoned, "addSeconds", 1), "time"), "zoneName"), "CEST"},
      {call(moment, "__sub__", date_time("2020-02-28T23:59:59Z")), "-7199000000001"},
      {call(date_time("9999-12-31T00:00"), "__sub__", first),
       "Error: The nanoseconds from 0001-01-01T00:00:00 to 9999-12-31T00:00:00 do not fit into 64 bits."},
      {call(first, "__sub__", date_time("9999-12-31T00:00")),
       "Error: The nanoseconds from 9999-12-31T00:00:00 to 0001-01-01T00:00:00 do not fit into 64 bits."},
      {call(moment, "__sub__", date_time("2020-01-01T00:00")),
       "Error: 2020-02-28T23:59:59.999999999+02:00 and 2020-01-01T00:00:00 have no difference: only one of them "
       "has an offset."},
      {call(date_time("1970-01-01T00:00"), "__sub__", INT64_MIN), "2262-04-11T23:47:16.854775808"},
  });
  for (const std::int64_t count : {INT64_MIN, INT64_MAX}) {
    EXPECT_TRUE(message(call(leap_day, "__add__", count)).starts_with("The day number "));
    EXPECT_TRUE(message(call(leap_day, "__sub__", count)).starts_with("The day number "));
    EXPECT_TRUE(message(call(moment, "addSeconds", count)).starts_with("The day number "));
  }
}

}  // namespace
