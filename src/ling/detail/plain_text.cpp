// The texts of plain values.
#include "ling/detail/plain_text.h"

#include <charconv>
#include <cmath>

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
  if (std::isnan(number)) {
    out += "nan";
    return;
  }
  const std::size_t start = out.size();
  write_shortest(out, number);
  if (out.find_first_of(".en", start) == std::string::npos) {
    out += ".0";
  }
}

}  // namespace ling::internal
