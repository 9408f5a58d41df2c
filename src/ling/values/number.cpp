// Integer and Float: their classes, and the numbers that are shared objects.
#include "ling/number.h"

#include "ling/detail/definitions.h"
#include "ling/detail/immortal.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"
#include "ling/values/exact_number.h"

#include <charconv>
#include <cmath>
#include <new>
#include <system_error>

namespace ling {

namespace {
Any parse_integer(const String& text);
Any parse_float(const String& text);
Any make_integer(const Any& value);
Any make_float(const Any& value);
}  // namespace

namespace internal {

constinit const class_definition<Integer> integer_class("Integer", [](class_builder<Integer>& c) {
  c.module("ling")
      .doc("A whole number between -2^63 and 2^64 - 1.")
      .parent(I_Immutable::getClass())
      .constructor("value", "From an Integer, a Boolean, a Float without a fraction, or decimal text.",
                   [](const Class_Generic&, const Any& value) { return make_integer(value); });
});

constinit const class_definition<Float> float_class("Float", [](class_builder<Float>& c) {
  c.module("ling")
      .doc("A floating point number of 64 bits.")
      .parent(I_Immutable::getClass())
      .constructor("value", "From a Float, an Integer (rounded to the nearest Float) or decimal text.",
                   [](const Class_Generic&, const Any& value) { return make_float(value); })
      .method("isNaN", "", "Whether it is the result of an undefined computation, which equals nothing.",
              [](double self) { return std::isnan(self); })
      .method("isFinite", "", "Whether it is neither infinite nor undefined.",
              [](double self) { return std::isfinite(self); })
      .method("isInteger", "", "Whether it is finite and has no fraction.",
              [](double self) { return std::isfinite(self) && std::trunc(self) == self; });
});

// --- shared integers -------------------------------------------------------------------------------------------------

namespace {

class small_integers {
 public:
  static constexpr std::int64_t first = -128;
  static constexpr std::int64_t last = 1023;

  // Never destroyed: values are used by exit handlers.
  static const small_integers& instance() {
    static internal::immortal<small_integers> all;
    return all.object;
  }
  const object_value_integer& at(std::int64_t value) const noexcept { return objects_[value - first]; }

  small_integers()
      : objects_(
            static_cast<object_value_integer*>(::operator new(sizeof(object_value_integer) * (last - first + 1)))) {
    for (std::int64_t value = first; value <= last; ++value) {
      ::new (static_cast<void*>(objects_ + (value - first))) object_value_integer(value, object_traits::immortal);
    }
  }

 private:
  object_value_integer* objects_;
};

}  // namespace

Any integer_any(std::int64_t value) {
  if (value >= small_integers::first && value <= small_integers::last) {
    return Any::share(&small_integers::instance().at(value));
  }
  return make<object_value_integer>(value);
}

Any integer_any(std::uint64_t value) {
  return value <= INT64_MAX ? integer_any(static_cast<std::int64_t>(value)) : make<object_value_integer>(value);
}

Any float_any(double value) { return make<object_value_float>(value); }

}  // namespace internal

// --- numbers from other values ---------------------------------------------------------------------------------------

namespace {

// The text without white space at its ends and without a plus sign, which from_chars does not know.
std::string_view numeral(const String& trimmed) noexcept {
  const std::string_view text = trimmed.view();
  return text.starts_with('+') && !text.starts_with("+-") ? text.substr(1) : text;
}

template <class Number>
std::errc parse(std::string_view text, Number& number) noexcept {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end != text.data() + text.size() ? std::errc::invalid_argument : error;
}

Error error_no_number(const String& text, std::errc error, const char* class_name) {
  return Error(String(error == std::errc::result_out_of_range ? "The number '{}' is out of the range of {}."
                                                              : "The text '{}' is not a number for {}.")
                   .arg(text, class_name));
}

Any parse_integer(const String& text) {
  const String trimmed = text.trimmed();
  std::int64_t small = 0;
  std::errc error = parse(numeral(trimmed), small);
  if (error == std::errc()) {
    return small;
  }
  std::uint64_t large = 0;
  if (error == std::errc::result_out_of_range && !trimmed.startsWith("-")) {
    error = parse(numeral(trimmed), large);
  }
  return error == std::errc() ? Any(large) : Any(error_no_number(text, error, "Integer"));
}

Any parse_float(const String& text) {
  const String trimmed = text.trimmed();
  double number = 0;
  const std::errc error = parse(numeral(trimmed), number);
  return error == std::errc() ? Any(number) : Any(error_no_number(text, error, "Float"));
}

Any make_integer(const Any& value) {
  const Any given = internal::unwrap(value);
  if (String::matches(given.get())) {
    return parse_integer(String::unchecked(given));
  }
  return Integer::getClass().coerce(given);
}

Any make_float(const Any& value) {
  const Any given = internal::unwrap(value);
  if (String::matches(given.get())) {
    return parse_float(String::unchecked(given));
  }
  if (Integer::matches(given.get())) {
    const Integer integer = Integer::unchecked(given);
    return integer.is_signed() ? static_cast<double>(integer.value()) : static_cast<double>(integer.unsigned_value());
  }
  return Float::getClass().coerce(given);
}

}  // namespace

object_value_class& object_value_integer::object_class() const { return internal::integer_class.required(); }

object_value_class& object_value_float::object_class() const { return internal::float_class.required(); }

Type Integer::getType() { return Type::of(getClass()); }

Class_Generic Integer::getClass() { return Class_Generic(internal::integer_class.required()); }

Type Float::getType() { return Type::of(getClass()); }

Class_Generic Float::getClass() { return Class_Generic(internal::float_class.required()); }

}  // namespace ling
