// From C++ functions to runtime callables. A thunk made by template checks the number of arguments, converts each to
// its parameter's type, calls, and converts the result; nothing on the way allocates but the result.
//
// Parameters may be: Any and every typed handle; bool, integers (range-checked), floating point (integers are
// accepted), std::string, std::string_view (valid during the call), std::optional of those (None is empty); C++ data of
// a described class as T&, const T& or T*; and Variadic as the last parameter. Lazy arguments are forced for every
// parameter but Any. Results may be: void (None), all of the above, a Union of handles, std::vector of them (a List),
// and T by value for a described class (a new instance). A thrown C++ exception becomes an Error.
#pragma once

#include "ling/boolean.h"
#include "ling/callable.h"
#include "ling/class.h"
#include "ling/error.h"
#include "ling/list.h"
#include "ling/none.h"
#include "ling/number.h"
#include "ling/tuple.h"

#include <array>
#include <concepts>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace ling {

namespace internal {

// The class described for C++ data of a type, null when none is (yet).
LING_API object_value_class* native_class(const std::type_info& type) noexcept;
LING_API Type native_type(const std::type_info& type);
LING_API Any error_no_native_class(const std::type_info& type);

// How an argument becomes a parameter: `read` answers whether the value fits and keeps what `get` passes on.
template <class P>
struct argument;

template <class P>
concept native_data_type = std::is_class_v<P> && !handle_type<P>;

template <>
struct argument<Any> {
  const Any* value = nullptr;
  bool read(const Any& given) noexcept {
    value = &given;
    return true;
  }
  const Any& get() noexcept { return *value; }
  static Type type() { return Type::untyped(); }
};

template <handle_type H>
struct argument<H> {
  std::optional<H> value;
  bool read(const Any& given) {
    if (H::matches(given.get())) [[likely]] {
      value.emplace(H::unchecked(given));
      return true;
    }
    if (given.has(object_traits::lazy)) {
      Any forced = unwrap(given);
      if (H::matches(forced.get())) {
        value.emplace(H::unchecked(std::move(forced)));
        return true;
      }
    }
    return false;
  }
  const H& get() noexcept { return *value; }
  static Type type() { return H::getType(); }
};

template <class... Alternatives>
struct argument<Union<Alternatives...>> {
  Any value;
  bool read(const Any& given) {
    value = unwrap(given);
    return (Alternatives::matches(value.get()) || ...);
  }
  Union<Alternatives...> get() noexcept { return Union<Alternatives...>::unchecked(value); }
  static Type type() {
    const Type types[] = {Alternatives::getType()...};
    return type_union_of_unsafe(types);
  }
};

template <>
struct argument<bool> {
  bool value = false;
  bool read(const Any& given) {
    argument<Boolean> boolean;
    if (!boolean.read(given)) {
      return false;
    }
    value = boolean.get().value();
    return true;
  }
  bool get() noexcept { return value; }
  static Type type() { return Boolean::getType(); }
};

template <std::integral I>
  requires(!std::same_as<I, bool>)
struct argument<I> {
  I value = 0;
  bool read(const Any& given) {
    if (given.has(object_traits::lazy)) [[unlikely]] {
      return read_integer(unwrap(given));
    }
    return read_integer(given);
  }
  I get() noexcept { return value; }
  static Type type() { return Integer::getType(); }

 private:
  bool read_integer(const Any& given) noexcept {
    if (!Integer::matches(given.get())) {
      return false;
    }
    const auto& integer = static_cast<const object_value_integer&>(*given.get());
    if (integer.is_signed() ? !std::in_range<I>(integer.signed_value()) : !std::in_range<I>(integer.unsigned_value())) {
      return false;
    }
    value = static_cast<I>(integer.unsigned_value());
    return true;
  }
};

template <std::floating_point F>
struct argument<F> {
  F value = 0;
  bool read(const Any& given) {
    if (given.has(object_traits::lazy)) [[unlikely]] {
      return read_number(unwrap(given));
    }
    return read_number(given);
  }
  F get() noexcept { return value; }
  static Type type() { return Float::getType(); }

