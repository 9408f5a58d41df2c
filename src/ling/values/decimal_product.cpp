// Products of long rows of digits; the only place that knows the library which multiplies them.
//
// The library's integers are binary: turning one into digits takes time that grows with the square of its length, and
// multiplying takes less. So no digits are turned. Groups of nine become the coefficients of a polynomial, each in a
// slot of its own that is wide enough for the sums of a product; one multiplication of the binary numbers that hold all
// slots multiplies the polynomials, and what comes out is carried over from group to group.
#include "ling/values/decimal_arithmetic.h"

#include <boost/multiprecision/cpp_int.hpp>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <vector>

namespace ling::internal {

namespace {

using boost::multiprecision::cpp_int;

constexpr std::size_t digits_per_group = 9;
constexpr std::uint64_t group_limit = 1'000'000'000;
constexpr std::size_t words_per_slot = 3;
// A slot takes the sum of as many products of two groups as the shorter factor has groups.
static_assert(most_result_digits < INT64_C(1) << 32, "96 bits less the 60 of a product");

constexpr std::size_t groups_of(std::size_t digits) noexcept {
  return (digits + digits_per_group - 1) / digits_per_group;
}

// The last digits come first.
cpp_int packed(const std::string& digits) {
  std::vector<std::uint32_t> words(groups_of(digits.size()) * words_per_slot);
  std::size_t end = digits.size();
  for (std::size_t slot = 0; end > 0; slot += words_per_slot) {
    const std::size_t start = end - std::min(end, digits_per_group);
    std::from_chars(digits.data() + start, digits.data() + end, words[slot]);
    end = start;
  }
  cpp_int value;
  return import_bits(value, words.data(), words.data() + words.size(), 32, false);
}

// What lies in a slot, divided by the limit of a group.
struct slot_division {
  std::uint64_t quotient = 0;
  std::uint64_t remainder = 0;

  explicit slot_division(const std::uint32_t* slot) noexcept {
    for (std::size_t word = words_per_slot; word-- > 0;) {
      const std::uint64_t dividend = remainder << 32 | slot[word];
      quotient = quotient << 32 | dividend / group_limit;
      remainder = dividend % group_limit;
    }
  }
};

void write_group(std::uint64_t group, char* end) noexcept {
  for (std::size_t i = 0; i < digits_per_group; ++i, group /= 10) {
    *--end = static_cast<char>('0' + group % 10);
  }
}

}  // namespace

std::string multiply_digits(const std::string& a, const std::string& b) {
  const std::size_t groups = groups_of(a.size()) + groups_of(b.size());
  std::vector<std::uint32_t> words;
  words.reserve(groups * words_per_slot);
  export_bits(cpp_int(packed(a) * packed(b)), std::back_inserter(words), 32, false);
  words.resize(groups * words_per_slot);

  std::string text(groups * digits_per_group, '0');
  std::uint64_t carry = 0;
  for (std::size_t group = 0; group < groups; ++group) {
    const slot_division sum(words.data() + group * words_per_slot);
    const std::uint64_t low = sum.remainder + carry % group_limit;
    carry = sum.quotient + carry / group_limit + low / group_limit;
    write_group(low % group_limit, text.data() + text.size() - group * digits_per_group);
  }
  return text.erase(0, std::min(text.find_first_not_of('0'), text.size() - 1));
}

}  // namespace ling::internal
