// Errors and checks of containers.
#include "ling/detail/container_errors.h"

#include "ling/reflection.h"

namespace ling::internal {

Error error_index_out_of_range(std::int64_t index, std::size_t length) {
  return BadArgument(String("Index out of range: {}, length: {}.").arg(index, length));
}

Error error_key_not_found(const Any& key) { return Error(String("Key not found: {}.").arg(display_text(key))); }

Error error_not_immutable(const char* role, const Any& value) {
  return BadArgument(
      String("The {} is not immutable: {} ({}).").arg(role, display_text(value), raw_class_of(value).name()));
}

Error error_too_long(std::size_t length, std::int64_t count) {
  return Error(String("{} items repeated {} times are too many.").arg(length, count));
}

Error error_full(const char* container) { return Error(String("The {} is full.").arg(container)); }

const Type* type_argument(const object_value_class& of_class, std::size_t index) noexcept {
  const std::vector<Type>& arguments = of_class.type_arguments();
  return index < arguments.size() && !arguments[index].is_untyped() ? &arguments[index] : nullptr;
}

Type type_or_untyped(const object_value_class& of_class, std::size_t index) {
  const Type* type = type_argument(of_class, index);
  return type == nullptr ? Type::untyped() : *type;
}

Result<None> check_type_argument(const object_value_class& of_class, std::size_t index, const char* role,
                                 const Any& value) {
  const Type* expected = type_argument(of_class, index);
  if (expected == nullptr || expected->matches(value)) [[likely]] {
    return None();
  }
  return BadArgument(String("The {} is not of the type {}: {} ({}).")
                         .arg(role, expected->name(), display_text(value), raw_class_of(value).name()));
}

}  // namespace ling::internal
