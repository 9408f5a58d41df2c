// References that die.
#include "python/pyobject_ptr.h"

#include "python/interpreter.h"

namespace ling::cpython {

void PyObjectPtr::release_reference(PyObject* object) noexcept {
  if (known_phase.load(std::memory_order_relaxed) != interpreter_phase::ended && holds_lock()) [[likely]] {
    Py_DecRef(object);
    return;
  }
  // Another owner of the interpreter may have ended it, and all its objects with it, before the last host value died.
  if (!interpreter_runs()) {
    return;
  }
  const gil_lock lock;
  Py_DecRef(object);
}

}  // namespace ling::cpython
