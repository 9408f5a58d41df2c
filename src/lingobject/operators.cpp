// The methods behind the operators.
#include "lingobject/operators.h"

#include "ling/interfaces.h"
#include "ling/reflection.h"
#include "lingobject/host_call.h"

#include <cassert>
#include <iterator>

namespace ling::cpython {

namespace {

const meta_method_untyped concat_name("concat");
const meta_method_untyped repeat_name("repeat");

// A row for each operator, in the order of the enumeration. Scripts know the messages, so each stays as it is.
struct operator_row {
  host_operator which;
  const meta_method_untyped* method;
  const meta_method_untyped* otherwise;  // looked for when the method is missing; null: nothing is
  const char* missing;                   // the value is its argument, after the method's name where there are two
};
using enum host_operator;
const operator_row rows[] = {
    {subtract,         &Any::__sub__,  nullptr,          "[ling_number_subtract] None method '__sub__' in: {}"          },
    {inplace_subtract, &Any::__isub__, nullptr,          "[ling_number_inplace_subtract] None method '__isub__' in: {}" },
    {divide,           &Any::__div__,  nullptr,          "[ling_number_divide] None method '__div__' in: {}."           },
    {inplace_divide,   &Any::__idiv__, nullptr,          "[ling_number_divide] None method '__idiv__' in: {}."          },
    {bit_and,          &Any::__and__,  nullptr,          "[ling_number_{}] None method in: {}"                          },
    {bit_or,           &Any::__or__,   nullptr,          "[ling_number_{}] None method in: {}"                          },
    {bit_xor,          &Any::__xor__,  nullptr,          "[ling_number_{}] None method in: {}"                          },
    {invert,           &Any::__not__,  nullptr,          "[ling_number_not] None method '__not__' in: {}"               },
    {concat,           &Any::__add__,  &concat_name,     "[ling_sequence_concat] None method 'concat' in: {}"           },
    {extend,           &Any::__iadd__, &members::extend, "[ling_sequence_extend] None method 'extend' in: {}."          },
    {repeat,           &Any::__mul__,  &repeat_name,     "[ling_sequence_repeat] None method 'repeat' in: {}."          },
    {inplace_repeat,   &Any::__imul__, nullptr,          "[ling_sequence_inplace_repeat] None method '__imul__' in: {}."},
};

static_assert(std::size(rows) == static_cast<std::size_t>(inplace_repeat) + 1);

// The rows stand in the order of the enumeration.
const operator_row& row_of(host_operator which) {
  const operator_row& row = rows[static_cast<std::size_t>(which)];
  assert(row.which == which);
  return row;
}

slot_result error_missing(const operator_row& row, const Any& value) {
  const bool names_method = std::string_view(row.missing).find("{}") != std::string_view(row.missing).rfind("{}");
  const String text(row.missing);
  return {slot_exception::not_implemented_error, names_method ? text.arg(row.method->text(), value) : text.arg(value)};
}

slot_result apply(const operator_row& row, const Any& wrapped, std::span<const Any> operands) {
  const Any value = internal::unwrap(wrapped);
  if (is_error_result(value)) {
    return value;
  }
  auto method = method_of(value, *row.method);
  if (!method && row.otherwise != nullptr) {
    method = method_of(value, *row.otherwise);
  }
  return method ? call_method_of(value, method.value(), operands) : error_missing(row, value);
}

}  // namespace

slot_result apply_operator(host_operator which, const Any& value) { return apply(row_of(which), value, {}); }

slot_result apply_operator(host_operator which, const Any& value, const Any& operand) {
  return apply(row_of(which), value, std::span<const Any>(&operand, 1));
}

}  // namespace ling::cpython
