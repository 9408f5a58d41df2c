// Union: a value that is one of several types; Result, the union every fallible operation returns.
//
// A Union is one handle; which alternative it holds is asked of the object. `Result<T>` holds a T, a Computed<T> (a
// value still to be computed) or an Error. Errors are values: look before you use the value.
//
//   Result<Integer> count = parse(text);
//   if (count.is_error()) return count.error();
//   use(count.value());
//
// Threads: as with every handle (any.h).
#pragma once

#include "ling/any.h"

#include <cassert>
#include <concepts>
#include <type_traits>
#include <utility>

namespace ling {

class Class_Generic;
class Error;

// Forces computed and loads external values until the result is neither. A value that cannot be computed, or one that
// keeps yielding further lazy values, gives an Error. Other values come back as they are.
LING_API Any unwrap(const Any& value);

namespace internal {
using ling::unwrap;
// The Error for a value that is not of the type it was promised to be.
LING_API Any error_unexpected_type(const Any& value, const Type& expected);
}  // namespace internal

// A handle to a lazily computed value; see lazy.h for how one is made.
class LING_API Computed_Generic : public Handle<Computed_Generic> {
  LING_HANDLE(Computed_Generic, object_value)
  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::Computed;
  }
  static Type getType();
  static Class_Generic getClass();
};
template <class T>
class Computed : public Handle<Computed<T>, object_value, Computed_Generic> {
  using Handle = ling::Handle<Computed<T>, object_value, Computed_Generic>;
  LING_HANDLE(Computed, object_value)
};

template <class... Alternatives>
class [[nodiscard]] Union : public Any {
  template <class First, class...>
  struct first_of {
    using type = First;
  };
  template <class T>
  static constexpr bool accepts = (std::derived_from<T, Alternatives> || ...);

 public:
  using value_type = typename first_of<Alternatives...>::type;

  // From any alternative or a type derived from one.
  template <class T>
    requires accepts<std::remove_cvref_t<T>>
  Union(T&& value) noexcept : Any(std::forward<T>(value)) {}
  // From what the first alternative is made of: a string literal for a String, a number for an Integer.
  template <class T>
    requires(!handle_type<std::remove_cvref_t<T>> && std::convertible_to<T, value_type>)
  Union(T&& value) : Any(value_type(std::forward<T>(value))) {}
  // From a union of fewer alternatives.
  template <class... Fewer>
    requires(!std::same_as<Union<Fewer...>, Union> && (accepts<Fewer> && ...))
  Union(Union<Fewer...> other) noexcept : Any(std::move(static_cast<Any&>(other))) {}

  // Takes a value whose type the caller has checked.
  static Union unchecked(Any value) noexcept { return Union(Unchecked{}, std::move(value)); }

  bool is_error() const noexcept { return has(object_traits::error); }
  bool is_lazy() const noexcept { return has(object_traits::lazy); }
  // Whether the first alternative is there to be used.
  bool has_value() const noexcept {
    if constexpr (std::same_as<value_type, Any> || std::same_as<value_type, None>) {
      return !is_error() && !is_lazy();
    } else if constexpr (std::is_base_of_v<Error, value_type>) {
      return is_error();  // Union<Error, None>: the error is what was asked for
    } else {
      return !is_error() && !is_lazy() && !is_none(*this);
    }
  }
  explicit operator bool() const noexcept { return has_value(); }

  value_type value() const& noexcept { return as<value_type>(); }
  value_type value() && noexcept {
    assert(has_value());
    if constexpr (std::same_as<value_type, Any>) {
      return std::move(static_cast<Any&>(*this));
    } else {
      return value_type::unchecked(std::move(static_cast<Any&>(*this)));
    }
  }
  value_type operator*() const noexcept { return value(); }
  // Lets `result->length()` read like a pointer without a second object. Not for a result that nobody has looked at.
  class arrow {
   public:
    explicit arrow(value_type value) noexcept : value_(std::move(value)) {}
    value_type* operator->() noexcept { return &value_; }

   private:
    value_type value_;
  };
  arrow operator->() const& noexcept { return arrow(value()); }
  arrow operator->() const&& = delete;

  // The error; only when `is_error`.
  Error error() const noexcept;

 private:
  struct Unchecked {};
  Union(Unchecked, Any value) noexcept : Any(std::move(value)) {}

  template <class T>
  T as() const noexcept {
    assert(has_value());
    if constexpr (std::same_as<T, Any>) {
      return *this;
    } else {
      return T::unchecked(*this);
    }
  }
};

template <class T>
using Result = Union<T, Computed<T>, Error>;

// Whether a result is the error alternative.
inline bool is_error_result(const Any& value) noexcept { return value.has(object_traits::error); }

// Forces a lazily computed result. The outcome is a value or an error, never lazy; a computation that yields a value of
// another type is an error.
template <class T>
Result<T> result_unwrap_lazy(Result<T> result);

template <class Derived, class Object, class Base>
Union<Derived, None> Handle<Derived, Object, Base>::cast(const Any& value) {
  return Union<Derived, None>::unchecked(Derived::matches(value.get()) ? value : Any());
}

template <class T>
Result<T> result_unwrap_lazy(Result<T> result) {
  if (!result.is_lazy()) [[likely]] {
    return result;
  }
  Any value = internal::unwrap(result);
  if (is_error_result(value) || T::matches(value.get())) {
    return Result<T>::unchecked(std::move(value));
  }
  return Result<T>::unchecked(internal::error_unexpected_type(value, T::getType()));
}

}  // namespace ling
