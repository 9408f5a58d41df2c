// The texts of a wrapped value, its hash and its order.
#include "lingobject/text.h"

#include "ling/detail/try.h"
#include "ling/interfaces.h"
#include "ling/reflection.h"

namespace ling::cpython {

slot_result code_text(const Any& value, PyObject*) {
  const Result<String> code = to_code(value);
  // A wrapped Error has no code text, because on its way to Python it would be raised.
  return code.has_value() && code.value().empty() ? slot_result(display(value)) : slot_result(code);
}

slot_result plain_text(const Any& value, PyObject*) {
  Any text = String::getClass().coerce(value);
  // What ends a program is no refusal.
  const bool refused = is_error_result(text) && !is_interruption(Error::unchecked(text));
  return refused ? slot_result(display(value)) : slot_result(std::move(text));
}

std::uint64_t hash(const Any& value) { return I_Immutable::matches(value.get()) ? hash_of(value) : object_id(value); }

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

}  // namespace

slot_result compare(const Any& value, PyObject* other, int operation) {
  const Ordering ordering = TRY(compare_objects(value, from_python_locked(other)));
  return Any(holds(comparisons[operation], ordering.value()));
}

}  // namespace ling::cpython
