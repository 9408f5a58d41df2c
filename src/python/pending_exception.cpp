// Pending exceptions.
#include "python/pending_exception.h"

#include <new>

namespace ling::cpython {

std::optional<fetched_exception> fetch_exception() {
  PyObject* type = nullptr;
  PyObject* value = nullptr;
  PyObject* traceback = nullptr;
  PyErr_Fetch(&type, &value, &traceback);
  if (type == nullptr) {
    return {};
  }
  PyErr_NormalizeException(&type, &value, &traceback);
  // An exception gets its traceback only when it is caught, and only Python code catches.
  if (value != nullptr && traceback != nullptr) {
    PyException_SetTraceback(value, traceback);
  }
  return fetched_exception{PyObjectPtr(type), PyObjectPtr(value), PyObjectPtr(traceback)};
}

void forget_exception() noexcept {
  if (PyErr_Occurred() != nullptr && PyErr_ExceptionMatches(PyExc_KeyboardInterrupt) != 0) {
    PyThreadState_SetAsyncExc(PyThread_get_thread_ident(), PyErr_Occurred());
  }
  PyErr_Clear();
}

void drop_exception() {
  if (PyErr_Occurred() == nullptr) [[likely]] {
    return;
  }
  const bool is_out_of_memory = PyErr_ExceptionMatches(PyExc_MemoryError) != 0;
  forget_exception();
  if (is_out_of_memory) {
    throw std::bad_alloc();
  }
}

}  // namespace ling::cpython
