// A filter of our own in front of all others, put there without the knowledge of `warnings`: whoever uses that module's
// functions makes the interpreter forget which warnings it has shown.
#include "bridge/silent_warnings.h"

namespace ling::cpython {

namespace {

constexpr char registry[] = "__warningregistry__";

// The list of filters; null when it is none.
PyObjectPtr filters_of(const PyObjectPtr& warnings) noexcept {
  PyObjectPtr filters(warnings ? PyObject_GetAttrString(warnings.get(), "filters") : nullptr);
  PyErr_Clear();
  return filters && PyList_Check(filters.get()) ? std::move(filters) : PyObjectPtr();
}

// Not by equality: others may have a filter that is equal.
void remove_item(PyObject* list, PyObject* item) noexcept {
  for (Py_ssize_t i = 0; i < PyList_Size(list); ++i) {
    if (PyList_GetItem(list, i) == item) {
      PySequence_DelItem(list, i);
      return;
    }
  }
}

// The variables of the code that a warning is put down to; those of `sys` where no code runs. Null when there is a
// registry of warnings among them.
PyObjectPtr globals_without_registry() noexcept {
  PyObject* globals = PyEval_GetGlobals();
  if (globals == nullptr) {
    PyObject* const sys = PyImport_AddModule("sys");
    if (sys == nullptr) {
      return {};
    }
    globals = PyModule_GetDict(sys);
  }
  return PyDict_GetItemString(globals, registry) == nullptr ? PyObjectPtr::share(globals) : PyObjectPtr();
}

}  // namespace

silent_warnings::silent_warnings() noexcept
    : warnings_(PyImport_ImportModule("warnings")),
      filter_(Py_BuildValue("(sOOOi)", "ignore", Py_None, PyExc_Warning, Py_None, 0)),
      globals_(globals_without_registry()) {
  const PyObjectPtr filters = filters_of(warnings_);
  if (filters && filter_) {
    PyList_Insert(filters.get(), 0, filter_.get());
  }
  PyErr_Clear();
}

silent_warnings::~silent_warnings() {
  if (const PyObjectPtr filters = filters_of(warnings_)) {
    remove_item(filters.get(), filter_.get());
  }
  if (globals_ && PyDict_DelItemString(globals_.get(), registry) != 0) {
    PyErr_Clear();  // there still is none
  }
}

}  // namespace ling::cpython
