// compare_objects and equal_objects: how two values compare, and whether they are equal. One dispatch on their kinds.
#include "ling/boolean.h"
#include "ling/byte_array.h"
#include "ling/detail/nesting.h"
#include "ling/error.h"
#include "ling/hash_set.h"
#include "ling/list.h"
#include "ling/reflection.h"
#include "ling/tuple.h"
#include "ling/values/exact_number.h"

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

// What is asked of two values. Where the answer is not Equal, equality has no more to say than Incomparable.
enum class question {
  order,     // as the values themselves tell it
  equality,  // whether they are equal, which may be so, or not, of values without an order
  place,     // of items in containers: their order, where only equal ones are Equal
};

// A method with its receiver is made anew whenever somebody asks for it.
const object_value_bound* bound_method_in(const Any& value) noexcept {
  return value.type() == ObjectType::Callable && dynamic_cast<const object_value_bound*>(value.get()) != nullptr
             ? static_cast<const object_value_bound*>(value.get())
             : nullptr;
}

const object_value_multimethod* multimethod_in(const Any& value) noexcept {
  return value.type() == ObjectType::Multimethod ? static_cast<const object_value_multimethod*>(value.get()) : nullptr;
}

// What the class of a value offers under the name, for values that have a say in how they compare; null when nothing.
const Any* answering_method(const Any& value, const meta_method_untyped& name) {
  const class_member* member =
      may_compare_itself(value) ? value.get()->object_class().find_member(name.entry()) : nullptr;
  return member == nullptr || member->method.empty() ? nullptr : &member->method;
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
  ordering_value compare(const Any& a, const Any& b, question asked);
  const Any& error() const noexcept { return error_; }

 private:
  ordering_value compare_lazy(const Any& a, const Any& b, question asked);
  ordering_value compare_items(std::span<const Any> a, std::span<const Any> b, question asked);
  ordering_value compare_maps(const HashMap_Generic& a, const HashMap_Generic& b);
  ordering_value compare_sets(const HashSet_Generic& a, const HashSet_Generic& b);
  ordering_value compare_bound_methods(const object_value_bound& a, const object_value_bound& b);
  ordering_value compare_overloads(const object_value_multimethod& a, const object_value_multimethod& b);
  ordering_value compare_described(const Any& a, const Any& b, question asked);
  ordering_value ask(const Any& a, const Any& b, const meta_method_untyped& first, const meta_method_untyped& second);
  ordering_value outcome_of(const Any& result, const Any& instance, const meta_method_untyped& method);

  ordering_value fail(Any error) noexcept {
    error_ = std::move(error);
    return ordering_value::Incomparable;
  }
  ordering_value fail_too_deep() { return fail(Error("[compare_objects] The values are nested too deeply.")); }

  Any error_;
};

ordering_value comparison::compare(const Any& a, const Any& b, question asked) {
  if (a.has(object_traits::lazy) || b.has(object_traits::lazy)) [[unlikely]] {
    return compare_lazy(a, b, asked);
  }
  const ObjectType kind = a.type();
  const ObjectType other_kind = b.type();
  if (a.is_same(b)) {
    return kind == ObjectType::Float ? internal::compare_floats(float_value(a), float_value(b)) : ordering_value::Equal;
  }
  if (may_compare_itself(a) || may_compare_itself(b)) {
    return compare_described(a, b, asked);
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
      return compare_items(object_of<object_value_tuple>(a).items(), object_of<object_value_tuple>(b).items(), asked);
    case ObjectType::List: {
      const item_row left = object_of<object_value_list>(a).share_items();
      const item_row right = object_of<object_value_list>(b).share_items();
      return compare_items(left.items(), right.items(), asked);
    }
    case ObjectType::HashMap:
      return compare_maps(HashMap_Generic::unchecked(a), HashMap_Generic::unchecked(b));
    case ObjectType::HashSet:
      return compare_sets(HashSet_Generic::unchecked(a), HashSet_Generic::unchecked(b));
    default:
      return ordering_value::Incomparable;
  }
}

ordering_value comparison::compare_lazy(const Any& a, const Any& b, question asked) {
  const Any left = internal::unwrap(a);
  const Any right = internal::unwrap(b);
  // An error that was given is a value; one that came out of forcing is a failure.
  for (const auto& [given, forced] : {std::pair(a, left), std::pair(b, right)}) {
    if (!given.is_same(forced) && is_error_result(forced)) {
      return fail(forced);
    }
  }
  return compare(left, right, asked);
}

ordering_value comparison::compare_items(std::span<const Any> a, std::span<const Any> b, question asked) {
  const internal::nesting level;
  if (level.too_deep()) {
    return fail_too_deep();
  }
  if (asked == question::equality && a.size() != b.size()) {
    return ordering_value::Incomparable;
  }
  const question of_items = asked == question::equality ? asked : question::place;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    const ordering_value order = compare(a[i], b[i], of_items);
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
    internal::key_lookup other = b.object().find(key);
    if (!other.error.empty()) {
      return fail(std::move(other.error));
    }
    if (!other.found || compare(value, other.value, question::equality) != ordering_value::Equal) {
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
    const Result<Boolean> found = b.object().contains(item);
    if (found.is_error()) {
      return fail(found);
    }
    if (!found.value().value()) {
      return ordering_value::Incomparable;
    }
  }
  return ordering_value::Equal;
}

