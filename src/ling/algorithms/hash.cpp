// hash_of: numbers for hash tables, consistent with equal_objects. And object_id.
#include "ling/algorithms/equality.h"
#include "ling/byte_array.h"
#include "ling/detail/hash_mix.h"
#include "ling/detail/nesting.h"
#include "ling/interfaces.h"
#include "ling/none.h"
#include "ling/reflection.h"
#include "ling/tuple.h"
#include "ling/values/exact_number.h"

#include <typeinfo>

namespace ling {

namespace {

using internal::hash_combine;
using internal::hash_mix;

constexpr std::uint64_t bytes_seed = 0x6279746573000000ull;
constexpr std::uint64_t tuple_seed = 0x7475706c65000000ull;
constexpr std::uint64_t overloads_seed = 0x6f7665726c6f6164ull;

// Of values that are compared as their class says, whatever their kind: an instance may equal a callable.
constexpr std::uint64_t described_hash = 0x6465736372696265ull;

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
  // `error` is for the Error of a `__hash__`, unless it is null; what has failed counts only by kind.
  explicit hashing(Any* error) noexcept : error_(error) {}
  std::uint64_t hash(const Any& value, bool inside_tuple);

 private:
  static constexpr int deepest = 64;

  template <class Item>
  std::uint64_t hash_row(std::uint64_t seed, std::span<const Item> items, bool inside_tuple);
  std::uint64_t hash_callable(const Any& value, bool inside_tuple);
  std::uint64_t hash_described(const Any& value, bool inside_tuple);

  int depth_ = 0;
  int items_left_ = 1 << 14;
  Any* error_;
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
      return hash_row(tuple_seed, static_cast<const object_value_tuple&>(*value.get()).items(), true);
    case ObjectType::List:
    case ObjectType::HashMap:
    case ObjectType::HashSet:
      return inside_tuple ? hash_of_kind(value.type()) : hash_of_identity(value);
    case ObjectType::Callable:
      return hash_callable(value, inside_tuple);
    case ObjectType::Multimethod:
      return hash_row(overloads_seed, std::span(static_cast<const object_value_multimethod&>(*value.get()).overloads()),
                      inside_tuple);
    case ObjectType::Instance:
      return hash_described(value, inside_tuple);
    default:
      return hash_of_identity(value);
  }
}

template <class Item>
std::uint64_t hashing::hash_row(std::uint64_t seed, std::span<const Item> items, bool inside_tuple) {
  std::uint64_t combined = hash_combine(seed, items.size());
  if (depth_ == deepest) {
    return combined;
  }
  ++depth_;
  for (const Any& item : items) {
    if (items_left_ == 0) {
      break;
    }
    --items_left_;
    combined = hash_combine(combined, hash(item, inside_tuple));
  }
  --depth_;
  return combined;
}

// A method with its receiver is as good as any other of the same two.
std::uint64_t hashing::hash_callable(const Any& value, bool inside_tuple) {
  if (dynamic_cast<const object_value_bound*>(value.get()) == nullptr) {
    return hash_described(value, inside_tuple);
  }
  const auto& bound = static_cast<const object_value_bound&>(*value.get());
  return hash_row(hash_of_identity(bound.instance()), std::span(&bound.callable(), 1), inside_tuple);
}

// By `__hash__`. A value that is compared as its class says, but says nothing of its hash, counts only by kind, because
// it may equal another one; the rest are compared by identity.
std::uint64_t hashing::hash_described(const Any& value, bool inside_tuple) {
  const auto method_of_class = [&](const meta_method_untyped& name) -> const Any* {
    const class_member* member = value.get()->object_class().find_member(name.entry());
    return member == nullptr || member->method.empty() ? nullptr : &member->method;
  };
  if (const Any* method = method_of_class(Any::__hash__)) {
    const internal::nesting level;
    if (level.too_deep()) {
      return described_hash;
    }
    const Any row[] = {value};
    const Any result = internal::unwrap(I_Callable_Generic::unchecked(*method).callWith(row));
    if (Integer::matches(result.get())) {
      return hash_mix(Integer::unchecked(result).unsigned_value());
    }
    if (error_ != nullptr && is_error_result(result)) {
      *error_ = result;
    }
    return described_hash;
  }
  const bool compared = method_of_class(Any::__compare__) != nullptr || method_of_class(Any::__equals__) != nullptr;
  return compared && (inside_tuple || I_Immutable::matches(value.get())) ? described_hash : hash_of_identity(value);
}

}  // namespace

std::uint64_t object_id(const Any& value) noexcept {
  const None none;  // what an empty handle is
  return value.empty() ? none.get()->identity() : value.get()->identity();
}

std::uint64_t hash_of(const Any& value) {
  Any error;
  const std::uint64_t hash = hashing(&error).hash(value, false);
  internal::tolerate_error(error);
  return hash;
}

std::uint64_t internal::hash_of_key(const Any& key, Any& error) { return hashing(&error).hash(key, false); }

}  // namespace ling
