// Equality of values, as containers ask for it.
#pragma once

#include "ling/boolean.h"
#include "ling/number.h"
#include "ling/union.h"

#include <cstdint>
#include <span>

namespace ling::internal {

// None, booleans, numbers, texts and byte arrays: immutable kinds whose comparison no class can take over.
constexpr bool is_plain(ObjectType kind) noexcept { return kind <= ObjectType::ByteArray; }
static_assert(is_plain(ObjectType::None) && is_plain(ObjectType::Undefined) && is_plain(ObjectType::Boolean) &&
                  is_plain(ObjectType::Integer) && is_plain(ObjectType::Float) && is_plain(ObjectType::String) &&
                  !is_plain(ObjectType::Tuple) && !is_plain(ObjectType::Instance),
              "the plain kinds come first");

enum class equality : std::uint8_t {
  different,
  same,
  unknown,  // only equal_objects can tell: unlock first, it may run meta-methods
};

// Compares without running any code but the runtime's; may be asked while a container is locked.
equality compare_plain(const Any& a, const Any& b);

// Whether the values are one object or equal. An Error when comparing gives one.
Result<Boolean> are_equal(const Any& a, const Any& b);
// The index of the first equal item from `from` on, -1 when there is none. A negative `from` counts from the end.
Result<Integer> index_of_equal(std::span<const Any> items, const Any& value, std::int64_t from);

// hash_of, which cannot fail, with the Error of a `__hash__` that did.
std::uint64_t hash_of_key(const Any& key, Any& error);

}  // namespace ling::internal