// The same method of the very same receiver.
ordering_value comparison::compare_bound_methods(const object_value_bound& a, const object_value_bound& b) {
  const internal::nesting level;
  if (level.too_deep()) {
    return fail_too_deep();
  }
  const bool same_receiver = object_id(a.instance()) == object_id(b.instance());
  return same_receiver ? compare(a.callable(), b.callable(), question::equality) : ordering_value::Incomparable;
}

ordering_value comparison::compare_overloads(const object_value_multimethod& a, const object_value_multimethod& b) {
  const internal::nesting level;
  if (level.too_deep()) {
    return fail_too_deep();
  }
  bool equal = a.name() == b.name() && a.overloads().size() == b.overloads().size();
  for (std::size_t i = 0; equal && i < a.overloads().size(); ++i) {
    equal = compare(a.overloads()[i], b.overloads()[i], question::equality) == ordering_value::Equal;
  }
  return equal ? ordering_value::Equal : ordering_value::Incomparable;
}

ordering_value comparison::compare_described(const Any& a, const Any& b, question asked) {
  if (const auto *left = bound_method_in(a), *right = bound_method_in(b); left != nullptr && right != nullptr) {
    return compare_bound_methods(*left, *right);
  }
  if (const auto *left = multimethod_in(a), *right = multimethod_in(b); left != nullptr && right != nullptr) {
    return compare_overloads(*left, *right);
  }
  if (asked == question::order) {
    return ask(a, b, Any::__compare__, Any::__equals__);
  }
  const ordering_value equality = ask(a, b, Any::__equals__, Any::__compare__);
  const bool settled =
      equality == ordering_value::Equal || asked == question::equality || !error_.empty() ||
      (answering_method(a, Any::__equals__) == nullptr && answering_method(b, Any::__equals__) == nullptr);
  if (settled) {
    return equality;
  }
  // Values that are not equal may come in no order all the same.
  const ordering_value order = ask(a, b, Any::__compare__, Any::__equals__);
  return order == ordering_value::Equal ? ordering_value::Incomparable : order;
}

// Asks the left value, then the right one the other way round, each by the first of the two methods that its class has;
// whoever has the first one is asked before whoever has only the second. Undefined leaves it to the next.
ordering_value comparison::ask(const Any& a, const Any& b, const meta_method_untyped& first,
                               const meta_method_untyped& second) {
  const Any* const by_first[] = {answering_method(a, first), answering_method(b, first)};
  for (const bool second_choice : {false, true}) {
    for (const bool swapped : {false, true}) {
      const Any& receiver = swapped ? b : a;
      const bool has_first = by_first[swapped] != nullptr;
      const meta_method_untyped& name = second_choice ? second : first;
      const Any* const method = !second_choice ? by_first[swapped]
                                : has_first    ? nullptr
                                               : answering_method(receiver, second);
      if (method == nullptr) {
        continue;
      }
      const internal::nesting level;
      if (level.too_deep()) {
        return fail_too_deep();
      }
      const Any row[] = {receiver, swapped ? a : b};
      const Any result = internal::unwrap(I_Callable_Generic::unchecked(*method).callWith(row));
      if (result.type() != ObjectType::Undefined) {
        const ordering_value order = outcome_of(result, receiver, name);
        return swapped ? reversed(order) : order;
      }
    }
  }
  return ordering_value::Incomparable;
}

ordering_value comparison::outcome_of(const Any& result, const Any& instance, const meta_method_untyped& method) {
  const bool asks_equality = &method.entry() == &Any::__equals__.entry();
  if (asks_equality && Boolean::matches(result.get())) {
    return Boolean::unchecked(result).value() ? ordering_value::Equal : ordering_value::Incomparable;
  }
  if (!asks_equality && Ordering::matches(result.get())) {
    return static_cast<ordering_value>(Ordering::unchecked(result).value());
  }
  if (!asks_equality && Integer::matches(result.get())) {
    const Integer zero = 0;
    return internal::compare_integers(object_of<object_value_integer>(result), zero.object());
  }
  if (is_error_result(result)) {
    return fail(result);
  }
  return fail(Error(
      String("The method '{}' of {} returned {} instead of {}.")
          .arg(method.text(), qualname(instance), qualname(result), asks_equality ? "a Boolean" : "an Ordering")));
}

}  // namespace

Result<Ordering> compare_objects(const Any& a, const Any& b) {
  comparison walk;
  const ordering_value order = walk.compare(a, b, question::order);
  if (is_error_result(walk.error())) {
    return Result<Ordering>::unchecked(walk.error());
  }
  return Ordering(order);
}

ordering_value compare_objects_value(const Any& a, const Any& b) {
  comparison walk;
  const ordering_value order = walk.compare(a, b, question::order);
  internal::tolerate_error(walk.error());
  return order;
}

Result<Boolean> equal_objects(const Any& a, const Any& b) {
  comparison walk;
  const ordering_value order = walk.compare(a, b, question::equality);
  if (is_error_result(walk.error())) {
    return Result<Boolean>::unchecked(walk.error());
  }
  return Boolean(order == ordering_value::Equal);
}

}  // namespace ling
