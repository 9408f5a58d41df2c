// Equality of values.
#include "ling/algorithms/equality.h"

#include "ling/detail/slice.h"
#include "ling/detail/try.h"
#include "ling/reflection.h"
#include "ling/string.h"

namespace ling::internal {

namespace {

equality outcome_of(bool equal) noexcept { return equal ? equality::same : equality::different; }

bool same_integer(const Any& a, const Any& b) noexcept {
  const auto& left = static_cast<const object_value_integer&>(*a.get());
  const auto& right = static_cast<const object_value_integer&>(*b.get());
  return left.is_signed() == right.is_signed() && left.unsigned_value() == right.unsigned_value();
}

bool same_text(const Any& a, const Any& b) noexcept {
  return static_cast<const object_value_string*>(a.get())->view() ==
         static_cast<const object_value_string*>(b.get())->view();
}

}  // namespace

equality compare_plain(const Any& a, const Any& b) {
  if (a.is_same(b)) {
    return equality::same;
  }
  const ObjectType left = a.type();
  const ObjectType right = b.type();
  if (!is_plain(left) || !is_plain(right)) {
    return equality::unknown;
  }
  // The two kinds most keys are of; the rest is not worth a copy of the rules.
  if (left == right && left == ObjectType::String) {
    return outcome_of(same_text(a, b));
  }
  if (left == right && left == ObjectType::Integer) {
    return outcome_of(same_integer(a, b));
  }
  return outcome_of(compare_objects_value(a, b) == ordering_value::Equal);
}

Result<Boolean> are_equal(const Any& a, const Any& b) {
  const equality outcome = compare_plain(a, b);
  if (outcome != equality::unknown) {
    return Boolean(outcome == equality::same);
  }
  return equal_objects(a, b);
}

Result<Integer> index_of_equal(std::span<const Any> items, const Any& value, std::int64_t from) {
  for (std::size_t i = clamp_slice(from, INT64_MAX, items.size()).start; i < items.size(); ++i) {
    const Boolean equal = TRY(are_equal(items[i], value));
    if (equal.value()) {
      return Integer(i);
    }
  }
  return Integer(-1);
}

}  // namespace ling::internal
