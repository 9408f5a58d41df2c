// Arguments of calls: named ones and defaults find their places; the errors of those that do not fit.
#include "ling/callable.h"
#include "ling/detail/try.h"
#include "ling/hash_map.h"
#include "ling/list.h"
#include "ling/reflection.h"
#include "ling/signature.h"

#include <algorithm>
#include <optional>

namespace ling {

namespace {

// What all argument errors begin with: "Bad call of 'shop.Inventory.add': ".
BadArgument bad_call(const object_value_callable& callable, const String& fault) {
  return BadArgument(String("Bad call of '{}': {}").arg(qualname(Any::share(&callable)), fault));
}

String count_text(std::size_t count) { return String(count == 1 ? "{} argument" : "{} arguments").arg(count); }

// "3 arguments", "1 to 3 arguments", "at least 1 argument".
String accepted_count(const Signature& signature) {
  const std::size_t required = signature.requiredParameterCount();
  if (signature.hasVariadicParameters()) {
    return String("at least {}").arg(count_text(required));
  }
  const std::size_t maximum = signature.parameterCount();
  return required == maximum ? count_text(maximum) : String("{} to {} arguments").arg(required, maximum);
}

// What a callable says of itself; an Error when it cannot tell.
Result<Signature> known_signature(const object_value_callable& callable) {
  Result<Signature> declared = callable.signature();
  internal::tolerate_error(declared);
  return declared;
}

}  // namespace

Any object_value_callable::error_arguments_count(std::size_t given) const {
  const Result<Signature> declared = known_signature(*this);
  if (!declared) {
    return bad_call(*this, String("{} are not accepted.").arg(count_text(given)));
  }
  // A receiver is no argument to whoever wrote the call.
  const Signature& shown = declared.value();
  const std::size_t receiver = !is_independent() && shown.parameterCount() != 0 ? 1 : 0;
  return bad_call(*this, String("expected {}, got {}.")
                             .arg(accepted_count(receiver != 0 ? shown.withoutReceiver() : shown),
                                  given - std::min(given, receiver)));
}

Any object_value_callable::do_call_named(std::span<const Any> positional, std::span<const named_argument> named) const {
  if (named.empty()) {
    return call(positional);
  }
  const Signature declared = TRY(signature());
  const std::vector<Parameter>& parameters = declared.parameters();
  const std::size_t fixed = parameters.size() - (declared.hasVariadicParameters() ? 1 : 0);
  std::vector<std::optional<Any>> placed(std::max(fixed, positional.size()));
  std::copy(positional.begin(), positional.end(), placed.begin());
  for (const named_argument& each : named) {
    std::size_t i = 0;
    while (i < fixed && !(parameters[i].name() == each.name)) {
      ++i;
    }
    if (i == fixed) {
      return bad_call(*this, String("no parameter is named '{}'.").arg(each.name));
    }
    if (placed[i]) {
      return bad_call(*this, String("the argument '{}' is given twice.").arg(each.name));
    }
    placed[i] = each.value;
  }
  std::vector<Any> row;
  row.reserve(placed.size());
  for (std::size_t i = 0; i < placed.size(); ++i) {
    if (!placed[i]) {
      const Any* value = declared.defaultOf(i);
      if (value == nullptr) {
        return bad_call(*this, String("the argument '{}' is missing.").arg(parameters[i].name()));
      }
      placed[i] = *value;
    }
    row.push_back(*std::move(placed[i]));
  }
  return call(row);
}

Type object_value_callable::result_type() const {
  const Result<Signature> declared = known_signature(*this);
  return declared ? declared.value().resultType() : Type::untyped();
}

std::size_t object_value_callable::parameter_count() const {
  const Result<Signature> declared = known_signature(*this);
  return declared ? declared.value().parameterCount() : 0;
}

bool object_value_callable::has_variadic_parameters() const {
  const Result<Signature> declared = known_signature(*this);
  return declared && declared.value().hasVariadicParameters();
}

Any object_value_function::error_bad_argument(std::size_t index, const Any& value) const {
  const Result<Signature> declared = signature();
  if (!declared) {
    return declared;
  }
  const Parameter parameter = declared->parameters()[index];
  return bad_call(*this,
                  String("the argument '{}' must be {}, not {}: {}")
                      .arg(parameter.name(), parameter.type().name(), class_of(value).name(), display_text(value)));
}

Any I_Callable_Generic::callWithNamed(const HashMap_Generic& named) const {
  return callWithNamed(List_Generic(), named);
}

Any I_Callable_Generic::callWithNamed(const List_Generic& positional, const HashMap_Generic& named) const {
  return internal::guarded([&]() -> Any {
    std::vector<named_argument> row;
    for (const auto& [key, value] : named.copyPairs()) {
      const auto name = String::cast(key);
      if (!name) {
        return bad_call(object(), String("the name of an argument is not a String: {}.").arg(display_text(key)));
      }
      row.push_back({*name, value});
    }
    return object().call_named(positional.copyItems(), row);
  });
}

}  // namespace ling
