// How interface handles reach the members of foreign classes.
#pragma once

#include "ling/interfaces.h"
#include "ling/none.h"
#include "ling/reflection.h"

namespace ling::internal {

template <class... Arguments>
Any call_member(const Any& value, meta_method_untyped name, const Arguments&... arguments) {
  const Any row[sizeof...(Arguments) + 1] = {Any(arguments)..., Any()};
  return call_method(value, name, std::span<const Any>(row, sizeof...(Arguments)));
}

// What a member returned as what its interface promises; lazy values and errors are passed on.
template <class T>
Result<T> promised(Any returned) {
  auto result = Result<T>::unchecked(std::move(returned));
  if (result.is_error() || result.is_lazy() || T::matches(result.get())) [[likely]] {
    return result;
  }
  return Result<T>::unchecked(error_unexpected_type(result, T::getType()));
}

// The outcome of a member that promises no value: what it returned all the same is dropped.
inline Result<None> done(Any returned) {
  auto result = Result<None>::unchecked(std::move(returned));
  return result.has_value() ? Result<None>(None()) : result;
}

// A property that tells a type; untyped where there is none.
inline Type type_property(const Any& value, meta_property_untyped name) {
  const Any type = unwrap(value.propertyValue(name));
  tolerate_error(type);
  return Type::matches(type.get()) ? Type::unchecked(type) : Type::untyped();
}

}  // namespace ling::internal
