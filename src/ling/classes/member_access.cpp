// Reading and writing the members of a value, and calling its methods.
#include "ling/any.h"
#include "ling/class.h"
#include "ling/classes/takeover.h"
#include "ling/detail/argument_row.h"
#include "ling/detail/interface_call.h"
#include "ling/error.h"
#include "ling/none.h"
#include "ling/reflection.h"

namespace ling {

using internal::call;
using internal::hooks_of;
using internal::takes_over_hooks;

// --- fields ----------------------------------------------------------------------------------------------------------

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

// --- properties ------------------------------------------------------------------------------------------------------

namespace {

// What a class offers under its own name: a property that takes no instance.
Union<Property, None> class_level_property(const Any& value, meta_property_untyped name) {
  const auto of_class = Class_Generic::cast(value);
  auto property = of_class ? of_class.value().definedProperty(name) : None();
  return property && property->object().getter_is_independent() ? property : None();
}

}  // namespace

Any Any::propertyValue(meta_property_untyped name) const {
  if (const object_value_callable* meta = takes_over_hooks(*this, __propertyValue__)) {
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
  if (const object_value_callable* meta = takes_over_hooks(*this, __setPropertyValue__)) {
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

// --- methods ---------------------------------------------------------------------------------------------------------

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

}  // namespace ling
