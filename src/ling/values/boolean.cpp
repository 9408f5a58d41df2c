// Boolean: the shared true and false, and the truth of any value.
#include "ling/boolean.h"

#include "ling/byte_array.h"
#include "ling/detail/definitions.h"
#include "ling/detail/immortal.h"
#include "ling/hash_map.h"
#include "ling/hash_set.h"
#include "ling/interfaces.h"
#include "ling/reflection.h"

namespace ling {

namespace internal {

constinit const class_definition<Boolean> boolean_class("Boolean", [](class_builder<Boolean>& c) {
  c.module("ling")
      .doc("True or false.")
      .parent(I_Immutable::getClass())
      .constructor("value", "The truth of a value: false for None, zero and whatever is empty.",
                   [](const Class_Generic&, const Any& value) { return Boolean::from(value); });
});

}  // namespace internal

namespace {

class object_value_boolean final : public object_value {
 public:
  constexpr object_value_boolean() noexcept : object_value(object_traits::immortal) {}
  ObjectType type() const noexcept override { return ObjectType::Boolean; }
  object_value_class& object_class() const override { return internal::boolean_class.required(); }
};

constinit internal::immortal<object_value_boolean> true_object;
constinit internal::immortal<object_value_boolean> false_object;

// An instance is empty when its `__length__` is 0; a length that cannot be told is none.
bool has_items(const Any& instance) {
  const auto length_property = property_of(instance, members::property::__length__);
  if (!length_property) {
    return true;
  }
  const Any length = internal::unwrap(length_property->read(instance));
  internal::tolerate_error(length);
  return !Integer::matches(length.get()) || Integer::unchecked(length).unsigned_value() != 0;
}

bool truth_of(const Any& value) {
  switch (value.type()) {
    case ObjectType::None:
    case ObjectType::Undefined:
      return false;
    case ObjectType::Boolean:
      return Boolean::unchecked(value).value();
    case ObjectType::Integer:
      return Integer::unchecked(value).unsigned_value() != 0;
    case ObjectType::Float:
      return Float::unchecked(value).value() != 0;
    case ObjectType::String:
      return !String::unchecked(value).empty();
    case ObjectType::ByteArray:
      return ByteArray::unchecked(value).length() != 0;
    case ObjectType::Tuple:
      return Tuple_Generic::unchecked(value).length() != 0;
    case ObjectType::List:
      return List_Generic::unchecked(value).length() != 0;
    case ObjectType::HashMap:
      return HashMap_Generic::unchecked(value).length() != 0;
    case ObjectType::HashSet:
      return HashSet_Generic::unchecked(value).length() != 0;
    case ObjectType::Instance:
      return is_error_result(value) || has_items(value);
    default:
      return true;
  }
}

}  // namespace

constinit object_value& g_value_boolean_true = true_object.object;
constinit object_value& g_value_boolean_false = false_object.object;

Any internal::boolean_any(bool value) noexcept {
  return Any::share(value ? &true_object.object : &false_object.object);
}

Boolean Boolean::from(const Any& value) {
  if (!value.has(object_traits::lazy)) [[likely]] {
    return truth_of(value);
  }
  const Any forced = internal::unwrap(value);
  internal::tolerate_error(forced);
  return truth_of(forced);
}

Type Boolean::getType() { return Type::of(getClass()); }

Class_Generic Boolean::getClass() { return Class_Generic(internal::boolean_class.required()); }

}  // namespace ling
