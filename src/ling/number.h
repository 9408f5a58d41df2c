// Integer (signed or unsigned, 64 bits), its narrowed handles Int32 and Int64, and Float (IEEE double).
//
// An integer that fits a signed 64-bit number is always stored signed; only larger ones are unsigned, so equal integers
// have one representation. Integers from -128 to 1023 are shared objects.
//
// Threads: immutable, shared freely.
#pragma once

#include "ling/any.h"

#include <cstdint>

namespace ling {

class Class_Generic;

class LING_API object_value_integer final : public object_value {
 public:
  explicit object_value_integer(std::int64_t value, object_traits traits = object_traits::none) noexcept
      : object_value(traits | object_traits::leaf), bits_(static_cast<std::uint64_t>(value)) {}
  // For values above the signed range.
  explicit object_value_integer(std::uint64_t value) noexcept
      : object_value(object_traits::leaf), bits_(value), is_signed_(value <= INT64_MAX) {}

  ObjectType type() const noexcept override { return ObjectType::Integer; }
  object_value_class& object_class() const override;
  bool is_signed() const noexcept { return is_signed_; }
  std::int64_t signed_value() const noexcept { return static_cast<std::int64_t>(bits_); }
  std::uint64_t unsigned_value() const noexcept { return bits_; }

 private:
  std::uint64_t bits_;
  bool is_signed_ = true;
};

class LING_API Integer : public Handle<Integer, object_value_integer> {
  LING_HANDLE(Integer, object_value_integer)
  template <std::integral T>
    requires(!std::same_as<T, bool>)
  Integer(T value) : Integer(Unchecked{}, Any(value)) {}

  bool is_signed() const noexcept { return object().is_signed(); }
  // The signed value; for an unsigned one above the signed range its bits.
  std::int64_t value() const noexcept { return object().signed_value(); }
  std::uint64_t unsigned_value() const noexcept { return object().unsigned_value(); }

  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::Integer;
  }
  static Type getType();
  static Class_Generic getClass();
};

// Integers within the range of a signed 64-bit or 32-bit number.
class LING_API Int64 : public Handle<Int64, object_value_integer, Integer> {
  LING_HANDLE(Int64, object_value_integer)
  Int64(std::int64_t value) : Int64(Unchecked{}, Any(value)) {}
  static bool matches(const object_value* object) noexcept {
    return Integer::matches(object) && static_cast<const object_value_integer*>(object)->is_signed();
  }
};
class LING_API Int32 : public Handle<Int32, object_value_integer, Integer> {
  LING_HANDLE(Int32, object_value_integer)
  Int32(std::int32_t value) : Int32(Unchecked{}, Any(value)) {}
  std::int32_t value() const noexcept { return static_cast<std::int32_t>(object().signed_value()); }
  static bool matches(const object_value* object) noexcept {
    if (!Int64::matches(object)) {
      return false;
    }
    const std::int64_t value = static_cast<const object_value_integer*>(object)->signed_value();
    return value >= INT32_MIN && value <= INT32_MAX;
  }
};

class LING_API object_value_float final : public object_value {
 public:
  explicit object_value_float(double value) noexcept : object_value(object_traits::leaf), value_(value) {}
  ObjectType type() const noexcept override { return ObjectType::Float; }
  object_value_class& object_class() const override;
  double value() const noexcept { return value_; }

 private:
  double value_;
};

class LING_API Float : public Handle<Float, object_value_float> {
  LING_HANDLE(Float, object_value_float)
  Float(double value) : Handle(new object_value_float(value)) {}
  double value() const noexcept { return object().value(); }

  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::Float;
  }
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
