// Properties.
#include "ling/property.h"

#include "ling/class_builder.h"
#include "ling/detail/definitions.h"
#include "ling/interfaces.h"

namespace ling {

constinit const class_definition<Property> internal::property_class("Property", [](class_builder<Property>& c) {
  c.module("ling")
      .doc("A named value with a getter and perhaps a setter.")
      .parent(I_Immutable::getClass())
      .parent(I_HasDoc::getClass())
      .property("getter", "Answers the value.", [](const Property& self) { return self.getter(); })
      .property("setter", "Takes a new value; none for a read-only property.",
                [](const Property& self) { return self.setter(); })
      .property("doc", "What the value is.", [](const Property& self) { return self.doc(); });
});

object_value_property::object_value_property(I_Callable_Generic getter, Any setter, String doc)
    : object_value_instance(object_traits::none),
      getter_(std::move(getter)),
      setter_(std::move(setter)),
      doc_(std::move(doc)),
      getter_is_independent_(getter_.isIndependent()) {}

object_value_class& object_value_property::object_class() const { return internal::property_class.required(); }

bool Property::matches(const object_value* object) noexcept {
  return internal::is_handle_object<object_value_property>(object, internal::property_class);
}
Class_Generic Property::getClass() { return internal::property_class.required(); }
Type Property::getType() { return Type::of(getClass()); }

Property Property::constant(const Any& value, const String& doc) {
  return Property(I_Callable_Generic::unchecked(make<object_value_constant>(value)), doc);
}

const Any* Property::constantValue() const& noexcept {
  const auto* constant = dynamic_cast<const object_value_constant*>(object().getter().get());
  return constant == nullptr ? nullptr : &constant->value();
}

Any Property::read(const Any& instance) const {
  const object_value_property& property = object();
  return property.getter().callWith(std::span<const Any>(&instance, property.getter_is_independent() ? 0 : 1));
}

Any Property::write(const Any& instance, const Any& value) const {
  const auto setter = I_Callable_Generic::unchecked(object().setter());
  Any outcome = setter.isIndependent() ? setter(value) : setter(instance, value);
  return is_error_result(outcome) ? outcome : Any();
}

}  // namespace ling
