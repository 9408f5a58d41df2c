// Products of long rows of digits; the only place that knows the library which multiplies them.
#include "ling/detail/decimal_arithmetic.h"

#include <boost/multiprecision/cpp_int.hpp>

namespace ling::internal {

namespace {

using boost::multiprecision::cpp_int;

// Short rows are written by the library, whose time grows with the square of the length; longer ones are cut in two by
// the power of ten in the middle.
constexpr std::size_t short_row = 2'000;

void write_digits(const cpp_int& value, std::size_t width, std::string& text) {
  if (width <= short_row) {
    const std::string digits = value.str();
    text.append(width - digits.size(), '0') += digits;
    return;
  }
  const std::size_t low_width = width / 2;
  cpp_int high;
  cpp_int low;
  divide_qr(value, cpp_int(pow(cpp_int(10), static_cast<unsigned>(low_width))), high, low);
  write_digits(high, width - low_width, text);
  write_digits(low, low_width, text);
}

}  // namespace

std::string multiply_digits(const std::string& a, const std::string& b) {
  const cpp_int product = cpp_int(a) * cpp_int(b);
  std::string text;
  write_digits(product, a.size() + b.size(), text);
  return text.erase(0, std::min(text.find_first_not_of('0'), text.size() - 1));
}

}  // namespace ling::internal
