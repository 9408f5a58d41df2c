// Class_Generic::coerce: conversions of values to a class. Only those that lose nothing; text is not guessed from other
// values, and other values are not guessed from text.
#include "ling/boolean.h"
#include "ling/byte_array.h"
#include "ling/detail/coercion.h"
#include "ling/detail/definitions.h"
#include "ling/error.h"
#include "ling/none.h"
#include "ling/reflection.h"
#include "ling/values/exact_number.h"

namespace ling {

namespace {

// The converted value, empty when the conversion does not apply to the value.

Any to_byte_array(const Any& value) {
  return String::matches(value.get()) ? Any(String::unchecked(value).toUtf8()) : Any();
}

Any to_integer(const Any& value) {
  if (Boolean::matches(value.get())) {
    return Boolean::unchecked(value).value() ? 1 : 0;
  }
  if (!Float::matches(value.get())) {
    return {};
  }
  const double number = Float::unchecked(value).value();
  const auto bits = internal::exact_integer_bits(number);
  if (!bits) {
    return {};
  }
  return number < 0 ? Any(static_cast<std::int64_t>(*bits)) : Any(*bits);
}

Any to_float(const Any& value) {
  if (!Integer::matches(value.get())) {
    return {};
  }
  const Integer integer = Integer::unchecked(value);
  const double number =
      integer.is_signed() ? static_cast<double>(integer.value()) : static_cast<double>(integer.unsigned_value());
  const bool exact = internal::compare_integer_with_float(integer.object(), number) == ordering_value::Equal;
  return exact ? Any(number) : Any();
}

Any to_boolean(const Any& value) {
  if (!Integer::matches(value.get()) || Integer::unchecked(value).unsigned_value() > 1) {
    return {};
  }
  return Integer::unchecked(value).unsigned_value() == 1;
}

struct conversion {
  const class_definition_base& to;
  Any (*convert)(const Any& value);
};
const conversion conversions[] = {
    {internal::byte_array_class, &to_byte_array},
    {internal::integer_class,    &to_integer   },
    {internal::float_class,      &to_float     },
    {internal::boolean_class,    &to_boolean   },
};

// By the runtime's own conversions.
Any convert(const Any& value, const object_value_class& to) {
  for (const conversion& each : conversions) {
    if (&each.to.required() == &to) {
      return each.convert(value);
    }
  }
  return {};
}

// By the value's `__coerce__`, which answers Undefined for classes it does not know.
Any convert_by_method(const Any& value, const Class_Generic& to) {
  if (!value.has(object_traits::instance)) {
    return {};
  }
  const class_member* member = value.get()->object_class().find_member(Any::__coerce__.entry());
  if (member == nullptr || member->method.empty()) {
    return {};
  }
  const Any row[] = {value, to};
  Any converted = internal::unwrap(I_Callable_Generic::unchecked(member->method).callWith(row));
  if (converted.type() == ObjectType::Undefined) {
    return {};
  }
  if (is_error_result(converted) || raw_class_of(converted).is_ancestor(to)) {
    return converted;
  }
  return Error(String("The method '__coerce__' of {} returned {} instead of {}.")
                   .arg(qualname(value), qualname(converted), qualname(to)));
}

}  // namespace

Any internal::converted(const Any& value, const Class_Generic& to) {
  const Any given = unwrap(value);
  if (raw_class_of(given).is_ancestor(to) || (!given.is_same(value) && is_error_result(given))) {
    return given;
  }
  Any result = convert(given, to.object());
  return result.empty() ? convert_by_method(given, to) : result;
}

Any Class_Generic::coerce(const Any& value) const {
  Any result = internal::converted(value, *this);
  return result.empty() ? Any(Error(String("Unable to convert '{}' to {}.").arg(value, name()))) : result;
}

}  // namespace ling
