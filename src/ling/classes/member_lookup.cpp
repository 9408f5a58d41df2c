// Finding the members of a value: its own, those of its class, those that a class with dynamic members makes up; and
// giving it members of its own.
#include "ling/class.h"
#include "ling/classes/takeover.h"
#include "ling/detail/interface_call.h"
#include "ling/error.h"
#include "ling/none.h"
#include "ling/reflection.h"

namespace ling {

const object_value_callable* internal::takes_over(const Any& value, meta_method_untyped name) {
  if (value.empty()) {
    return nullptr;
  }
  const object_value_class& of_class = value.get()->object_class();
  if (!of_class.has_flag(class_flags::member_access)) {
    return nullptr;
  }
  const class_member* member = of_class.find_member(name.entry());
  return member == nullptr || member->method.empty() ? nullptr
                                                     : static_cast<const object_value_callable*>(member->method.get());
}

const object_value_callable* internal::takes_over_hooks(const Any& value, meta_method_untyped name) {
  const object_value_callable* const meta = takes_over(value, name);
  return meta != nullptr && value.get()->object_class().hooks_stand_for(meta) ? nullptr : meta;
}

const dynamic_member_hooks* internal::hooks_of(const Any& value) {
  return value.empty() ? nullptr : value.get()->object_class().hooks();
}

using internal::call;
using internal::hooks_of;
using internal::takes_over;
using internal::takes_over_hooks;

namespace {

const class_member* member_of(const Any& value, const name_entry& name) {
  return raw_class_of(value).object().find_member(name);
}

// What a class that takes over member access answers. An Error stays in the union: the class could not tell.
template <class T>
Union<T, None> answered(Any answer) {
  return is_error_result(answer) ? Union<T, None>::unchecked(std::move(answer)) : T::cast(answer);
}

const object_value_instance* as_instance(const Any& value) {
  return value.has(object_traits::instance) ? static_cast<const object_value_instance*>(value.get()) : nullptr;
}

// What the value alone has under the name, else what its class has.
template <class T>
Union<T, None> raw_member_of(const Any& value, const name_entry& name,
                             Any (object_value_instance::*own_member)(const name_entry&) const,
                             Any class_member::*of_class) {
  if (const object_value_instance* instance = as_instance(value)) {
    if (Any own = (instance->*own_member)(name); !own.empty()) {
      return Union<T, None>::unchecked(std::move(own));
    }
  }
  const class_member* member = member_of(value, name);
  return Union<T, None>::unchecked(member == nullptr ? Any() : member->*of_class);
}

}  // namespace

Union<I_Callable_Generic, None> raw_method_of(const Any& value, meta_method_untyped name) {
  return raw_member_of<I_Callable_Generic>(value, name.entry(), &object_value_instance::own_method,
                                           &class_member::method);
}

Union<I_Callable_Generic, None> method_of(const Any& value, meta_method_untyped name) {
  if (const object_value_callable* meta = takes_over_hooks(value, Any::__method__)) {
    return answered<I_Callable_Generic>(call(*meta, {value, name.name()}));
  }
  auto method = raw_method_of(value, name);
  if (!method) {
    if (const dynamic_member_hooks* hooks = hooks_of(value)) {
      return answered<I_Callable_Generic>(hooks->method(value, name.entry()));
    }
  }
  return method;
}

Union<Property, None> raw_property_of(const Any& value, meta_property_untyped name) {
  return raw_member_of<Property>(value, name.entry(), &object_value_instance::own_property, &class_member::property);
}

Union<Property, None> property_of(const Any& value, meta_property_untyped name) {
  if (const object_value_callable* meta = takes_over(value, Any::__property__)) {
    return answered<Property>(call(*meta, {value, name.name()}));
  }
  return raw_property_of(value, name);
}

namespace {
HashMap_Generic own_members(const Any& value, meta_method_untyped meta_name,
                            HashMap_Generic (object_value_instance::*of_instance)() const) {
  if (const object_value_callable* meta = takes_over(value, meta_name)) {
    const Any answer = call(*meta, {value});
    internal::tolerate_error(answer);
    const auto members = HashMap_Generic::cast(answer);
    return members ? members.value() : HashMap_Generic();
  }
  const object_value_instance* instance = as_instance(value);
  return instance == nullptr ? HashMap_Generic() : (instance->*of_instance)();
}
}  // namespace

HashMap_Generic own_methods_of(const Any& value) {
  return own_members(value, Any::__ownMethods__, &object_value_instance::own_methods);
}

HashMap_Generic own_properties_of(const Any& value) {
  return own_members(value, Any::__ownProperties__, &object_value_instance::own_properties);
}

Result<None> raw_insert_property(const Any& value, meta_property_untyped name, const Property& property) {
  if (value.has(object_traits::instance)) {
    static_cast<object_value_instance*>(value.get())->insert_own_property(name.entry(), property);
    return None();
  }
  if (const auto of_class = Class_Generic::cast(value)) {
    of_class.value().object().add_class_property_unsafe(name.name(), property);
    return None();
  }
  return Error(
      String("The property '{}' cannot be added to a value of class {}.").arg(name.text(), class_of(value).name()));
}

Result<None> insert_property_value(const Any& value, meta_property_untyped name, const Any& property_value) {
  const Property property = Property::constant(property_value);
  if (const object_value_callable* meta = takes_over(value, Any::__insertProperty__)) {
    return internal::done(call(*meta, {value, name.name(), property}));
  }
  return raw_insert_property(value, name, property);
}

Result<None> insert_method(const Any& value, meta_method_untyped name, const I_Callable_Generic& method) {
  if (const object_value_callable* meta = takes_over(value, Any::__insertMethod__)) {
    return internal::done(call(*meta, {value, name.name(), method}));
  }
  if (value.has(object_traits::instance)) {
    static_cast<object_value_instance*>(value.get())->insert_own_method(name.entry(), method);
    return None();
  }
  if (const auto of_class = Class_Generic::cast(value)) {
    of_class.value().object().add_class_method_unsafe(name.name(), method);
    return None();
  }
  return Error(
      String("The method '{}' cannot be added to a value of class {}.").arg(name.text(), class_of(value).name()));
}

Union<Property, None> own_property_of(const Any& value, meta_property_untyped name) {
  if (const object_value_callable* meta = takes_over(value, Any::__ownProperty__)) {
    return answered<Property>(call(*meta, {value, name.name()}));
  }
  const object_value_instance* instance = as_instance(value);
  return Union<Property, None>::unchecked(instance == nullptr ? Any() : instance->own_property(name.entry()));
}

Union<I_Callable_Generic, None> own_method_of(const Any& value, meta_method_untyped name) {
  if (const object_value_callable* meta = takes_over(value, Any::__ownMethod__)) {
    return answered<I_Callable_Generic>(call(*meta, {value, name.name()}));
  }
  const object_value_instance* instance = as_instance(value);
  return Union<I_Callable_Generic, None>::unchecked(instance == nullptr ? Any() : instance->own_method(name.entry()));
}

namespace {
template <class Name>
Result<Boolean> remove_member(const Any& value, Name name, meta_method_untyped meta_name,
                              bool (object_value_instance::*remove)(const name_entry&)) {
  if (const object_value_callable* meta = takes_over(value, meta_name)) {
    return internal::promised<Boolean>(call(*meta, {value, name.name()}));
  }
  return value.has(object_traits::instance) &&
         (static_cast<object_value_instance*>(value.get())->*remove)(name.entry());
}
}  // namespace

Result<Boolean> remove_property(const Any& value, meta_property_untyped name) {
  return remove_member(value, name, Any::__removeProperty__, &object_value_instance::remove_own_property);
}

Result<Boolean> remove_method(const Any& value, meta_method_untyped name) {
  return remove_member(value, name, Any::__removeMethod__, &object_value_instance::remove_own_method);
}

}  // namespace ling
