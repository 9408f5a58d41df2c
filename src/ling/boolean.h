// Boolean: one of two shared objects.
//
// Threads: immutable, shared freely.
#pragma once

#include "ling/any.h"

namespace ling {

class Class_Generic;

// The shared true and false; truth is identity with the first.
extern LING_API object_value& g_value_boolean_true;
extern LING_API object_value& g_value_boolean_false;

class LING_API Boolean : public Handle<Boolean> {
  LING_HANDLE(Boolean, object_value)
  Boolean(bool value) noexcept
      : Boolean(Unchecked{}, Any::share(value ? &g_value_boolean_true : &g_value_boolean_false)) {}

  bool value() const noexcept { return get() == &g_value_boolean_true; }
  // The truth of any value: false for None, Undefined, false, zero, NaN excluded, and empty texts, byte arrays, tuples
  // and collections (whatever answers `__length__` with 0); true for everything else. An Error is true.
  static Boolean from(const Any& value);

  static bool matches(const object_value* object) noexcept {
    return object == &g_value_boolean_true || object == &g_value_boolean_false;
  }
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
