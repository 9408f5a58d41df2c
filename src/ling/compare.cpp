// compare_objects: how two values compare. One dispatch on their kinds.
#include "ling/boolean.h"
#include "ling/byte_array.h"
#include "ling/detail/exact_number.h"
#include "ling/detail/nesting.h"
#include "ling/error.h"
#include "ling/hash_set.h"
#include "ling/list.h"
#include "ling/reflection.h"
#include "ling/tuple.h"

#include <algorithm>

namespace ling {

namespace {

template <class Object>
const Object& object_of(const Any& value) noexcept {
  return static_cast<const Object&>(*value.get());
}

ordering_value order_of_sign(int sign) noexcept {
  return sign < 0 ? ordering_value::Less : sign > 0 ? ordering_value::Greater : ordering_value::Equal;
}

ordering_value reversed(ordering_value order) noexcept {
  return order == ordering_value::Incomparable ? order : static_cast<ordering_value>(-static_cast<int>(order));
}

bool is_number(ObjectType kind) noexcept { return kind == ObjectType::Integer || kind == ObjectType::Float; }

// Values whose class may say how they compare.
bool may_compare_itself(const Any& value) noexcept {
  return value.has(object_traits::instance) || value.has(object_traits::callable);
}

double float_value(const Any& value) noexcept { return Float::unchecked(value).value(); }

ordering_value compare_numbers(const Any& a, const Any& b) noexcept {
  const bool a_is_integer = a.type() == ObjectType::Integer;
  const bool b_is_integer = b.type() == ObjectType::Integer;
  const auto& integer = object_of<object_value_integer>;
  if (a_is_integer) {
    return b_is_integer ? internal::compare_integers(integer(a), integer(b))
                        : internal::compare_integer_with_float(integer(a), float_value(b));
  }
  return b_is_integer ? reversed(internal::compare_integer_with_float(integer(b), float_value(a)))
                      : internal::compare_floats(float_value(a), float_value(b));
}

// One comparison with all that it leads to. The first error ends it.
class comparison {
 public:
  ordering_value compare(const Any& a, const Any& b);
  const Any& error() const noexcept { return error_; }

 private:
  ordering_value compare_lazy(const Any& a, const Any& b);
  ordering_value compare_items(std::span<const Any> a, std::span<const Any> b);
  ordering_value compare_maps(const HashMap_Generic& a, const HashMap_Generic& b);
  ordering_value compare_sets(const HashSet_Generic& a, const HashSet_Generic& b);
  ordering_value compare_described(const Any& a, const Any& b);
  ordering_value order_of_result(const Any& result, const Any& instance);

  ordering_value fail(Any error) noexcept {
    error_ = std::move(error);
    return ordering_value::Incomparable;
  }
  ordering_value fail_too_deep() { return fail(Error("[compare_objects] The values are nested too deeply.")); }

