// Signature and Parameter: what a callable takes and returns.
//
// Threads: immutable.
#pragma once

#include "ling/callable.h"
#include "ling/type.h"

#include <vector>

namespace ling {

class LING_API object_value_parameter final : public object_value_instance {
 public:
  object_value_parameter(String name, Type type, bool variadic);
  const String& name() const noexcept { return name_; }
  const Type& parameter_type() const noexcept { return type_; }
  bool is_variadic() const noexcept { return variadic_; }

 private:
  String name_;
  Type type_;
  bool variadic_;
};

class LING_API Parameter : public Handle<Parameter, object_value_parameter> {
  LING_HANDLE(Parameter, object_value_parameter)
  Parameter(const String& name, const Type& type, bool variadic = false)
      : Handle(new object_value_parameter(name, type, variadic)) {}
  String name() const { return object().name(); }
  // Not named `type`: that is the kind of the object.
  Type type() const { return object().parameter_type(); }
  bool isVariadic() const noexcept { return object().is_variadic(); }
  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

// How names of types and code texts of values look in some language.
struct signature_style {
  String (*type_name)(const Type& type);   // empty: the type is not shown
  String (*value_text)(const Any& value);  // the code text of a default
  std::string_view variadic_prefix;        // "*" as in "*rest"
  std::string_view variadic_suffix;        // "..." as in "rest..."
};

class LING_API object_value_signature final : public object_value_instance {
 public:
  object_value_signature(Type result, std::vector<Parameter> parameters, std::vector<Any> defaults);
  const Type& result_type() const noexcept { return result_; }
  const std::vector<Parameter>& parameters() const noexcept { return parameters_; }
  const std::vector<Any>& defaults() const noexcept { return defaults_; }

 private:
  Type result_;
  std::vector<Parameter> parameters_;
  std::vector<Any> defaults_;
};

class LING_API Signature : public Handle<Signature, object_value_signature> {
  LING_HANDLE(Signature, object_value_signature)
  // The defaults belong to the last parameters that are not variadic.
  Signature(const Type& result, std::vector<Parameter> parameters, std::vector<Any> defaults = {})
      : Handle(new object_value_signature(result, std::move(parameters), std::move(defaults))) {}

  const std::vector<Parameter>& parameters() const& noexcept { return object().parameters(); }
  const std::vector<Parameter>& parameters() const&& = delete;
  std::size_t parameterCount() const noexcept { return parameters().size(); }
  std::size_t requiredParameterCount() const noexcept;
  bool hasVariadicParameters() const noexcept;
  Type resultType() const { return object().result_type(); }
  // The default of parameter `index`, null when it has none. Borrowed.
  const Any* defaultOf(std::size_t index) const& noexcept;
  const Any* defaultOf(std::size_t index) const&& = delete;
  // Without the first parameter; what remains of a method's signature once it is bound.
  Signature withoutReceiver() const;

  // "(path: String, flags: Integer = 0, rest...) -> Boolean", or in the style of another language.
  String toString() const;
  String toString(const signature_style& style) const;

  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
