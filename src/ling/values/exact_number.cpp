// Exact comparison of numbers of either kind.
#include "ling/values/exact_number.h"

namespace ling::internal {

namespace {

template <class Number>
ordering_value order(Number a, Number b) noexcept {
  return a < b ? ordering_value::Less : b < a ? ordering_value::Greater : ordering_value::Equal;
}

// The fraction that cutting a double down to an integer has lost decides between numbers equal so far.
ordering_value order_with_fraction(ordering_value of_whole, double whole, double number) noexcept {
  return of_whole == ordering_value::Equal ? order(whole, number) : of_whole;
}

}  // namespace

ordering_value compare_integers(const object_value_integer& a, const object_value_integer& b) noexcept {
  if (a.is_signed() && b.is_signed()) {
    return order(a.signed_value(), b.signed_value());
  }
  // An unsigned one is above all signed ones.
  if (a.is_signed() != b.is_signed()) {
    return a.is_signed() ? ordering_value::Less : ordering_value::Greater;
  }
  return order(a.unsigned_value(), b.unsigned_value());
}

ordering_value compare_floats(double a, double b) noexcept {
  return std::isunordered(a, b) ? ordering_value::Incomparable : order(a, b);
}

ordering_value compare_integer_with_float(const object_value_integer& a, double b) noexcept {
  if (std::isnan(b)) {
    return ordering_value::Incomparable;
  }
  if (b >= two_to_64) {
    return ordering_value::Less;
  }
  if (b < -two_to_63) {
    return ordering_value::Greater;
  }
  const double whole = std::trunc(b);
  if (a.is_signed()) {
    if (whole >= two_to_63) {
      return ordering_value::Less;
    }
    return order_with_fraction(order(a.signed_value(), static_cast<std::int64_t>(whole)), whole, b);
  }
  if (whole < 0) {
    return ordering_value::Greater;
  }
  return order_with_fraction(order(a.unsigned_value(), static_cast<std::uint64_t>(whole)), whole, b);
}

}  // namespace ling::internal
