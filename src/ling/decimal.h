// Decimal: an exact decimal number of any length that keeps its scale.
//
// "1.50" stays "1.50": a number is its digits and a power of ten. Infinities and NaNs are numbers, too; a NaN may carry
// digits that say what went wrong, and a signalling one ("sNaN") must not be calculated with. Decimals compare and hash
// by value, with each other and with Integers and Floats: 1.0, 1.00 and the Integer 1 are equal. Nothing compares with
// a NaN.
//
// Sums, differences and products are exact. A result of more than a million digits (such as that of 1 + 1E+1000000000)
// is an Error, and so is one that no rule defines (such as that of Infinity - Infinity).
//
// Threads: immutable, shared freely.
#pragma once

#include "ling/instance.h"
#include "ling/string.h"
#include "ling/union.h"

#include <cstdint>
#include <string>

namespace ling {

class Class_Generic;

enum class decimal_kind : std::uint8_t { finite, infinity, nan, signalling_nan };

// What a decimal is made of: a finite one is `digits` times ten to the power of `exponent`.
struct decimal_parts {
  // Without zeros in front, "0" for zero. The payload of a NaN, empty for none; empty for an infinity.
  std::string digits = "0";
  std::int64_t exponent = 0;
  decimal_kind kind = decimal_kind::finite;
  bool is_negative = false;  // zeros and NaNs have a sign, too

  bool is_zero() const noexcept { return kind == decimal_kind::finite && digits == "0"; }
  bool is_nan() const noexcept { return kind == decimal_kind::nan || kind == decimal_kind::signalling_nan; }
};

class LING_API object_value_decimal final : public object_value_instance {
 public:
  explicit object_value_decimal(decimal_parts parts);
  const decimal_parts parts;
};

class LING_API Decimal : public Handle<Decimal, object_value_decimal> {
  LING_HANDLE(Decimal, object_value_decimal)
  // From "-1.50", "2E+3", "Infinity", "-sNaN12", in letters of either case and with white space at the ends. An Error
  // for any other text, and for numbers from 1E+1000000000000000000 on or with more than 1999999999999999997 places
  // after the point.
  static Result<Decimal> fromString(const String& text);
  // Exactly the double's value: 0.1 has 55 digits.
  static Decimal fromFloat(double value);

  // Borrowed; valid as long as the object lives.
  const decimal_parts& parts() const& noexcept { return object().parts; }
  const decimal_parts& parts() const&& = delete;
  bool isNaN() const noexcept { return parts().is_nan(); }
  bool isFinite() const noexcept { return parts().kind == decimal_kind::finite; }
  // The scale is kept: 1.50 + 1 is 2.50 and 1.50 * 2.0 is 3.000. A NaN among the operands is the result.
  Result<Decimal> add(const Decimal& other) const;
  Result<Decimal> subtract(const Decimal& other) const;
  Result<Decimal> multiply(const Decimal& other) const;
  Decimal negated() const;
  // The nearest double; an infinity for what is too large.
  double toFloat() const;
  // The text with all digits; in scientific notation for numbers with a positive exponent and for tiny ones.
  String toString() const;

  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
