// Decimals: texts, order and hash together with other numbers, exact arithmetic and its bounds.
#include "ling/ling.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <utility>
#include <vector>

namespace {

using namespace ling;

Any decimal(std::string_view text) { return Decimal::fromString(text); }
std::string text_of(const Any& value) { return std::string(display_text(value).view()); }
std::string called(const Any& value, const char* method, const Any& argument) {
  return text_of(call_method(value, meta_method_untyped(method), std::span(&argument, 1)));
}

TEST(Decimal, KeepsTheTextItIsMadeOf) {
  const String kept(
      "0 -0 0.00 -12.3400 0.000001 1E-7 0E-7 0E+3 1.23E+5 123456789012345678901234567890.123 Infinity -Infinity NaN "
      "-NaN sNaN NaN123 -sNaN1 1E+999999999999999999 1E-1999999999999999997 9.9E-999999999999999999");
  for (const String& text : kept.split(' ')) {
    EXPECT_EQ(text_of(decimal(text.view())), text.view());
  }
  for (const String& pair :
       String("+1.5 1.5|1e3 1E+3|.5 0.5|5. 5|00012.0 12.0|0000 0|10e-1 1.0|inf Infinity|nan007 NaN7|"
              "-iNFinity -Infinity|NaN0 NaN|1E+0000000000000000000000000003 1E+3")
           .split('|')) {
    EXPECT_EQ(text_of(decimal(pair.split(' ')[0].view())), pair.split(' ')[1].view());
  }
  EXPECT_EQ(text_of(decimal(" 1\n")), "1");
  const std::string digits = "7" + std::string(50'000, '3') + "." + std::string(50'000, '9');
  EXPECT_EQ(text_of(decimal(digits)), digits);
}

TEST(Decimal, RefusesOtherTexts) {
  for (const char* text : {"", ".", "-", "+-1", "1,5", "1.2.3", "1e", "1e+", "1e+-3", "e5", "0x10", "1 2", "infinit",
                           "nan1x", "snanx", "1_000", "\xd9\xa1"}) {
    EXPECT_EQ(text_of(decimal(text)), "Error: The text '" + std::string(text) + "' is not a number for Decimal.");
  }
  for (const char* text : {"1E+1000000000000000000", "10E+999999999999999999", "1E-1999999999999999998",
                           "1E+99999999999999999999", "1e-99999999999999999999"}) {
    EXPECT_EQ(text_of(decimal(text)), "Error: The number '" + std::string(text) + "' is out of the range of Decimal.");
  }
}

TEST(Decimal, IsMadeExactlyOfOtherNumbers) {
  const Class_Generic decimals = Decimal::getClass();
  EXPECT_EQ(text_of(decimals(INT64_MIN)), "-9223372036854775808");
  EXPECT_EQ(text_of(decimals(UINT64_MAX)), "18446744073709551615");
  EXPECT_EQ(text_of(decimals(0.1)), "0.1000000000000000055511151231257827021181583404541015625");
  EXPECT_EQ(text_of(decimals(-1e22)), "-10000000000000000000000");
  EXPECT_EQ(text_of(decimals(-0.0)), "-0");
  EXPECT_EQ(text_of(decimals(5e-324)).size(), 757u);
  EXPECT_EQ(text_of(decimals("2.50")), "2.50");
  EXPECT_TRUE(is_error_result(decimals(true)));
}

TEST(Decimal, ComparesAndHashesByValueWithNumbersOfAllKinds) {
  using enum ordering_value;
  const double inf = std::numeric_limits<double>::infinity();
  const struct {
    const char* a;
    Any b;
    ordering_value expected;
  } cases[] = {
      {"1.0",                      decimal("1.00"),                    Equal       },
      {"1E+3",                     decimal("1000.000"),                Equal       },
      {"-0",                       decimal("0E+5"),                    Equal       },
      {"0.1",                      decimal("0.10000000000000000001"),  Less        },
      {"-0.1",                     decimal("-0.10000000000000000001"), Greater     },
      {"-1",                       decimal("0"),                       Less        },
      {"1E+999999999999999999",    decimal("1E-1999999999999999997"),  Greater     },
      {"1E+999999999999999999",    decimal("Infinity"),                Less        },
      {"-Infinity",                decimal("-1E+999999999999999999"),  Less        },
      {"Infinity",                 decimal("inf"),                     Equal       },
      {"NaN",                      decimal("1"),                       Incomparable},
      {"sNaN",                     decimal("NaN"),                     Incomparable},
      {"1.00",                     1,                                  Equal       },
      {"-9223372036854775808.0",   INT64_MIN,                          Equal       },
      {"1844674407370955161.5E+1", UINT64_MAX,                         Equal       },
      {"18446744073709551616",     UINT64_MAX,                         Greater     },
      {"18446744073709551616",     18446744073709551616.0,             Equal       },
      {"0.50",                     0.5,                                Equal       },
      {"-0.375000",                -0.375,                             Equal       },
      {"1E+400",                   1e308,                              Greater     },
      {"1E-400",                   0.0,                                Greater     },
      {"Infinity",                 inf,                                Equal       },
      {"1",                        std::nan(""),                       Incomparable},
      {"1",                        "1",                                Incomparable},
      {"1",                        true,                               Incomparable},
  };
  for (const auto& each : cases) {
    const Any a = decimal(each.a);
    EXPECT_EQ(compare_objects_value(a, each.b), each.expected) << each.a;
    if (each.expected == Equal) {
      EXPECT_EQ(compare_objects_value(each.b, a), Equal) << each.a;
      EXPECT_EQ(hash_of(a), hash_of(each.b)) << each.a;
    }
  }
  HashMap_Generic map;
  map.set(1, "one");
  EXPECT_EQ(text_of(map.get(decimal("1.000"))), "one");
}

// The result of "1.50 + 1".
std::string calculated(const String& calculation) {
  const std::vector<String> words = calculation.split(' ');
  const char* method = words[1] == "+" ? "__add__" : words[1] == "-" ? "__sub__" : "__mul__";
  return called(decimal(words[0].view()), method, decimal(words[2].view()));
}

TEST(Decimal, CalculatesExactly) {
  for (const String& line : String("1.50 + 1 = 2.50|1 + -1.00 = 0.00|-0 + -0.0 = -0.0|0E+9999999999 + 1 = 1|"
                                   "0.01 - 100 = -99.99|1.50 * -2.0 = -3.000|-0 * 5 = -0|Infinity + -1 = Infinity|"
                                   "1 - Infinity = -Infinity|Infinity * -2 = -Infinity|NaN5 + NaN6 = NaN5|"
                                   "1 - -NaN6 = -NaN6")
                                .split('|')) {
    EXPECT_EQ(calculated(line), line.split(' ')[4].view()) << line.view();
  }
  for (const auto& [calculation, fault] : std::initializer_list<std::pair<const char*, const char*>>{
           {"Infinity - Infinity",                            "is undefined"                    },
           {"0 * -Infinity",                                  "is undefined"                    },
           {"sNaN1 + 1",                                      "calculates with a signalling NaN"},
           {"1 + 1E+1000000000",                              "has more than 1000000 digits"    },
           {"1E-1999999999999999997 - 1E+999999999999999999", "has more than 1000000 digits"    },
           {"9E+999999999999999999 * 9E+999999999999999999",  "is out of the range of Decimal"  }
  }) {
    EXPECT_EQ(calculated(calculation), "Error: " + std::string(calculation) + " " + fault + ".");
  }
  EXPECT_EQ(called(decimal("1E+5"), "__sub__", 1), "99999");
  EXPECT_EQ(called(decimal("1"), "__add__", 0.5), "Undefined");
}

TEST(Decimal, MultipliesLongNumbers) {
  // (10^n - 1)^2 = 99…98 00…01
  for (const std::size_t n : {1u, 9u, 1'000u, 10'000u}) {
    const Any nines = decimal(std::string(n, '9'));
    EXPECT_EQ(called(nines, "multiply", nines), std::string(n - 1, '9') + "8" + std::string(n - 1, '0') + "1");
    EXPECT_EQ(called(nines, "add", decimal("1")), "1" + std::string(n, '0'));
    EXPECT_EQ(called(decimal("1" + std::string(n, '0')), "subtract", decimal("1")), std::string(n, '9'));
  }
  const Any half = decimal(std::string(500'001, '9'));
  EXPECT_TRUE(called(half, "multiply", half).ends_with("… has more than 1000000 digits."));
}

TEST(Decimal, GivesTheNearestFloat) {
  const struct {
    const char* text;
    double expected;
  } cases[] = {
      {"0.1",            0.1      },
      {"-1E+400",        -HUGE_VAL},
      {"1E-400",         0        },
      {"4.9E-324",       5e-324   },
      {"1E+99999999999", HUGE_VAL }
  };
  for (const auto& each : cases) {
    EXPECT_EQ(Decimal::fromString(each.text)->toFloat(), each.expected) << each.text;
  }
  EXPECT_TRUE(std::isnan(Decimal::fromString("sNaN")->toFloat()));
}

}  // namespace
