// Choosing among overloads.
#include "ling/callable.h"
#include "ling/class_builder.h"
#include "ling/detail/definitions.h"
#include "ling/error.h"
#include "ling/reflection.h"
#include "ling/signature.h"

#include <algorithm>
#include <optional>

namespace ling {

namespace {

// How far the class of a value is from a type: 0 for the very class, more for an ancestor, most for untyped; nothing
// when the value does not fit.
std::optional<std::size_t> distance(const Type& type, const Any& value) {
  constexpr std::size_t untyped_distance = 1000;
  if (type.is_untyped()) {
    return untyped_distance;
  }
  const Class_Generic of_value = class_of(value);
  const std::vector<object_value_class*>& ancestors = of_value.object().ancestors();
  std::optional<std::size_t> nearest;
  for (object_value_class* alternative : type.object().alternatives()) {
    const auto found = std::find(ancestors.begin(), ancestors.end(), alternative);
    if (found != ancestors.end()) {
      const auto steps = static_cast<std::size_t>(found - ancestors.begin());
      nearest = std::min(nearest.value_or(steps), steps);
    }
  }
  // Numbers convert: an integer is accepted where a float is wanted, after every overload that wants integers.
  if (!nearest && Integer::matches(value.get()) && type == Float::getType()) {
    nearest = untyped_distance - 1;
  }
  return nearest;
}

std::optional<std::size_t> distance(const Signature& signature, std::span<const Any> arguments) {
  const std::vector<Parameter>& parameters = signature.parameters();
  const bool variadic = signature.hasVariadicParameters();
  if (arguments.size() < signature.requiredParameterCount() || (!variadic && arguments.size() > parameters.size())) {
    return std::nullopt;
  }
  const std::size_t fixed = parameters.size() - (variadic ? 1 : 0);
  std::size_t sum = 0;
  for (std::size_t i = 0; i < std::min(fixed, arguments.size()); ++i) {
    const std::optional<std::size_t> step = distance(parameters[i].type(), arguments[i]);
    if (!step) {
      return std::nullopt;
    }
    sum += *step;
  }
  // Arguments that only the variadic rest takes fit worse than any parameter.
  constexpr std::size_t rest_distance = 10'000;
  return sum + rest_distance * (arguments.size() - std::min(fixed, arguments.size()));
}

Error no_overload(const object_value_multimethod& method, std::span<const Any> arguments) {
  std::string types, overloads;
  for (const Any& argument : arguments) {
    types.append(types.empty() ? "" : ", ").append(class_of(argument).name().view());
  }
  for (const I_Callable_Generic& each : method.overloads()) {
    const Result<Signature> signature = each.signature();
    overloads.append("\n  ").append((signature ? signature.value().toString() : signature.error().message()).view());
  }
  return BadArgument(String("No overload of '{}' takes ({}); there are:{}")
                         .arg(qualname(Any::share(&method)), String(types), String(overloads)));
}

}  // namespace

object_value_class& object_value_multimethod::object_class() const { return internal::function_class.required(); }

Any object_value_multimethod::do_call(std::span<const Any> arguments) const {
  const I_Callable_Generic* best = nullptr;
  std::size_t best_distance = SIZE_MAX;
  for (const I_Callable_Generic& each : overloads_) {
    const Result<Signature> signature = each.signature();
    if (!signature) {
      return signature;
    }
    const std::optional<std::size_t> found = distance(signature.value(), arguments);
    if (found && *found < best_distance) {
      best = &each;
      best_distance = *found;
    }
  }
  return best != nullptr ? best->callWith(arguments) : Any(no_overload(*this, arguments));
}

Any object_value_multimethod::do_call_named(std::span<const Any> positional,
                                            std::span<const named_argument> named) const {
  if (named.empty()) {
    return call(positional);
  }
  // Names choose: the first overload that has them all.
  for (const I_Callable_Generic& each : overloads_) {
    const Result<Signature> signature = each.signature();
    if (!signature) {
      return signature;
    }
    const Signature& declared = signature.value();
    const bool has_all = std::all_of(named.begin(), named.end(), [&](const named_argument& argument) {
      return std::any_of(declared.parameters().begin(), declared.parameters().end(),
                         [&](const Parameter& parameter) { return parameter.name() == argument.name; });
    });
    const std::size_t given = positional.size() + named.size();
    const bool fits = declared.hasVariadicParameters() || given <= declared.parameterCount();
    if (has_all && fits && given >= declared.requiredParameterCount()) {
      return each.object().call_named(positional, named);
    }
  }
  return no_overload(*this, positional);
}

String object_value_multimethod::doc() const {
  string_builder text;
  for (const I_Callable_Generic& each : overloads_) {
    if (const String doc = each.doc(); !doc.empty()) {
      text.append(text.empty() ? "" : "\n").append(doc);
    }
  }
  return text.build();
}

Result<Signature> object_value_multimethod::signature() const {
  return Signature(Type::untyped(), std::vector{Parameter("arguments", Type::untyped(), true)});
}

bool object_value_multimethod::is_independent() const noexcept {
  return std::all_of(overloads_.begin(), overloads_.end(), [](const auto& each) { return each.isIndependent(); });
}

void object_value_multimethod::set_independent(bool independent) noexcept {
  for (const I_Callable_Generic& each : overloads_) {
    each.setIndependent(independent);
  }
}

Any object_value_multimethod::declaring_context() const { return overloads_.front().declaringContext(); }

void object_value_multimethod::set_declaring_context(const Any& context) {
  for (const I_Callable_Generic& each : overloads_) {
    each.object().set_declaring_context(context);
  }
}

std::vector<I_Callable_Generic> object_value_multimethod::independent_functions() const {
  std::vector<I_Callable_Generic> independent;
  std::copy_if(overloads_.begin(), overloads_.end(), std::back_inserter(independent),
               [](const auto& each) { return each.isIndependent(); });
  return independent;
}

}  // namespace ling
