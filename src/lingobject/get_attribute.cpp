// Reading attributes: from a name to a field, a property's value or a bound method.
//
// Members of classes are borrowed from the class's member table, which keeps for ever what it once held; only members
// of the object alone are counted.
#include "ling/instance.h"
#include "ling/property.h"
#include "ling/reflection.h"
#include "lingobject/attribute_name.h"
#include "lingobject/ling_object.h"
#include "lingobject/missing_attribute.h"
#include "lingobject/slot_bodies.h"
#include "lingobject/special_names.h"

namespace ling::cpython {

namespace {

object_value_class& class_in(const Any& value) {
  return value.empty() ? raw_class_of(value).object() : value.get()->object_class();
}

const object_value_instance* instance_in(const Any& value) {
  return value.has(object_traits::instance) ? static_cast<const object_value_instance*>(value.get()) : nullptr;
}

bool has_members_of_its_own(const Any& value) {
  const object_value_instance* instance = instance_in(value);
  return instance != nullptr && instance->may_have_own_members();
}

slot_result read_property(const Any& property, const Any& value) {
  const auto& declared = static_cast<const object_value_property&>(*property.get());
  const recursion_guard guard;
  if (!guard) {
    return slot_result::raised();
  }
  return declared.getter().object().call({&value, declared.getter_is_independent() ? 0u : 1u});
}

// A method as Python gets it: bound, unless it takes no receiver. `bind_member` is for methods that a class keeps.
slot_result bind_own(const Any& method, const Any& value) {
  const borrowed<I_Callable_Generic> callable(method);
  return callable->isIndependent() ? method : Any(callable->bindInstance(value));
}
slot_result bind_member(const Any& method, PyObject* wrapper) {
  const bool is_independent = static_cast<const object_value_callable&>(*method.get()).is_independent();
  return is_independent ? slot_result(method) : slot_result(wrap_bound(method, wrapper));
}

// Steps of the lookup; each answers with nothing when it has nothing under the name.

// For classes that take over member access, whose answers only the runtime can tell.
slot_result read_through_runtime(const Any& value, const name_entry& name) {
  if (const auto property = property_of(value, meta_property_untyped(name))) {
    return read_property(property, value);
  }
  const auto method = method_of(value, meta_method_untyped(name));
  return method ? bind_own(method, value) : slot_result::absent();
}

slot_result read_object_or_class(const Any& value, PyObject* wrapper, const class_member* member,
                                 const name_entry& name) {
  const object_value_instance* instance = has_members_of_its_own(value) ? instance_in(value) : nullptr;
  if (instance != nullptr) {
    if (const Any own = instance->own_property(name); !own.empty()) {
      return read_property(own, value);
    }
  }
  if (member != nullptr && !member->property.empty()) {
    return read_property(member->property, value);
  }
  if (instance != nullptr) {
    if (const Any own = instance->own_method(name); !own.empty()) {
      return bind_own(own, value);
    }
  }
  return member != nullptr && !member->method.empty() ? bind_member(member->method, wrapper) : slot_result::absent();
}

// What a class offers to its instances and through its name.
slot_result read_defined(const Any& value, const name_entry& name) {
  const class_member* member = static_cast<const object_value_class&>(*value.get()).find_member(name);
  if (member != nullptr && !member->property.empty()) {
    return read_property(member->property, value);
  }
  return member != nullptr && !member->method.empty() ? slot_result(member->method) : slot_result::absent();
}

constexpr std::uint64_t takes_over_members = class_flags::dynamic_members | class_flags::member_access;

slot_result read_member(const Any& value, PyObject* wrapper, const name_entry& name) {
  const object_value_class& of_class = class_in(value);
  const class_member* member = of_class.find_member(name);
  if (member != nullptr && member->field != nullptr) {
    if (const object_value_instance* instance = instance_in(value)) {
      return instance->field(member->field_index);
    }
  }
  slot_result found = of_class.has_flag(takes_over_members) ? read_through_runtime(value, name)
                                                            : read_object_or_class(value, wrapper, member, name);
  if (found.is_absent() && value.type() == ObjectType::Class) {
    found = read_defined(value, name);
  }
  return found;
}

slot_result read_attribute(const Any& value, PyObject* wrapper, const name_entry& entry, PyObject* name) {
  slot_result found = read_member(value, wrapper, entry);
  if (found.is_absent()) {
    found = error_no_attribute(class_in(value), name);
  }
  return found;
}

// A name that no class declares.
slot_result read_unknown(const Any& value, PyObject* wrapper, PyObject* name) {
  if (object_value_class& of_class = class_in(value);
      !of_class.has_flag(takes_over_members) && !has_members_of_its_own(value)) [[likely]] {
    return error_no_attribute(of_class, name);
  }
  const utf8_text text(name);
  if (!text) {
    return slot_result::raised();
  }
  return read_attribute(value, wrapper, *internal::name_to_look_up(text.view()), name);
}

// A lazy value's own members, for which it is not forced.
slot_result read_own_of_lazy(const Any& value, const name_entry& name) {
  if (const auto property = raw_property_of(value, meta_property_untyped(name))) {
    return read_property(property, value);
  }
  const auto method = raw_method_of(value, meta_method_untyped(name));
  return method ? slot_result(method.value().bindInstance(value)) : slot_result::absent();
}

// What a lazy value yields answers for all the rest, as if it had been asked itself.
slot_result read_lazy(const Any& value, const attribute_name& known, PyObject* name) {
  if (known.meaning == attribute_name::kind::member) {
    if (slot_result own = read_own_of_lazy(value, *known.entry); !own.is_absent()) {
      return own;
    }
  }
  const PyObjectPtr yielded = yielded_object(value);
  return yielded ? slot_result(PyObjectPtr(PyObject_GetAttr(yielded.get(), name))) : slot_result::raised();
}

}  // namespace

slot_result get_attribute(const Any& value, PyObject* wrapper, PyObject* name) {
  const attribute_name known = attribute_name_of(name);
  const bool is_lazy = value.has(object_traits::lazy);
  switch (known.meaning) {
    case attribute_name::kind::member:
      return is_lazy ? read_lazy(value, known, name) : read_attribute(value, wrapper, *known.entry, name);
    case attribute_name::kind::unknown:
      return is_lazy ? read_lazy(value, known, name) : read_unknown(value, wrapper, name);
    case attribute_name::kind::special: {
      // A doc that is computed may ask for itself.
      const recursion_guard guard;
      return guard ? known.special->read(is_lazy ? internal::unwrap(value) : value) : slot_result::raised();
    }
    case attribute_name::kind::hidden:
      return slot_result::absent();
    case attribute_name::kind::invalid:
      break;
  }
  return slot_result::raised();
}

slot_result get_property(const Any& value, const name_entry* name) {
  if (name == nullptr || name->text.empty()) {
    return slot_result(slot_exception::attribute_error, "Invalid Ling property name.");
  }
  if (value.has(object_traits::lazy)) [[unlikely]] {
    const Any yielded = internal::unwrap(value);
    return is_error_result(yielded) ? slot_result(yielded) : get_property(yielded, name);
  }
  const auto property = property_of(value, meta_property_untyped(*name));
  return property ? read_property(property, value)
                  : slot_result(slot_exception::attribute_error, String("Attribute not found: {}.").arg(name->text));
}

}  // namespace ling::cpython
