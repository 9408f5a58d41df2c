// ByteArray: an immutable sequence of bytes.
//
// Threads: immutable, shared freely.
#pragma once

#include "ling/any.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace ling {

class Class_Generic;

class LING_API object_value_byte_array final : public object_value {
 public:
  explicit object_value_byte_array(std::string_view bytes)
      : object_value(object_traits::leaf), bytes_(bytes.begin(), bytes.end()) {}
  ObjectType type() const noexcept override { return ObjectType::ByteArray; }
  object_value_class& object_class() const override;
  const std::vector<char>& bytes() const noexcept { return bytes_; }

 private:
  std::vector<char> bytes_;
};

class LING_API ByteArray : public Handle<ByteArray, object_value_byte_array> {
  LING_HANDLE(ByteArray, object_value_byte_array)
  ByteArray() : ByteArray(std::string_view()) {}
  explicit ByteArray(std::string_view bytes) : Handle(new object_value_byte_array(bytes)) {}
  // The bytes; valid as long as the object lives.
  const char* data() const noexcept LING_LIFETIMEBOUND { return object().bytes().data(); }
  std::size_t length() const noexcept { return object().bytes().size(); }
  std::string_view view() const noexcept LING_LIFETIMEBOUND { return {data(), length()}; }

  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::ByteArray;
  }
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
