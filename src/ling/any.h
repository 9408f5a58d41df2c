// Any: a counted handle to one runtime object, or empty.
//
// An Any is one pointer. Copying shares the object, moving is free, the last handle releases the object. An empty Any
// counts as None everywhere; `is_none` answers true for both. Typed handles (String, List, Error, …) derive from Any,
// add no data, and promise that the object is of their type; they are made from an Any with their static `cast`.
//
// What belongs to the object is handed out by reference (a row of items, the object itself) and lives as long as the
// object: those operations are refused on a temporary handle, which may be the last one.
//
// Threads: a handle is like a pointer, two threads may not change the same handle at once; the object behind it may be
// shared freely.
#pragma once

#include "ling/export.h"
#include "ling/name.h"
#include "ling/object_value.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ling {

class Any;
class Type;
template <class... Alternatives>
class Union;
class I_Callable_Generic;
class None;

namespace internal {
LING_API Any integer_any(std::int64_t value);
LING_API Any integer_any(std::uint64_t value);
LING_API Any float_any(double value);
LING_API Any boolean_any(bool value) noexcept;
LING_API Any string_any(std::string_view utf8);
}  // namespace internal

class LING_API Any {
 public:
  using object_type = object_value;

  constexpr Any() noexcept = default;
  Any(const Any& other) noexcept : object_(other.object_) {
    if (object_ != nullptr) {
      object_->retain();
    }
  }
  Any(Any&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Any& operator=(const Any& other) noexcept {
    Any(other).swap(*this);
    return *this;
  }
  Any& operator=(Any&& other) noexcept {
    Any(std::move(other)).swap(*this);
    return *this;
  }
  ~Any() {
    if (object_ != nullptr) {
      object_->release();
    }
  }

  // Plain C++ values become runtime values: Any(10), Any(2.5), Any(true), Any("text").
  template <std::same_as<bool> T>
  Any(T value) noexcept : Any(internal::boolean_any(value)) {}
  template <std::integral T>
    requires(!std::same_as<T, bool>)
  Any(T value)
      : Any(internal::integer_any(
            static_cast<std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>>(value))) {}
  template <std::floating_point T>
  Any(T value) : Any(internal::float_any(static_cast<double>(value))) {}
  Any(const char* utf8) : Any(internal::string_any(utf8)) {}
  Any(std::string_view utf8) : Any(internal::string_any(utf8)) {}

  // Takes over the creator's reference.
  static Any adopt(object_value* object) noexcept { return Any(object); }
  // Takes a reference of its own.
  static Any share(const object_value* object) noexcept {
    if (object != nullptr) {
      object->retain();
    }
    return Any(const_cast<object_value*>(object));
  }

  bool empty() const noexcept { return object_ == nullptr; }
  object_value* get() const noexcept LING_LIFETIMEBOUND { return object_; }
  // Gives up the reference to the caller, who must release or adopt it.
  [[nodiscard]] object_value* release() noexcept { return std::exchange(object_, nullptr); }
  void swap(Any& other) noexcept { std::swap(object_, other.object_); }

  // The kind of the object; None for an empty handle.
  ObjectType type() const noexcept { return object_ == nullptr ? ObjectType::None : object_->type(); }
  bool has(object_traits trait) const noexcept { return object_ != nullptr && object_->has(trait); }
  // Whether both are the same object.
  bool is_same(const Any& other) const noexcept { return object_ == other.object_; }

  // Member access by interned name. Errors are returned as values: an unknown member, a failing getter or setter.
  Any fieldValue(meta_field_untyped name) const;
  Any setFieldValue(meta_field_untyped name, const Any& value) const;  // None or an Error
  Any propertyValue(meta_property_untyped name) const;
  Any setPropertyValue(meta_property_untyped name, const Any& value) const;  // None or an Error
  // The method of that name bound to this value, None when there is none.
  Union<I_Callable_Generic, None> boundMethod(meta_method_untyped name) const;

  // The untyped type: every value matches it.
  static Type getType();
  // Every value is an Any; part of the protocol that typed handles share.
  static bool matches(const object_value*) noexcept { return true; }

  // The names of the meta-methods by which a class takes part in operators and member access.
  // clang-format off
#define LING_META_METHODS(X)                                                                                       \
  X(add) X(sub) X(mul) X(div) X(iadd) X(isub) X(imul) X(idiv) X(and) X(or) X(xor) X(not)                           \
  X(init) X(display) X(compare) X(equals) X(hash) X(coerce) X(length)                                              \
  X(propertyValue) X(setPropertyValue) X(property) X(ownProperty) X(ownProperties)                                 \
  X(method) X(ownMethod) X(ownMethods) X(insertProperty) X(insertMethod) X(removeProperty) X(removeMethod)
  // clang-format on
#define LING_DECLARE_META_METHOD(name) static const meta_method_untyped __##name##__;
  LING_META_METHODS(LING_DECLARE_META_METHOD)
#undef LING_DECLARE_META_METHOD

 protected:
  explicit Any(object_value* object) noexcept : object_(object) {}

 private:
  object_value* object_ = nullptr;
};
static_assert(sizeof(Any) == sizeof(void*), "a handle is one pointer");

using Untyped = Any;

// Makes a runtime object and the handle that owns it.
template <class Object, class... Arguments>
Any make(Arguments&&... arguments) {
  return Any::adopt(new Object(std::forward<Arguments>(arguments)...));
}

inline bool is_none(const Any& value) noexcept { return value.type() == ObjectType::None; }

// What all typed handles share. A handle class derives from Handle<itself, its object class, its base handle> and
// defines:
//   static bool matches(const object_value*) noexcept;   whether an object is of its type (null is None)
//   static Type getType();  static Class_Generic getClass();
template <class Derived, class Object = object_value, class Base = Any>
class Handle : public Base {
 public:
  using object_type = Object;

  // The value as this type, None when it is of another. Lazy values are not forced.
  static Union<Derived, None> cast(const Any& value);
  // The value as this type, which the caller knows it to be.
  static Derived unchecked(Any value) noexcept { return Derived(Unchecked{}, std::move(value)); }

  Object& object() const& noexcept { return *static_cast<Object*>(this->get()); }
  Object& object() const&& = delete;

 protected:
  struct Unchecked {
    explicit Unchecked() = default;
  };
  // Takes over the creator's reference to a new object.
  explicit Handle(Object* adopted) noexcept : Base(adopted) {}
  Handle(Unchecked, Any&& value) noexcept : Base(static_cast<typename Base::object_type*>(value.release())) {}
};

// Gives a handle class its constructors from the object it owns; stands in a class body and leaves it public.
#define LING_HANDLE(Name, Object)                                                                     \
 public:                                                                                              \
  Name(typename Name::Unchecked tag, ::ling::Any&& value) noexcept : Handle(tag, std::move(value)) {} \
                                                                                                      \
 protected:                                                                                           \
  explicit Name(Object* adopted) noexcept : Handle(adopted) {}                                        \
                                                                                                      \
 public:

template <class T>
concept handle_type = std::derived_from<T, Any>;

}  // namespace ling
