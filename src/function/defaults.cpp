// Defaults: the attribute __defaults__.
#include "function/defaults.h"

#include "ling/detail/try.h"
#include "ling/tuple.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/pending_exception.h"

namespace ling::cpython {

std::vector<Any> defaults_of(PyObjectPtr_Borrowed callable) {
  const PyObjectPtr tuple(PyObject_GetAttrString(callable.get(), "__defaults__"));
  std::vector<Any> values;
  if (tuple && PyTuple_Check(tuple.get())) {
    for (Py_ssize_t i = 0; i < PyTuple_Size(tuple.get()); ++i) {
      values.push_back(from_python_locked(PyTuple_GetItem(tuple.get(), i)));
    }
  }
  drop_exception();
  return values;
}

Result<None> set_defaults(PyObjectPtr_Borrowed callable, const I_Iterable_Generic& values) {
  const List_Generic items = TRY(values.toList());
  // A tuple of the host's is copied item by item.
  const PyObjectPtr tuple = to_python_locked(Tuple_Generic(items.copyItems()));
  if (!tuple || PyObject_SetAttrString(callable.get(), "__defaults__", tuple.get()) != 0) {
    return capture_error_or("Unable to set the default values.");
  }
  return None();
}

}  // namespace ling::cpython
