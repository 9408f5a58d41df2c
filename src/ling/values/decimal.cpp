// Decimal: its class.
#include "ling/decimal.h"

#include "ling/detail/definitions.h"
#include "ling/interfaces.h"
#include "ling/values/decimal_arithmetic.h"
#include "ling/values/decimal_text.h"

#include <optional>
#include <utility>

namespace ling {

namespace {

Decimal decimal_of(decimal_parts parts) { return Decimal::unchecked(make<object_value_decimal>(std::move(parts))); }

Any make_decimal(const Any& value) {
  const Any given = internal::unwrap(value);
  switch (given.type()) {
    case ObjectType::String:
      return Decimal::fromString(String::unchecked(given));
    case ObjectType::Integer:
      return decimal_of(internal::decimal_of_integer(static_cast<const object_value_integer&>(*given.get())));
    case ObjectType::Float:
      return Decimal::fromFloat(Float::unchecked(given).value());
    default:
      return Decimal::getClass().coerce(given);
  }
}

// The number that an operand is: a Decimal or, without loss, an Integer. Floats are for comparing only: a sum with one
// would have its dozens of digits.
std::optional<Decimal> operand_of(const Any& value) {
  const Any given = internal::unwrap(value);
  if (const auto decimal = Decimal::cast(given)) {
    return decimal.value();
  }
  if (const auto integer = Integer::cast(given)) {
    return decimal_of(internal::decimal_of_integer(integer->object()));
  }
  return std::nullopt;
}

// An operator over a member function, Undefined for operands that are not its business.
template <Result<Decimal> (Decimal::*operation)(const Decimal&) const>
Any apply(const Decimal& self, const Any& other) {
  const std::optional<Decimal> operand = operand_of(other);
  return operand ? Any((self.*operation)(*operand)) : Any(Undefined());
}

Any compare(const Decimal& self, const Any& other) {
  const Any given = internal::unwrap(other);
  if (const auto number = Float::cast(given)) {
    return Ordering(internal::compare_decimals(self.parts(), internal::decimal_of_double(number->value())));
  }
  const std::optional<Decimal> operand = operand_of(given);
  return operand ? Any(Ordering(internal::compare_decimals(self.parts(), operand->parts()))) : Any(Undefined());
}

using arithmetic = internal::arithmetic_fault (*)(const decimal_parts&, const decimal_parts&, decimal_parts&);

// The operands as they are shown in a message: as far as they are short.
String shown(const Decimal& value) {
  constexpr std::size_t longest = 40;
  const String text = value.toString();
  return text.size() <= longest ? text : String("{}…").arg(text.substr(0, longest));
}

Result<Decimal> calculated(const Decimal& a, const char* sign, const Decimal& b, arithmetic operation) {
  decimal_parts result;
  const char* fault = nullptr;
  switch (operation(a.parts(), b.parts(), result)) {
    case internal::arithmetic_fault::none:
      return decimal_of(std::move(result));
    case internal::arithmetic_fault::undefined:
      fault = "is undefined";
      break;
    case internal::arithmetic_fault::signalling:
      fault = "calculates with a signalling NaN";
      break;
    case internal::arithmetic_fault::too_many_digits:
      fault = "has more than 1000000 digits";
      break;
    case internal::arithmetic_fault::out_of_range:
      fault = "is out of the range of Decimal";
      break;
  }
  return Error(String("{} {} {} {}.").arg(shown(a), sign, shown(b), fault));
}

}  // namespace

constinit const class_definition<Decimal> internal::decimal_class("Decimal", [](class_builder<Decimal>& c) {
  c.module("ling")
      .doc("An exact decimal number of any length that keeps its scale.")
      .parent(I_Immutable::getClass())
      .constructor("value", "From decimal text, or exactly from an Integer or a Float.",
                   [](const Class_Generic&, const Any& value) { return make_decimal(value); })
      .class_method("fromString", "text", "From a text such as \"-1.50\", \"2E+3\", \"Infinity\" or \"NaN\".",
                    &Decimal::fromString)
      .method("isNaN", "", "Whether it is no number, which equals nothing.", &Decimal::isNaN)
      .method("isFinite", "", "Whether it is neither infinite nor no number.", &Decimal::isFinite)
      .method("add", "other", "The exact sum.", &Decimal::add)
      .method("subtract", "other", "The exact difference.", &Decimal::subtract)
      .method("multiply", "other", "The exact product.", &Decimal::multiply)
      .method("negated", "", "The number with the other sign.", &Decimal::negated)
      .method("toFloat", "", "The nearest Float.", &Decimal::toFloat)
      .method("toString", "", "The text with all digits.", &Decimal::toString)
      .method(Any::__add__, "other", &apply<&Decimal::add>)
      .method(Any::__sub__, "other", &apply<&Decimal::subtract>)
      .method(Any::__mul__, "other", &apply<&Decimal::multiply>)
      .method(Any::__compare__, "other", &compare)
      .method(Any::__hash__, "", [](const Decimal& self) { return internal::decimal_hash(self.parts()); })
      .method(Any::__display__, "", &Decimal::toString);
});

object_value_decimal::object_value_decimal(decimal_parts of_parts)
    : object_value_instance(internal::decimal_class.required()), parts(std::move(of_parts)) {}

Result<Decimal> Decimal::fromString(const String& text) {
  decimal_parts parts;
  const String numeral = text.trimmed();
  switch (internal::read_decimal(numeral.view(), parts)) {
    case internal::numeral_fault::none:
      return decimal_of(std::move(parts));
    case internal::numeral_fault::out_of_range:
      return Error(String("The number '{}' is out of the range of Decimal.").arg(text));
    default:
      return Error(String("The text '{}' is not a number for Decimal.").arg(text));
  }
}

Decimal Decimal::fromFloat(double value) { return decimal_of(internal::decimal_of_double(value)); }

Result<Decimal> Decimal::add(const Decimal& other) const {
  return calculated(*this, "+", other, &internal::add_decimals);
}

Result<Decimal> Decimal::subtract(const Decimal& other) const {
  return calculated(*this, "-", other, [](const decimal_parts& a, const decimal_parts& b, decimal_parts& difference) {
    // A NaN is handed on as it is, sign and all.
    decimal_parts subtrahend = b;
    subtrahend.is_negative = b.is_negative != !b.is_nan();
    return internal::add_decimals(a, subtrahend, difference);
  });
}

Result<Decimal> Decimal::multiply(const Decimal& other) const {
  return calculated(*this, "*", other, &internal::multiply_decimals);
}

Decimal Decimal::negated() const {
  decimal_parts result = parts();
  result.is_negative = !result.is_negative;
  return decimal_of(std::move(result));
}

double Decimal::toFloat() const { return internal::nearest_double(parts()); }

String Decimal::toString() const { return internal::decimal_text(parts()); }

bool Decimal::matches(const object_value* object) noexcept {
  return internal::is_handle_object<object_value_decimal>(object, internal::decimal_class);
}
Type Decimal::getType() { return Type::of(getClass()); }
Class_Generic Decimal::getClass() { return internal::decimal_class.required(); }

}  // namespace ling
