// plain_key: a text or a whole number to look up in a HashMap or a HashSet, whether or not there is a value of it.
//
// Python's texts and numbers are looked up as they stand: a value made of each would cost more than the lookup.
#pragma once

#include "ling/detail/hash_mix.h"
#include "ling/number.h"
#include "ling/string.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace ling::internal {

// Refers to the text, or to the value, that it was made of.
class plain_key {
 public:
  // Valid UTF-8.
  explicit plain_key(std::string_view utf8) noexcept : hash_(hash_text(utf8)), text_(utf8), is_text_(true) {}
  explicit plain_key(std::int64_t number) noexcept
      : hash_(hash_number(static_cast<std::uint64_t>(number))),
        bits_(static_cast<std::uint64_t>(number)),
        is_negative_(number < 0) {}
  // Empty for a value of another kind.
  static std::optional<plain_key> of(const Any& value) noexcept {
    switch (value.type()) {
      case ObjectType::String:
        return plain_key(value, static_cast<const object_value_string&>(*value.get()));
      case ObjectType::Integer:
        return plain_key(value, static_cast<const object_value_integer&>(*value.get()));
      default:
        return std::nullopt;
    }
  }

  // What hash_of gives for the value, but never 0.
  std::uint64_t hash() const noexcept { return hash_; }
  bool is_text() const noexcept { return is_text_; }
  std::string_view text() const noexcept { return text_; }
  // A whole number: two's complement, and whether it is negative.
  std::uint64_t bits() const noexcept { return bits_; }
  bool is_negative() const noexcept { return is_negative_; }

  // The value, made now if there was none.
  Any value() const {
    return value_ != nullptr ? *value_ : is_text_ ? Any(text_) : Any(static_cast<std::int64_t>(bits_));
  }

 private:
  plain_key(const Any& value, const object_value_string& string) noexcept
      : hash_(string.hash()), text_(string.view()), is_text_(true), value_(&value) {}
  plain_key(const Any& value, const object_value_integer& integer) noexcept
      : hash_(hash_number(integer.unsigned_value())),
        bits_(integer.unsigned_value()),
        is_negative_(integer.is_signed() && integer.signed_value() < 0),
        value_(&value) {}
  static std::uint64_t hash_number(std::uint64_t bits) noexcept {
    const std::uint64_t hash = hash_mix(bits);
    return hash == 0 ? 1 : hash;
  }

  std::uint64_t hash_;
  std::string_view text_;
  std::uint64_t bits_ = 0;
  bool is_text_ = false;
  bool is_negative_ = false;
  const Any* value_ = nullptr;
};

}  // namespace ling::internal