  Any error_;
};

ordering_value comparison::compare(const Any& a, const Any& b) {
  if (a.has(object_traits::lazy) || b.has(object_traits::lazy)) [[unlikely]] {
    return compare_lazy(a, b);
  }
  const ObjectType kind = a.type();
  const ObjectType other_kind = b.type();
  if (a.is_same(b)) {
    return kind == ObjectType::Float ? internal::compare_floats(float_value(a), float_value(b)) : ordering_value::Equal;
  }
  if (may_compare_itself(a) || may_compare_itself(b)) {
    return compare_described(a, b);
  }
  if (is_number(kind) && is_number(other_kind)) {
    return compare_numbers(a, b);
  }
  if (kind != other_kind) {
    return ordering_value::Incomparable;
  }
  switch (kind) {
    case ObjectType::None:  // empty handles and the shared object
      return ordering_value::Equal;
    case ObjectType::Boolean:  // two different ones
      return Boolean::unchecked(b).value() ? ordering_value::Less : ordering_value::Greater;
    case ObjectType::String:
      return order_of_sign(String::unchecked(a).view().compare(String::unchecked(b).view()));
    case ObjectType::ByteArray:
      return order_of_sign(ByteArray::unchecked(a).view().compare(ByteArray::unchecked(b).view()));
    case ObjectType::Tuple:
      return compare_items(object_of<object_value_tuple>(a).items(), object_of<object_value_tuple>(b).items());
    case ObjectType::List: {
      const item_row left = object_of<object_value_list>(a).share_items();
      const item_row right = object_of<object_value_list>(b).share_items();
      return compare_items(left.items(), right.items());
    }
    case ObjectType::HashMap:
      return compare_maps(HashMap_Generic::unchecked(a), HashMap_Generic::unchecked(b));
    case ObjectType::HashSet:
      return compare_sets(HashSet_Generic::unchecked(a), HashSet_Generic::unchecked(b));
    default:
      return ordering_value::Incomparable;
  }
}

ordering_value comparison::compare_lazy(const Any& a, const Any& b) {
  const Any left = internal::unwrap(a);
  const Any right = internal::unwrap(b);
  // An error that was given is a value; one that came out of forcing is a failure.
  for (const auto& [given, forced] : {std::pair(a, left), std::pair(b, right)}) {
    if (!given.is_same(forced) && is_error_result(forced)) {
      return fail(forced);
    }
  }
  return compare(left, right);
}

ordering_value comparison::compare_items(std::span<const Any> a, std::span<const Any> b) {
  const internal::nesting level;
  if (level.too_deep()) {
    return fail_too_deep();
  }
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    const ordering_value order = compare(a[i], b[i]);
    if (order != ordering_value::Equal) {
      return order;
    }
  }
  return a.size() < b.size()   ? ordering_value::Less
         : a.size() > b.size() ? ordering_value::Greater
                               : ordering_value::Equal;
}

ordering_value comparison::compare_maps(const HashMap_Generic& a, const HashMap_Generic& b) {
  const internal::nesting level;
  if (level.too_deep()) {
    return fail_too_deep();
  }
  const auto pairs = a.copyPairs();
  if (pairs.size() != b.length()) {
    return ordering_value::Incomparable;
  }
  for (const auto& [key, value] : pairs) {
    Any other;
    bool found = false;
    if (Any error = b.object().find(key, &other, &found); is_error_result(error)) {
      return fail(std::move(error));
    }
    if (!found || compare(value, other) != ordering_value::Equal) {
      return ordering_value::Incomparable;
    }
  }
  return ordering_value::Equal;
}

ordering_value comparison::compare_sets(const HashSet_Generic& a, const HashSet_Generic& b) {
  const internal::nesting level;
  if (level.too_deep()) {
    return fail_too_deep();
  }
  const std::vector<Any> items = a.copyItems();
  if (items.size() != b.length()) {
    return ordering_value::Incomparable;
  }
  for (const Any& item : items) {
    bool found = false;
    if (Any error = b.object().contains(item, &found); is_error_result(error)) {
      return fail(std::move(error));
    }
    if (!found) {
      return ordering_value::Incomparable;
    }
  }
  return ordering_value::Equal;
}

// The `__compare__` of the left value's class, else that of the right value's the other way round.
ordering_value comparison::compare_described(const Any& a, const Any& b) {
  for (const bool swapped : {false, true}) {
    const Any& receiver = swapped ? b : a;
    if (!may_compare_itself(receiver)) {
      continue;
    }
    const class_member* member = receiver.get()->object_class().find_member(Any::__compare__.entry());
    if (member == nullptr || member->method.empty()) {
      continue;
    }
    const internal::nesting level;
    if (level.too_deep()) {
      return fail_too_deep();
    }
    const Any row[] = {receiver, swapped ? a : b};
    const Any result = internal::unwrap(I_Callable_Generic::unchecked(member->method).callWith(row));
    if (result.type() == ObjectType::Undefined) {
      continue;
    }
    const ordering_value order = order_of_result(result, receiver);
    return swapped ? reversed(order) : order;
  }
  return ordering_value::Incomparable;
}

ordering_value comparison::order_of_result(const Any& result, const Any& instance) {
  if (Ordering::matches(result.get())) {
    return static_cast<ordering_value>(Ordering::unchecked(result).value());
  }
  if (Integer::matches(result.get())) {
    const Integer zero = 0;
    return internal::compare_integers(object_of<object_value_integer>(result), zero.object());
  }
  if (is_error_result(result)) {
    return fail(result);
  }
  return fail(Error(String("The method '__compare__' of {} returned {} instead of an Ordering.")
                        .arg(qualname(instance), qualname(result))));
}

}  // namespace

Result<Ordering> compare_objects(const Any& a, const Any& b) {
  comparison walk;
  const ordering_value order = walk.compare(a, b);
  if (is_error_result(walk.error())) {
    return Result<Ordering>::unchecked(walk.error());
  }
  return Ordering(order);
}

ordering_value compare_objects_value(const Any& a, const Any& b) { return comparison().compare(a, b); }

}  // namespace ling
