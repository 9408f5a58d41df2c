// Type: what a parameter, a property or a container accepts: any value, the instances of a class, or a union of types.
//
// Threads: immutable.
#pragma once

#include "ling/instance.h"
#include "ling/string.h"
#include "ling/union.h"

#include <span>
#include <vector>

namespace ling {

class Class_Generic;

// Keeps the classes it is made of.
class LING_API object_value_type final : public object_value_instance {
 public:
  // No alternatives: the untyped type.
  explicit object_value_type(std::vector<object_value_class*> alternatives);
  ~object_value_type() override;
  const std::vector<object_value_class*>& alternatives() const noexcept { return alternatives_; }

 private:
  const std::vector<object_value_class*> alternatives_;
};

class LING_API Type : public Handle<Type, object_value_type> {
  LING_HANDLE(Type, object_value_type)
  // The type of the instances of a class and of its descendants.
  static Type of(const Class_Generic& of_class);
  static Type untyped();

  bool is_untyped() const noexcept { return object().alternatives().empty(); }
  // Whether every value of this type is an instance of the class.
  bool conformsTo(const Class_Generic& of_class) const noexcept;
  // Whether the value is of this type. A lazy value is judged by what it is now, it is not forced.
  bool matches(const Any& value) const;
  // The class, when the type is that of one class.
  Union<Class_Generic, None> toClass() const;
  // "Any", "Integer", "Integer | None".
  String name() const;

  friend bool operator==(const Type& a, const Type& b) noexcept {
    return a.object().alternatives() == b.object().alternatives();
  }

  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

// The union of types, without repetitions; untyped as soon as one of them is. The list must not be empty.
LING_API Type type_union_of_unsafe(std::span<const Type> types);
// The type without its result wrapper: Union<T, Computed<T>, Error> is that of T.
LING_API Type unwrapped_type(const Type& type);

}  // namespace ling