 private:
  bool read_number(const Any& given) noexcept {
    if (Float::matches(given.get())) {
      value = static_cast<F>(static_cast<const object_value_float&>(*given.get()).value());
      return true;
    }
    if (Integer::matches(given.get())) {
      const auto& integer = static_cast<const object_value_integer&>(*given.get());
      value = integer.is_signed() ? static_cast<F>(integer.signed_value()) : static_cast<F>(integer.unsigned_value());
      return true;
    }
    return false;
  }
};

template <>
struct argument<std::string_view> {
  argument<String> text;
  bool read(const Any& given) { return text.read(given); }
  std::string_view get() noexcept { return text.get().view(); }
  static Type type() { return String::getType(); }
};

template <>
struct argument<std::string> {
  argument<String> text;
  bool read(const Any& given) { return text.read(given); }
  std::string get() { return std::string(text.get().view()); }
  static Type type() { return String::getType(); }
};

template <class T>
struct argument<std::optional<T>> {
  std::optional<argument<T>> value;
  bool read(const Any& given) {
    if (is_none(given)) {
      return true;
    }
    return value.emplace().read(given);
  }
  std::optional<T> get() {
    if (!value) {
      return std::nullopt;
    }
    return std::optional<T>(value->get());
  }
  static Type type() {
    const Type types[] = {argument<T>::type(), None::getType()};
    return type_union_of_unsafe(types);
  }
};

// C++ data of a described class, by reference.
template <native_data_type T>
struct argument<T> {
  T* value = nullptr;
  Any forced;
  bool read(const Any& given) {
    value = native_cast<T>(given);
    if (value == nullptr && given.has(object_traits::lazy)) {
      forced = unwrap(given);
      value = native_cast<T>(forced);
    }
    return value != nullptr;
  }
  T& get() noexcept { return *value; }
  static Type type() { return native_type(typeid(T)); }
};
template <class T>
struct argument<T*> : argument<std::remove_const_t<T>> {
  T* get() noexcept { return this->value; }
};

// How a result becomes a value.
template <class R>
struct result_of {
  static Any convert(R&& value) {
    if constexpr (std::is_constructible_v<Any, R&&>) {
      return Any(std::forward<R>(value));
    } else {
      object_value_class* of_class = native_class(typeid(R));
      if (of_class == nullptr) {
        return error_no_native_class(typeid(R));
      }
      return make<object_value_native<R>>(*of_class, std::forward<R>(value));
    }
  }
  static Type type() { return argument<R>::type(); }
};
template <class T>
struct result_of<std::optional<T>> {
  static Any convert(std::optional<T>&& value) {
    return value ? result_of<T>::convert(*std::move(value)) : Any(None());
  }
  static Type type() { return argument<std::optional<T>>::type(); }
};
template <class T>
struct result_of<std::vector<T>> {
  static Any convert(std::vector<T>&& values) {
    std::vector<Any> items;
    items.reserve(values.size());
    for (T& value : values) {
      items.push_back(result_of<T>::convert(std::move(value)));
    }
    return List_Generic(std::move(items));
  }
  static Type type() { return List_Generic::getType(); }
};
template <class T>
struct result_of<Union<T, Computed<T>, Error>> {
  static Any convert(Result<T>&& value) noexcept { return Any(std::move(static_cast<Any&>(value))); }
  static Type type() { return T::getType(); }
};
template <>
struct result_of<void> {
  static Type type() { return None::getType(); }
};

// The parameters and the result of anything that can be called.
template <class F>
struct callable_traits : callable_traits<decltype(&F::operator())> {};
template <class R, class... P>
struct callable_traits<R (*)(P...)> {
  using result = R;
  using parameters = std::tuple<P...>;
};
template <class R, class... P>
struct callable_traits<R (*)(P...) noexcept> : callable_traits<R (*)(P...)> {};
// A member function of a class takes its object as the first parameter; a call operator does not.
template <class R, class C, class... P>
struct callable_traits<R (C::*)(P...) const> {
  using result = R;
  using parameters = std::tuple<P...>;
  using with_object = std::tuple<const C&, P...>;
};
template <class R, class C, class... P>
struct callable_traits<R (C::*)(P...)> {
  using result = R;
  using parameters = std::tuple<P...>;
  using with_object = std::tuple<C&, P...>;
};
template <class R, class C, class... P>
struct callable_traits<R (C::*)(P...) const noexcept> : callable_traits<R (C::*)(P...) const> {};
template <class R, class C, class... P>
struct callable_traits<R (C::*)(P...) noexcept> : callable_traits<R (C::*)(P...)> {};

template <class F>
struct parameters_of {
  using type = typename callable_traits<F>::parameters;
};
template <class F>
  requires std::is_member_function_pointer_v<F>
struct parameters_of<F> {
  using type = typename callable_traits<F>::with_object;
};

template <class Parameters>
struct parameter_row;
template <class... P>
struct parameter_row<std::tuple<P...>> {
  static constexpr std::size_t count = sizeof...(P);
  template <std::size_t I>
  using at = std::remove_cvref_t<std::tuple_element_t<I, std::tuple<P...>>>;
  static constexpr bool variadic = [] {
    if constexpr (count == 0) {
      return false;
    } else {
      return std::same_as<at<count - 1>, Variadic>;
    }
  }();
  using arguments = std::tuple<argument<std::remove_cvref_t<P>>...>;
  static std::vector<Type> types() { return {argument<std::remove_cvref_t<P>>::type()...}; }
};

}  // namespace internal

