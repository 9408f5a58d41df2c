// The errors that containers have in common, and the checks of typed containers.
#pragma once

#include "ling/class.h"
#include "ling/error.h"
#include "ling/none.h"

#include <cstdint>

namespace ling::internal {

Error error_index_out_of_range(std::int64_t index, std::size_t length);
Error error_key_not_found(const Any& key);
// `role` is what the value is to the container: "key", "item".
Error error_not_immutable(const char* role, const Any& value);
Error error_too_long(std::size_t length, std::int64_t count);

// `container` is the kind that has run full.
Error error_full(const char* container);

// Type argument `index` of a container's class; null when the container takes any value there.
const Type* type_argument(const object_value_class& of_class, std::size_t index) noexcept;
Type type_or_untyped(const object_value_class& of_class, std::size_t index);
// A BadArgument unless the value is of type argument `index`.
Result<None> check_type_argument(const object_value_class& of_class, std::size_t index, const char* role,
                                 const Any& value);

// Whether items repeated `count` times, which is positive, are more than anybody means: the system would promise memory
// for them long before it turns out not to be there.
constexpr bool is_repetition_too_long(std::size_t length, std::int64_t count) noexcept {
  constexpr std::size_t longest = std::size_t{1} << 28;
  return length != 0 && static_cast<std::uint64_t>(count) > longest / length;
}

}  // namespace ling::internal
