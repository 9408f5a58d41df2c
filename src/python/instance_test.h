// isinstance() for deciding what an object is. The lock must be held.
#pragma once

#include "python/pending_exception.h"

namespace ling::cpython {

// Classes and objects may answer this themselves; one that raises instead is taken for a no.
inline bool is_instance(PyObject* object, PyObject* of_class) {
  const int answer = PyObject_IsInstance(object, of_class);
  if (answer < 0) {
    tolerate_exception();
  }
  return answer > 0;
}

}  // namespace ling::cpython