// A callable over a C++ function, a const member function or a lambda. `F` must be safe to call from several threads.
template <class F>
class object_value_closure final : public object_value_function {
  using traits = internal::callable_traits<F>;
  using row = internal::parameter_row<typename internal::parameters_of<F>::type>;
  using result = typename traits::result;
  static constexpr std::size_t count = row::count;

 public:
  object_value_closure(declaration declared, F function)
      : object_value_function(std::move(declared),
                              {&row::types, &internal::result_of<std::remove_cvref_t<result>>::type}),
        function_(std::move(function)) {}

  Any do_call(std::span<const Any> given) const override {
    if (given.size() == count && !row::variadic) [[likely]] {
      return invoke(given.data(), std::make_index_sequence<count>());
    }
    return call_arranged(given);
  }

 private:
  // Defaults filled in, trailing arguments packed.
  Any call_arranged(std::span<const Any> given) const {
    constexpr std::size_t fixed = row::variadic ? count - 1 : count;
    if (given.size() > fixed && !row::variadic) {
      return error_arguments_count(given.size());
    }
    std::array<Any, count + 1> arranged;
    for (std::size_t i = 0; i < fixed; ++i) {
      if (i < given.size()) {
        arranged[i] = given[i];
      } else if (const Any* value = default_of(i, fixed)) {
        arranged[i] = *value;
      } else {
        return error_arguments_count(given.size());
      }
    }
    if constexpr (row::variadic) {
      const std::size_t extra = given.size() > fixed ? given.size() - fixed : 0;
      Variadic pack = create_ellipsis(extra);
      for (std::size_t i = 0; i < extra; ++i) {
        assign_ellipsis_item(pack, i, given[fixed + i]);
      }
      arranged[fixed] = std::move(pack);
    }
    return invoke(arranged.data(), std::make_index_sequence<count>());
  }

  template <std::size_t... I>
  Any invoke(const Any* given, std::index_sequence<I...>) const {
    [[maybe_unused]] typename row::arguments arguments;
    std::size_t bad = 0;
    if (!((std::get<I>(arguments).read(given[I]) || (bad = I, false)) && ...)) [[unlikely]] {
      return error_bad_argument(bad, given[bad]);
    }
    if constexpr (std::is_void_v<result>) {
      std::invoke(function_, std::get<I>(arguments).get()...);
      return None();
    } else {
      return internal::result_of<std::remove_cvref_t<result>>::convert(
          std::invoke(function_, std::get<I>(arguments).get()...));
    }
  }

  const F function_;
};

}  // namespace ling
