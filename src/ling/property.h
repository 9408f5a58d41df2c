// Property: a named value with a getter and, unless it is read-only, a setter.
//
// Threads: immutable.
#pragma once

#include "ling/callable.h"
#include "ling/instance.h"

namespace ling {

class LING_API object_value_property final : public object_value_instance {
 public:
  object_value_property(I_Callable_Generic getter, Any setter, String doc);
  object_value_class& object_class() const override;
  const I_Callable_Generic& getter() const noexcept { return getter_; }
  const Any& setter() const noexcept { return setter_; }  // empty: read-only
  const String& doc() const noexcept { return doc_; }
  bool getter_is_independent() const noexcept { return getter_is_independent_; }

 private:
  I_Callable_Generic getter_;
  Any setter_;
  String doc_;
  bool getter_is_independent_;
};

class LING_API Property : public Handle<Property, object_value_property> {
  LING_HANDLE(Property, object_value_property)
  Property(const I_Callable_Generic& getter, const String& doc) : Handle(new object_value_property(getter, {}, doc)) {}
  Property(const I_Callable_Generic& getter, const I_Callable_Generic& setter, const String& doc)
      : Handle(new object_value_property(getter, setter, doc)) {}
  // A read-only property that always has this value.
  static Property constant(const Any& value, const String& doc = {});

  I_Callable_Generic getter() const { return object().getter(); }
  Union<I_Callable_Generic, None> setter() const {
    return Union<I_Callable_Generic, None>::unchecked(object().setter());
  }
  bool hasSetter() const noexcept { return !object().setter().empty(); }
  String doc() const { return object().doc(); }
  // The value of a constant property; null for one whose getter computes. Borrowed.
  const Any* constantValue() const& noexcept;
  const Any* constantValue() const&& = delete;

  // The value for an instance; an independent getter is called without it.
  Any read(const Any& instance) const;
  // None or an Error; the property must have a setter. A setter that is independent is called without the instance.
  Any write(const Any& instance, const Any& value) const;

  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
