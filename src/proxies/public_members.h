// What a Python type or module holds under names that it does not hide. The lock must be held.
#pragma once

#include "python/convert.h"
#include "python/pending_exception.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// Calls `take(name, value)` for each member whose name is a text that neither is empty nor begins with "_", in the
// order of the object's __dict__. Goes over a snapshot, so `take` may run Python code. Leaves no exception pending.
template <class F>
void for_each_public_member(PyObject* object, F&& take) {
  const PyObjectPtr dictionary(PyObject_GetAttrString(object, "__dict__"));
  const PyObjectPtr items(dictionary ? PyMapping_Items(dictionary.get()) : nullptr);
  drop_exception();
  for (Py_ssize_t i = 0; items && i < PyList_Size(items.get()); ++i) {
    PyObject* const pair = PyList_GetItem(items.get(), i);
    // A metaclass may present anything as the members of its types.
    if (!PyTuple_Check(pair) || PyTuple_Size(pair) != 2) {
      continue;
    }
    const auto name = String::cast(from_python_locked(PyTuple_GetItem(pair, 0)));
    if (name && !name->empty() && !name->startsWith("_")) {
      take(name.value(), PyTuple_GetItem(pair, 1));
    }
  }
}

}  // namespace ling::cpython
