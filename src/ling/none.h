// None, the absence of a value, and Undefined, the answer "this operation does not apply here". Both are shared.
//
// Threads: immutable, shared freely.
#pragma once

#include "ling/any.h"

namespace ling {

class Class_Generic;

class LING_API None : public Handle<None> {
  LING_HANDLE(None, object_value)
  None() noexcept;
  static bool matches(const object_value* object) noexcept {
    return object == nullptr || object->type() == ObjectType::None;
  }
  static Type getType();
  static Class_Generic getClass();
};

class LING_API Undefined : public Handle<Undefined> {
  LING_HANDLE(Undefined, object_value)
  Undefined() noexcept;
  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::Undefined;
  }
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
