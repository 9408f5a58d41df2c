// hash_of: numbers for hash tables, consistent with compare_objects. And object_id.
#include "ling/byte_array.h"
#include "ling/detail/exact_number.h"
#include "ling/detail/hash_mix.h"
#include "ling/detail/nesting.h"
#include "ling/interfaces.h"
#include "ling/none.h"
#include "ling/reflection.h"
#include "ling/tuple.h"

namespace ling {

namespace {

using internal::hash_combine;
using internal::hash_mix;

constexpr std::uint64_t bytes_seed = 0x6279746573000000ull;
constexpr std::uint64_t tuple_seed = 0x7475706c65000000ull;

constexpr std::uint64_t hash_of_kind(ObjectType kind) noexcept {
  return hash_mix(0x6b696e6400000000ull + static_cast<std::uint64_t>(kind));
}

std::uint64_t hash_of_identity(const Any& value) noexcept { return hash_mix(object_id(value)); }

// Equal numbers of either kind have equal bits.
std::uint64_t hash_of_float(double value) noexcept {
  if (const auto bits = internal::exact_integer_bits(value)) {
    return hash_mix(*bits);
  }
  std::uint64_t bits;
  static_assert(sizeof bits == sizeof value);
  std::memcpy(&bits, &value, sizeof bits);
  return hash_mix(bits);
}

// One hash with all that goes into it. What is looked at depends on the value alone, so equal tuples look at the same
// items; the bounds keep tuples that share their items in many ways from being walked without end.
class hashing {
 public:
  std::uint64_t hash(const Any& value, bool inside_tuple);

 private:
  static constexpr int deepest = 64;

  std::uint64_t hash_tuple(const Tuple_Generic& tuple);
  std::uint64_t hash_described(const Any& value, bool inside_tuple);

  int depth_ = 0;
  int items_left_ = 1 << 14;
};

std::uint64_t hashing::hash(const Any& value, bool inside_tuple) {
  if (value.has(object_traits::lazy)) [[unlikely]] {
    const Any forced = internal::unwrap(value);
    return forced.has(object_traits::lazy) ? hash_of_identity(forced) : hash(forced, inside_tuple);
  }
  switch (value.type()) {
    case ObjectType::None:
    case ObjectType::Undefined:
      return hash_of_kind(value.type());
    case ObjectType::Integer:
      return hash_mix(Integer::unchecked(value).unsigned_value());
    case ObjectType::Float:
      return hash_of_float(Float::unchecked(value).value());
    case ObjectType::String:
      return static_cast<const object_value_string*>(value.get())->hash();
    case ObjectType::ByteArray:
      return internal::hash_bytes(ByteArray::unchecked(value).view(), bytes_seed);
    case ObjectType::Tuple:
      return hash_tuple(Tuple_Generic::unchecked(value));
    case ObjectType::List:
    case ObjectType::HashMap:
    case ObjectType::HashSet:
      return inside_tuple ? hash_of_kind(value.type()) : hash_of_identity(value);
    case ObjectType::Instance:
    case ObjectType::Callable:
      return hash_described(value, inside_tuple);
    default:
      return hash_of_identity(value);
  }
}

std::uint64_t hashing::hash_tuple(const Tuple_Generic& tuple) {
  std::uint64_t combined = hash_combine(tuple_seed, tuple.length());
  if (depth_ == deepest) {
    return combined;
  }
  ++depth_;
  for (const Any& item : tuple.items()) {
    if (items_left_ == 0) {
      break;
    }
    --items_left_;
    combined = hash_combine(combined, hash(item, true));
  }
  --depth_;
  return combined;
}

// By `__hash__`. A value that is compared by `__compare__` but says nothing of its hash counts only by kind,
// because it may equal another one; the rest are compared by identity.
std::uint64_t hashing::hash_described(const Any& value, bool inside_tuple) {
  const object_value_class& of_class = value.get()->object_class();
  const std::uint64_t of_kind = hash_of_kind(value.type());
  const class_member* member = of_class.find_member(Any::__hash__.entry());
  if (member != nullptr && !member->method.empty()) {
    const internal::nesting level;
    if (level.too_deep()) {
      return of_kind;
    }
    const Any row[] = {value};
    const Any result = internal::unwrap(I_Callable_Generic::unchecked(member->method).callWith(row));
    return Integer::matches(result.get()) ? hash_mix(Integer::unchecked(result).unsigned_value()) : of_kind;
  }
  member = of_class.find_member(Any::__compare__.entry());
  const bool compared = member != nullptr && !member->method.empty();
  if (compared && (inside_tuple || I_Immutable::matches(value.get()))) {
    return of_kind;
  }
  return hash_of_identity(value);
}

}  // namespace

std::uint64_t object_id(const Any& value) noexcept {
  // An empty handle is None.
  return reinterpret_cast<std::uintptr_t>(value.empty() ? None().get() : value.get());
}

std::uint64_t hash_of(const Any& value) { return hashing().hash(value, false); }

}  // namespace ling
