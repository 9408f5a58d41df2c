// Comparing Python objects, and whether they are equal.
#include "proxies/object_order.h"

#include "ling/detail/try.h"
#include "ling/number.h"
#include "ling/reflection.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/python_equality.h"
#include "python/python_helper.h"
#include "python/type_layout.h"

#include <optional>

namespace ling::cpython {

namespace {

constinit const python_helper compare_helper("cmp", R"(def cmp(a, b):
    if a > b:
        return 1
    else:
        if a < b:
            return -1
    return 0)");

// What the left object says of itself, in the order in which it is asked.
struct probe {
  int operation;
  ordering_value meaning;
};
constexpr probe probes[] = {
    {Py_LT, ordering_value::Less   },
    {Py_GT, ordering_value::Greater},
    {Py_EQ, ordering_value::Equal  },
};

// By the sign of their difference, which might not fit into a signed number.
Result<Ordering> order_of_identities(const Any& a, const Any& b) {
  const std::uint64_t left = object_id(a), right = object_id(b);
  return Ordering::fromSign((left > right) - (left < right));
}

// By the helper, whose operators ask both objects.
Result<Ordering> order_by_helper(PyObject* a, PyObject* b) {
  PyObject* const helper = compare_helper.get();
  if (helper == nullptr) {
    return capture_error_or("Unable to call helper function.");
  }
  const PyObjectPtr result(PyObject_CallFunctionObjArgs(helper, a, b, nullptr));
  if (!result) {
    return capture_error_or("Unable to call helper function.");
  }
  return Ordering::fromSign(Integer::unchecked(from_python_locked(result.get())).value());
}

Result<Ordering> order_of_objects(PyObject* a, PyObject* b) {
  if (a == b) {
    return Ordering(ordering_value::Equal);
  }
  // The slot itself: the operator would ask the right object, too, and answer with identities in the end.
  const richcmpfunc compare = layout_of(Py_TYPE(a))->tp_richcompare;
  for (const probe& each : probes) {
    const PyObjectPtr answer(compare == nullptr ? nullptr : compare(a, b, each.operation));
    if (!answer && compare != nullptr) {
      return capture_error_or("Unable to compare Python objects.");
    }
    if (answer.get() == Py_True) {
      return Ordering(each.meaning);
    }
  }
  return order_by_helper(a, b);
}

}  // namespace

Result<Ordering> compare_object(const CPythonObject& self, const Any& other) {
  if (self.address() == nullptr || !CPythonObject::matches(other.get()) ||
      CPythonObject::unchecked(other).address() == nullptr) {
    return order_of_identities(self, other);
  }
  TRY(ensure_interpreter());
  const GilGuard gil;
  const PyObjectPtr left = self.python_object(), right = python_object_of(other);
  return order_of_objects(left.get(), right.get());
}

Any object_equals(const CPythonObject& self, const Any& other) {
  if (self.address() == nullptr) {
    return Undefined();
  }
  TRY(ensure_interpreter());
  const GilGuard gil;
  return equals_python(self.python_object().get(), other);
}

Any object_hash(const CPythonObject& self) {
  if (self.address() == nullptr) {
    return object_id(self);
  }
  TRY(ensure_interpreter());
  const GilGuard gil;
  return hash_of_python(self.python_object().get());
}

}  // namespace ling::cpython
