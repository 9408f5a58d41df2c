// The texts of plain values.
#include "ling/algorithms/plain_text.h"

#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>

namespace ling::internal {

namespace {

template <class Number>
void write_shortest(std::string& out, Number number) {
  char digits[32];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

}  // namespace

void write_quoted(std::string& out, std::string_view bytes, bool is_text) {
  constexpr char digits[] = "0123456789abcdef";
  out += '"';
  for (const char each : bytes) {
    const auto byte = static_cast<unsigned char>(each);
    switch (each) {
      case '"':
      case '\\':
        (out += '\\') += each;
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        if (byte < 0x20 || byte == 0x7f || (byte >= 0x80 && !is_text)) {
          ((out += "\\x") += digits[byte >> 4]) += digits[byte & 15];
        } else {
          out += each;
        }
    }
  }
  out += '"';
}

void write_integer(std::string& out, const object_value_integer& integer) {
  integer.is_signed() ? write_shortest(out, integer.signed_value()) : write_shortest(out, integer.unsigned_value());
}

void write_float(std::string& out, double number) {
  if (!std::isfinite(number)) {
    out += std::isnan(number) ? "nan" : number < 0 ? "-inf" : "inf";
    return;
  }
  char buffer[32];
  const auto write = [&](std::chars_format format) {
    return std::string_view(buffer, std::to_chars(buffer, std::end(buffer), number, format).ptr);
  };
  const std::string_view scientific = write(std::chars_format::scientific);
  const char* exponent_text = scientific.data() + scientific.find('e') + 1;
  int exponent = 0;
  std::from_chars(exponent_text + (*exponent_text == '+' ? 1 : 0), scientific.end(), exponent);
  // Zeros that only fill the places up to the point would feign a precision that the number has not.
  if (exponent < -4 || exponent > std::numeric_limits<double>::digits10) {
    out += scientific;
    return;
  }
  const std::string_view fixed = write(std::chars_format::fixed);
  out += fixed;
  if (fixed.find('.') == fixed.npos) {
    out += ".0";
  }
}

}  // namespace ling::internal
