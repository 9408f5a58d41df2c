// Ordering: the outcome of comparing two values.
//
// Threads: immutable, shared freely.
#pragma once

#include "ling/instance.h"
#include "ling/union.h"

#include <cstdint>

namespace ling {

class Class_Generic;

enum class ordering_value : std::int8_t { Less = -1, Equal = 0, Greater = 1, Incomparable = 2 };

class LING_API object_value_ordering final : public object_value_instance {
 public:
  object_value_ordering(object_value_class& of_class, ordering_value value)
      : object_value_instance(of_class, object_traits::immortal), value_(value) {}
  ordering_value value() const noexcept { return value_; }

 private:
  ordering_value value_;
};

// One of four shared objects.
class LING_API Ordering : public Handle<Ordering, object_value_ordering> {
  LING_HANDLE(Ordering, object_value_ordering)
  Ordering(ordering_value value);
  static Ordering fromSign(std::int64_t sign) {
    return sign < 0 ? ordering_value::Less : sign > 0 ? ordering_value::Greater : ordering_value::Equal;
  }
  // -1, 0, 1, or 2 for values that cannot be compared.
  int value() const noexcept { return static_cast<int>(object().value()); }

  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
