// Member access through a handle, and lazy values.
#include "ling/any.h"

#include "ling/class.h"
#include "ling/detail/argument_row.h"
#include "ling/detail/interface_call.h"
#include "ling/error.h"
#include "ling/lazy.h"
#include "ling/module.h"
#include "ling/none.h"
#include "ling/reflection.h"

namespace ling {

// --- fields ---------------------------------------------------------------------------------------------------------

namespace {

std::optional<std::size_t> field_index(const Any& value, const name_entry& name) {
  return value.has(object_traits::instance) ? value.get()->object_class().find_field(name) : std::nullopt;
}

Error error_field_not_found(const Any& value, const name_entry& name) {
  return Error(String("The field '{}' is missing in '{}'.").arg(name.text, class_of(value).name()));
}

Error error_read_only(const Any& value, const name_entry& name) {
  return Error(String("The property '{}' is read-only for '{}'.").arg(name.text, display_text(value)));
}

// The meta-method by which the class of the value takes over a part of member access, null when it does not.
const object_value_callable* takes_over(const Any& value, meta_method_untyped name) {
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

const dynamic_member_hooks* hooks_of(const Any& value) {
  return value.empty() ? nullptr : value.get()->object_class().hooks();
}

Any call(const object_value_callable& callable, std::initializer_list<Any> arguments) {
  return callable.call(std::span<const Any>(arguments.begin(), arguments.size()));
}

Any error_or_none(Any outcome) { return is_error_result(outcome) ? std::move(outcome) : Any(None()); }

}  // namespace

Any Any::fieldValue(meta_field_untyped name) const {
  const std::optional<std::size_t> index = field_index(*this, name.entry());
  return index ? static_cast<const object_value_instance*>(object_)->field(*index)
               : Any(error_field_not_found(*this, name.entry()));
}

Any Any::setFieldValue(meta_field_untyped name, const Any& value) const {
  const std::optional<std::size_t> index = field_index(*this, name.entry());
  if (!index) {
    return error_field_not_found(*this, name.entry());
  }
  static_cast<object_value_instance*>(object_)->set_field(*index, value);
  return None();
}

// --- properties -----------------------------------------------------------------------------------------------------

namespace {

// What a class offers under its own name: a property that takes no instance.
Union<Property, None> class_level_property(const Any& value, meta_property_untyped name) {
  const auto of_class = Class_Generic::cast(value);
  auto property = of_class ? of_class.value().definedProperty(name) : None();
  return property && property->object().getter_is_independent() ? property : None();
}

}  // namespace

Any Any::propertyValue(meta_property_untyped name) const {
  if (const object_value_callable* meta = takes_over(*this, __propertyValue__)) {
    return call(*meta, {*this, name.name()});
  }
  if (const auto property = raw_property_of(*this, name)) {
    return property.value().read(*this);
  }
  if (const dynamic_member_hooks* hooks = hooks_of(*this)) {
    return hooks->get(*this, name.entry());
  }
  if (const auto property = class_level_property(*this, name)) {
    return property.value().read(*this);
  }
  return error_property_not_found(*this, name);
}

Any Any::setPropertyValue(meta_property_untyped name, const Any& value) const {
  if (const object_value_callable* meta = takes_over(*this, __setPropertyValue__)) {
    return error_or_none(internal::unwrap(call(*meta, {*this, name.name(), value})));
  }
  if (const auto property = raw_property_of(*this, name)) {
    return property.value().hasSetter() ? property.value().write(*this, value)
                                        : Any(error_read_only(*this, name.entry()));
  }
  if (const dynamic_member_hooks* hooks = hooks_of(*this)) {
    return error_or_none(hooks->set(*this, name.entry(), value));
  }
  return error_property_not_found(*this, name);
}

Union<I_Callable_Generic, None> Any::boundMethod(meta_method_untyped name) const {
  const auto method = method_of(*this, name);
  if (!method) {
    return method;
  }
  return method.value().isIndependent() ? method.value() : method.value().bindInstance(*this);
}

// --- member lookup --------------------------------------------------------------------------------------------------

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

}  // namespace

Union<I_Callable_Generic, None> raw_method_of(const Any& value, meta_method_untyped name) {
  if (const object_value_instance* instance = as_instance(value)) {
    if (Any own = instance->own_method(name.entry()); !own.empty()) {
      return Union<I_Callable_Generic, None>::unchecked(std::move(own));
    }
  }
  const class_member* member = member_of(value, name.entry());
  return Union<I_Callable_Generic, None>::unchecked(member == nullptr ? Any() : member->method);
}

Union<I_Callable_Generic, None> method_of(const Any& value, meta_method_untyped name) {
  if (const object_value_callable* meta = takes_over(value, Any::__method__)) {
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
  if (const object_value_instance* instance = as_instance(value)) {
    if (Any own = instance->own_property(name.entry()); !own.empty()) {
      return Union<Property, None>::unchecked(std::move(own));
    }
  }
  const class_member* member = member_of(value, name.entry());
  return Union<Property, None>::unchecked(member == nullptr ? Any() : member->property);
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

Any call_method(const Any& value, meta_method_untyped name, std::span<const Any> arguments) {
  const auto method = method_of(value, name);
  if (!method) {
    return method.is_error() ? method.error() : error_method_not_found(value, name);
  }
  if (method.value().isIndependent()) {
    return method.value().callWith(arguments);
  }
  return method.value().callWith(internal::prefixed_row(value, arguments));
}

Error error_method_not_found(const Any& value, meta_method_untyped name) {
  return Error(String("The method '{}' is missing in '{}'.").arg(name.text(), class_of(value).name()));
}

Error error_property_not_found(const Any& value, meta_property_untyped name) {
  return Error(String("The property '{}' is missing in '{}'.").arg(name.text(), class_of(value).name()));
}

// --- classes and names ----------------------------------------------------------------------------------------------

Class_Generic raw_class_of(const Any& value) {
  return value.empty() ? None::getClass() : Class_Generic(value.get()->object_class());
}

Class_Generic class_of(const Any& value) {
  return value.has(object_traits::lazy) ? raw_class_of(internal::unwrap(value)) : raw_class_of(value);
}

namespace {
String name_in_context(const String& name, const Any& context) {
  return context.empty() ? name : String("{}.{}").arg(qualname(context), name);
}
}  // namespace

String qualname(const Any& value) {
  if (value.has(object_traits::callable)) {
    const auto& callable = static_cast<const object_value_callable&>(*value.get());
    return name_in_context(callable.name(), callable.declaring_context());
  }
  if (const auto module = Module::cast(value)) {
    return module.value().name();
  }
  return qualname(class_of(value));
}

// --- lazy values ----------------------------------------------------------------------------------------------------

Any unwrap(const Any& value) {
  // A lazy value may yield another one; a chain longer than this is a mistake.
  constexpr int maximum_chain = 100;
  Any current = value;
  for (int i = 0; i < maximum_chain; ++i) {
    if (!current.has(object_traits::lazy)) [[likely]] {
      return current;
    }
    if (current.type() == ObjectType::Computed) {
      current = static_cast<object_value_computed*>(current.get())->force();
    } else {
      current = internal::guarded([&] { return static_cast<object_value_external*>(current.get())->load(); });
    }
  }
  return Error("A lazy value keeps yielding lazy values.");
}

namespace internal {

Any error_unexpected_type(const Any& value, const Type& expected) {
  return BadArgument(
      String("Expected {}, got {}: {}").arg(expected.name(), class_of(value).name(), display_text(value)));
}

}  // namespace internal
}  // namespace ling
