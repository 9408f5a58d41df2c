// Signatures and parameters.
#include "ling/signature.h"

#include "ling/class_builder.h"
#include "ling/detail/definitions.h"
#include "ling/interfaces.h"
#include "ling/reflection.h"

namespace ling {

constinit const class_definition<Parameter> internal::parameter_class("Parameter", [](class_builder<Parameter>& c) {
  c.module("ling")
      .doc("A parameter of a callable.")
      .parent(I_Immutable::getClass())
      .parent(I_HasName::getClass())
      .property("name", "The name by which it can be given.", [](const Parameter& self) { return self.name(); })
      .property("type", "What it accepts.", [](const Parameter& self) { return self.type(); })
      .property("isVariadic", "Whether it takes all remaining arguments.",
                [](const Parameter& self) { return self.isVariadic(); });
});

constinit const class_definition<Signature> internal::signature_class("Signature", [](class_builder<Signature>& c) {
  c.module("ling")
      .doc("What a callable takes and returns.")
      .parent(I_Immutable::getClass())
      .property("parameters", "The parameters in order.", [](const Signature& self) { return self.parameters(); })
      .property("parameterCount", "How many there are.", [](const Signature& self) { return self.parameterCount(); })
      .property("requiredParameterCount", "How many must be given.",
                [](const Signature& self) { return self.requiredParameterCount(); })
      .property("hasVariadicParameters", "Whether the last one takes all remaining arguments.",
                [](const Signature& self) { return self.hasVariadicParameters(); })
      .property("resultType", "What a call returns.", [](const Signature& self) { return self.resultType(); })
      .method("toString", "", "The signature as text.", [](const Signature& self) { return self.toString(); });
});

object_value_parameter::object_value_parameter(String name, Type type, bool variadic)
    : object_value_instance(internal::parameter_class.required()),
      name_(std::move(name)),
      type_(std::move(type)),
      variadic_(variadic) {}

bool Parameter::matches(const object_value* object) noexcept {
  return internal::is_handle_object<object_value_parameter>(object, internal::parameter_class);
}
Class_Generic Parameter::getClass() { return internal::parameter_class.required(); }
Type Parameter::getType() { return Type::of(getClass()); }

object_value_signature::object_value_signature(Type result, std::vector<Parameter> parameters,
                                               std::vector<Any> defaults)
    : object_value_instance(internal::signature_class.required()),
      result_(std::move(result)),
      parameters_(std::move(parameters)),
      defaults_(std::move(defaults)) {}

bool Signature::matches(const object_value* object) noexcept {
  return internal::is_handle_object<object_value_signature>(object, internal::signature_class);
}
Class_Generic Signature::getClass() { return internal::signature_class.required(); }
Type Signature::getType() { return Type::of(getClass()); }

bool Signature::hasVariadicParameters() const noexcept {
  return !parameters().empty() && parameters().back().isVariadic();
}

std::size_t Signature::requiredParameterCount() const noexcept {
  const std::size_t fixed = parameterCount() - (hasVariadicParameters() ? 1 : 0);
  return fixed - std::min(fixed, object().defaults().size());
}

const Any* Signature::defaultOf(std::size_t index) const& noexcept {
  const std::size_t required = requiredParameterCount();
  const std::vector<Any>& defaults = object().defaults();
  // More defaults than parameters: the last ones count.
  const std::size_t fixed = parameterCount() - (hasVariadicParameters() ? 1 : 0);
  return index < required || index >= fixed ? nullptr : &defaults[defaults.size() - (fixed - index)];
}

Signature Signature::withoutReceiver() const {
  if (parameters().empty() || parameters().front().isVariadic()) {
    return *this;
  }
  return Signature(resultType(), std::vector<Parameter>(parameters().begin() + 1, parameters().end()),
                   object().defaults());
}

namespace {
constexpr signature_style runtime_style{
    [](const Type& type) { return type.is_untyped() ? String() : type.name(); },
    [](const Any& value) { return display_text(Tuple_Generic({value})).sliced(1, -2); },  // texts quoted
    "",
    "...",
};
}  // namespace

String Signature::toString() const { return toString(runtime_style); }

String Signature::toString(const signature_style& style) const {
  string_builder text;
  text.append('(');
  for (std::size_t i = 0; i < parameterCount(); ++i) {
    const Parameter& parameter = parameters()[i];
    text.append(i == 0 ? "" : ", ");
    if (parameter.isVariadic()) {
      text.append(style.variadic_prefix).append(parameter.name()).append(style.variadic_suffix);
      continue;
    }
    text.append(parameter.name());
    const String type = style.type_name(parameter.type());
    if (!type.empty()) {
      text.append(": ").append(type);
    }
    if (const Any* value = defaultOf(i)) {
      text.append(type.empty() ? "=" : " = ").append(style.value_text(*value));
    }
  }
  text.append(')');
  if (const String type = style.type_name(resultType()); !type.empty()) {
    text.append(" -> ").append(type);
  }
  return text.build();
}

}  // namespace ling
