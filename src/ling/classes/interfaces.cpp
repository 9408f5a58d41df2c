// Interfaces: how they are recognised, and the operations of those that are no collections.
#include "ling/interfaces.h"

#include "ling/algorithms/deep_clone.h"
#include "ling/detail/definitions.h"
#include "ling/detail/interface_call.h"
#include "ling/hash_set.h"

namespace ling {

using internal::call_member;
using internal::promised;

#define LING_DEFINE_INTERFACE(Name, definition)                                        \
  bool Name::matches(const object_value* object) noexcept {                            \
    return object != nullptr && internal::is_object_of(*object, internal::definition); \
  }                                                                                    \
  Type Name::getType() { return Type::of(getClass()); }                                \
  Class_Generic Name::getClass() { return internal::definition.required(); }

LING_DEFINE_INTERFACE(I_Cloneable, i_cloneable_class)
LING_DEFINE_INTERFACE(I_RuntimeOnly, i_runtime_only_class)
LING_DEFINE_INTERFACE(I_HasName, i_has_name_class)
LING_DEFINE_INTERFACE(I_HasDoc, i_has_doc_class)
LING_DEFINE_INTERFACE(I_HasCode, i_has_code_class)
LING_DEFINE_INTERFACE(I_Iterator_Generic, i_iterator_class)
LING_DEFINE_INTERFACE(I_Iterable_Generic, i_iterable_class)
LING_DEFINE_INTERFACE(I_Sequence_Generic, i_sequence_class)
LING_DEFINE_INTERFACE(I_MutableSequence_Generic, i_mutable_sequence_class)
LING_DEFINE_INTERFACE(I_Map_Generic, i_map_class)
LING_DEFINE_INTERFACE(I_MutableMap_Generic, i_mutable_map_class)
LING_DEFINE_INTERFACE(I_Set_Generic, i_set_class)
LING_DEFINE_INTERFACE(I_MutableSet_Generic, i_mutable_set_class)
LING_DEFINE_INTERFACE(I_Tuple_Generic, i_tuple_class)
LING_DEFINE_INTERFACE(I_Language, i_language_class)
#undef LING_DEFINE_INTERFACE

// None is immutable whether it is an object or an empty handle.
bool I_Immutable::matches(const object_value* object) noexcept {
  return object == nullptr || internal::is_object_of(*object, internal::i_immutable_class);
}
Type I_Immutable::getType() { return Type::of(getClass()); }
Class_Generic I_Immutable::getClass() { return internal::i_immutable_class.required(); }

Any I_Cloneable::clone() const {
  switch (type()) {
    case ObjectType::List:
      return static_cast<const object_value_list*>(get())->slice(0, INT64_MAX);
    case ObjectType::HashMap:
      return static_cast<const object_value_hash_map*>(get())->clone();
    case ObjectType::HashSet:
      return static_cast<const object_value_hash_set*>(get())->clone();
    default:
      return call_member(*this, members::clone);
  }
}

Any I_Cloneable::deepClone() const {
  switch (type()) {
    case ObjectType::List:
    case ObjectType::HashMap:
    case ObjectType::HashSet:
      return internal::deep_clone(*this);
    default:
      return call_member(*this, members::deepClone);
  }
}

Result<String> I_HasName::name() const { return promised<String>(propertyValue(members::property::name)); }
Result<String> I_HasDoc::doc() const { return promised<String>(propertyValue(members::property::doc)); }
Result<String> I_HasCode::code() const { return promised<String>(propertyValue(members::property::code)); }

Result<String> I_Language::toCode(const Any& value) const {
  return promised<String>(call_member(*this, members::toCode, value));
}
Result<Any> I_Language::resolve(const String& name) const {
  return promised<Any>(call_member(*this, members::resolve, name));
}
Result<Any> I_Language::evaluateExpression(const String& code, const Any& scope) const {
  return promised<Any>(call_member(*this, members::evaluateExpression, code, scope));
}
Result<Any> I_Language::evaluate(const String& code, const Any& scope) const {
  return promised<Any>(call_member(*this, members::evaluate, code, scope));
}
bool I_Language::canEvaluate() const {
  const Any answer = internal::unwrap(propertyValue(members::property::canEvaluate));
  internal::tolerate_error(answer);
  return Boolean::matches(answer.get()) && Boolean::unchecked(answer).value();
}

}  // namespace ling
