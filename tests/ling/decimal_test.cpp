// Decimals: texts, order and hash together with other numbers, exact arithmetic and its bounds.
#include "ling/testing.h"

#include <cmath>

namespace {

using namespace ling::testing;

Any decimal(std::string_view digits) { return Decimal::fromString(digits); }

TEST(Decimal, KeepsTheTextItIsMadeOf) {
  const String kept(
      "0 -0 0.00 -12.3400 0.000001 1E-7 0E-7 0E+3 1.23E+5 123456789012345678901234567890.123 Infinity -Infinity NaN "
      "-NaN sNaN NaN123 -sNaN1 1E+999999999999999999 1E-1999999999999999997 9.9E-999999999999999999");
  for (const String& each : kept.split(' ')) {
    EXPECT_EQ(text(decimal(each.view())), each.view());
  }
  for (const String& pair :
       String("+1.5 1.5|1e3 1E+3|.5 0.5|5. 5|00012.0 12.0|0000 0|10e-1 1.0|inf Infinity|nan007 NaN7|"
              "-iNFinity -Infinity|NaN0 NaN|1E+0000000000000000000000000003 1E+3")
           .split('|')) {
    EXPECT_EQ(text(decimal(pair.split(' ')[0].view())), pair.split(' ')[1].view());
  }
  EXPECT_EQ(text(decimal(" 1\n")), "1");
}

TEST(Decimal, RefusesOtherTexts) {
  const std::pair<String, String> cases[] = {
      {"The text '{}' is not a number for Decimal.",
       "|.|-|+-1|1,5|1.2.3|1e|1e+|1e+-3|e5|0x10|1 2|infinit|nan1x|snanx|1_000|\u0661"},
      {"The number '{}' is out of the range of Decimal.",
       "1E+1000000000000000000|10E+999999999999999999|1E-1999999999999999998|1E+99999999999999999999|"
       "1e-99999999999999999999"                                                     },
  };
  for (const auto& [fault, texts] : cases) {
    for (const String& wrong : texts.split('|')) {
      EXPECT_EQ(message(decimal(wrong.view())), fault.arg(wrong).view());
    }
  }
}

TEST(Decimal, IsMadeExactlyOfOtherNumbers) {
  const Class_Generic decimals = Decimal::getClass();
  expect_outcomes({
      {decimals(INT64_MIN), "-9223372036854775808"                                     },
      {decimals(0.1),       "0.1000000000000000055511151231257827021181583404541015625"},
      {decimals(-1e22),     "-10000000000000000000000"                                 },
      {decimals(-0.0),      "-0"                                                       },
  });
  EXPECT_EQ(text(decimals(5e-324)).size(), 757u);
  EXPECT_TRUE(is_error_result(decimals(true)));
}

TEST(Decimal, ComparesAndHashesByValueWithNumbersOfAllKinds) {
  using enum ordering_value;
  const std::tuple<const char*, Any, ordering_value> cases[] = {
      {"1E+999999999999999999",    decimal("1E-1999999999999999997"), Greater     },
      {"1E+999999999999999999",    decimal("Infinity"),               Less        },
      {"NaN",                      decimal("1"),                      Incomparable},
      {"-9223372036854775808.0",   INT64_MIN,                         Equal       },
      {"1844674407370955161.5E+1", UINT64_MAX,                        Equal       },
      {"18446744073709551616",     18446744073709551616.0,            Equal       },
      {"1E-400",                   0.0,                               Greater     },
      {"Infinity",                 HUGE_VAL,                          Equal       },
      {"-0.00",                    0,                                 Equal       },
      {"1",                        decimal("1.5"),                    Less        },
      {"1",                        std::nan(""),                      Incomparable},
      {"1",                        true,                              Incomparable},
  };
  for (const auto& [digits, b, expected] : cases) {
    const Any a = decimal(digits);
    EXPECT_EQ(compare_objects_value(a, b), expected) << digits;
    if (expected == Equal) {
      EXPECT_EQ(compare_objects_value(b, a), Equal) << digits;
      EXPECT_EQ(hash_of(a), hash_of(b)) << digits;
    }
  }
  EXPECT_EQ(text(make_map({1, "one"}).get(decimal("1.000"))), "one");
}

TEST(Decimal, CalculatesExactlyOrSaysWhyNot) {
  for (const String& line :
       String("-0 + -0.0 = -0.0|0E+9999999999 + 1 = 1|1 - Infinity = -Infinity|"
              "Infinity * -2 = -Infinity|NaN5 + NaN6 = NaN5|1 - -NaN6 = -NaN6|Infinity - Infinity is undefined|"
              "0 * -Infinity is undefined|sNaN1 + 1 calculates with a signalling NaN|"
              "1 + 1E+1000000 has more than 1000000 digits|"
              "1E-1999999999999999997 - 1E+999999999999999999 has more than 1000000 digits|"
              "9E+999999999999999999 * 9E+999999999999999999 is out of the range of Decimal")
           .split('|')) {
    const auto words = line.split(' ');
    const char* method = words[1] == "+" ? "__add__" : words[1] == "-" ? "__sub__" : "__mul__";
    EXPECT_EQ(text(call(decimal(words[0].view()), method, decimal(words[2].view()))),
              words[3] == "=" ? words[4].view() : String("Error: {}.").arg(line).view());
  }
  EXPECT_EQ(text(call(decimal("-0.0"), "negated")), "0.0");
  EXPECT_EQ(text(call(decimal("1"), "__add__", 0.5)), "Undefined");
}

TEST(Decimal, MultipliesLongNumbers) {
  // (10^n - 1)^2 = 99…98 00…01
  for (const std::size_t n : {1u, 9u, 1'000u, 10'000u}) {
    const Any nines = decimal(std::string(n, '9'));
    EXPECT_EQ(text(call(nines, "multiply", nines)), std::string(n - 1, '9') + "8" + std::string(n - 1, '0') + "1");
    EXPECT_EQ(text(call(decimal("1" + std::string(n, '0')), "subtract", decimal("1"))), text(nines));
  }
  const Any half = decimal(std::string(500'001, '9'));
  EXPECT_TRUE(text(call(half, "multiply", half)).ends_with("… has more than 1000000 digits."));
}

TEST(Decimal, GivesTheNearestFloat) {
  EXPECT_EQ(Decimal::fromString("0.1").value().toFloat(), 0.1);
  EXPECT_EQ(Decimal::fromString("-1E+400").value().toFloat(), -HUGE_VAL);
  EXPECT_EQ(Decimal::fromString("4.9E-324").value().toFloat(), 5e-324);
  EXPECT_EQ(Decimal::fromString("1E-350").value().toFloat(), 0);
  EXPECT_EQ(Decimal::fromString("1E+99999999999").value().toFloat(), HUGE_VAL);
  EXPECT_TRUE(std::isnan(Decimal::fromString("sNaN").value().toFloat()));
}

}  // namespace
