// Whether a method of a container is still the one that the container's class was described with. What is known to be
// can be done without calling it.
#pragma once

#include "ling/closure.h"

#include <typeinfo>

namespace ling::internal {

// `F` is the type of a function that no other method is made of.
template <class F>
bool is_method_made_of(const object_value_class& of_class, const meta_method_untyped& name) noexcept {
  if (of_class.has_flag(class_flags::member_access)) {
    return false;  // its `__method__` may answer something else
  }
  const class_member* member = of_class.find_member(name.entry());
  if (member == nullptr || member->method.empty()) {
    return false;
  }
  const object_value& method = *member->method.get();
  return typeid(method) == typeid(object_value_closure<std::remove_cv_t<F>>);
}

}  // namespace ling::internal
