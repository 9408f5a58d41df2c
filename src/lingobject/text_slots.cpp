// The texts of a wrapped value, its hash and its order.
#include "ling/detail/coercion.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"
#include "ling/reflection.h"
#include "lingobject/host_call.h"
#include "lingobject/slot_bodies.h"

namespace ling::cpython {

// Texts are made once. A second attempt at a text that failed because a part could not be shown would make two of
// every part, four of the parts of the parts, and so on.

slot_result code_text(const Any& value, PyObject*) {
  // A wrapped Error has no code text, because on its way to Python it would be raised.
  return is_error_result(value) ? slot_result(display(value)) : slot_result(to_code(value));
}

slot_result plain_text(const Any& value, PyObject*) {
  Any text = internal::converted(value, String::getClass());
  if (text.empty()) {
    return display(value);
  }
  // A conversion of the value's own may refuse. What ends a program is no refusal.
  const bool refused = is_error_result(text) && !text.has(internal::intolerable);
  return refused ? slot_result(display(value)) : slot_result(std::move(text));
}

Py_hash_t hash(const Any& value) {
  // A lazy value equals what it yields.
  if (value.has(object_traits::lazy)) [[unlikely]] {
    const PyObjectPtr yielded = yielded_object(value);
    return yielded ? PyObject_Hash(yielded.get()) : -1;
  }
  const auto hash = static_cast<Py_hash_t>(I_Immutable::matches(value.get()) ? hash_of(value) : object_id(value));
  return hash == -1 ? -2 : hash;
}

namespace {

// Which outcomes make an operator true. Values that cannot be compared are unequal and nothing else.
struct comparison {
  int operation;
  bool less, equal, greater, incomparable;
};
constexpr comparison comparisons[] = {
    {Py_LT, true,  false, false, false},
    {Py_LE, true,  true,  false, false},
    {Py_EQ, false, true,  false, false},
    {Py_NE, true,  false, true,  true },
    {Py_GT, false, false, true,  false},
    {Py_GE, false, true,  true,  false},
};
constexpr bool in_order_of_operations() {
  for (int i = 0; i < 6; ++i) {
    if (comparisons[i].operation != i) {
      return false;
    }
  }
  return true;
}
static_assert(in_order_of_operations(), "the operation is the index");

bool holds(const comparison& row, int ordering) {
  switch (static_cast<ordering_value>(ordering)) {
    case ordering_value::Less:
      return row.less;
    case ordering_value::Equal:
      return row.equal;
    case ordering_value::Greater:
      return row.greater;
    case ordering_value::Incomparable:
      break;
  }
  return row.incomparable;
}

// Whoever asks for equality does not ask for an order, which there may be none of.
Result<Ordering> outcome_of(const Any& a, const Any& b, int operation) {
  if (operation != Py_EQ && operation != Py_NE) {
    return compare_objects(a, b);
  }
  const Boolean equal = TRY(equal_objects(a, b));
  return Ordering(equal.value() ? ordering_value::Equal : ordering_value::Incomparable);
}

}  // namespace

slot_result compare(const Any& value, PyObject* other, int operation) {
  const operand given(other);
  // What does not fit into a value is unlike every other; that the conversion was stopped says nothing.
  if (given.failed() && given.value().has(internal::intolerable)) {
    return given.error();
  }
  const Ordering ordering = TRY(outcome_of(value, given.value(), operation));
  return Any(holds(comparisons[operation], ordering.value()));
}

}  // namespace ling::cpython
