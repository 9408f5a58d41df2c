// The class and the name of any value.
#include "ling/class.h"
#include "ling/module.h"
#include "ling/none.h"
#include "ling/reflection.h"

namespace ling {

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

namespace internal {

Any error_unexpected_type(const Any& value, const Type& expected) {
  return BadArgument(
      String("Expected {}, got {}: {}").arg(expected.name(), class_of(value).name(), display_text(value)));
}

}  // namespace internal
}  // namespace ling
