// How a class has its say in member access: by meta-methods of its own, or by hooks.
#pragma once

#include "ling/class.h"

#include <initializer_list>

namespace ling::internal {

// The meta-method by which the class of the value takes over a part of member access, null when it does not.
const object_value_callable* takes_over(const Any& value, meta_method_untyped name);
// The same for the meta-methods that hooks stand for: null, too, when the hooks are to be asked.
const object_value_callable* takes_over_hooks(const Any& value, meta_method_untyped name);
// Those of a class with dynamic members, else null.
const dynamic_member_hooks* hooks_of(const Any& value);
// Calls a meta-method.
inline Any call(const object_value_callable& callable, std::initializer_list<Any> arguments) {
  return callable.call(std::span<const Any>(arguments.begin(), arguments.size()));
}

}  // namespace ling::internal
