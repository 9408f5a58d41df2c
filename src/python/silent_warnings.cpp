// A filter of our own in front of all others, put there without the knowledge of `warnings`: whoever uses that module's
// functions makes the interpreter forget which warnings it has shown.
#include "python/silent_warnings.h"

#include "python/pending_exception.h"

namespace ling::cpython {

namespace {

constexpr char registry[] = "__warningregistry__";

// The list of filters; null when it is none.
PyObjectPtr current_filters() noexcept {
  const PyObjectPtr warnings(PyImport_ImportModule("warnings"));
  PyObjectPtr filters(warnings ? PyObject_GetAttrString(warnings.get(), "filters") : nullptr);
  forget_exception();
  return filters && PyList_Check(filters.get()) ? std::move(filters) : PyObjectPtr();
}

// Not by equality: others may have a filter that is equal.
void remove_item(PyObject* list, PyObject* item) noexcept {
  for (Py_ssize_t i = 0; i < PyList_Size(list); ++i) {
    if (PyList_GetItem(list, i) == item) {
      PySequence_DelItem(list, i);
      forget_exception();
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
    globals = sys == nullptr ? nullptr : PyModule_GetDict(sys);
  }
  forget_exception();
  const bool has_none = globals != nullptr && PyDict_GetItemString(globals, registry) == nullptr;
  return has_none ? PyObjectPtr::share(globals) : PyObjectPtr();
}

}  // namespace

silent_warnings::silent_warnings() noexcept
    : filter_(Py_BuildValue("(sOOOi)", "ignore", Py_None, PyExc_Warning, Py_None, 0)) {
  forget_exception();
  PyObjectPtr filters = current_filters();
  if (!filter_ || !filters || PyList_Insert(filters.get(), 0, filter_.get()) != 0) {
    forget_exception();
    return;
  }
  filters_ = std::move(filters);
  globals_ = globals_without_registry();
}

silent_warnings::~silent_warnings() {
  if (!filters_) {
    return;
  }
  remove_item(filters_.get(), filter_.get());
  // Whoever saves the filters and puts them back, as `catch_warnings` does, works on copies.
  if (const PyObjectPtr now = current_filters(); now && now.get() != filters_.get()) {
    remove_item(now.get(), filter_.get());
  }
  if (globals_ && PyDict_DelItemString(globals_.get(), registry) != 0) {
    forget_exception();  // there still is none
  }
}

}  // namespace ling::cpython
