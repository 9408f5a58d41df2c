#include "faults/attempt.h"
#include "python/pyobject_ptr.h"

#include <dlfcn.h>

namespace faults {

namespace {

using namespace ling::cpython;

// The interpreter's compiler is left alone: it frees some of its buffers twice when there is no memory for the next one
// (seen in 3.11). The code that it has compiled is not.
PyObject* compile_function = nullptr;

PyObject* spared_compile(PyObject*, PyObject* arguments, PyObject* keywords) noexcept {
  const exposure spared_now(false);
  return PyObject_Call(compile_function, arguments, keywords);
}

// `exec` or `eval`, which are in the tuple `self` with the kind of code that they take.
PyObject* spared_run(PyObject* self, PyObject* arguments) noexcept {
  PyObjectPtr compiled;
  {
    const exposure spared_now(false);
    PyObject* const source = PyTuple_GetItem(arguments, 0);
    const PyObjectPtr code(PyUnicode_Check(source) == 0 ? PyObjectPtr::share(source).release()
                                                        : PyObject_CallFunction(compile_function, "OsO", source,
                                                                                "<string>", PyTuple_GetItem(self, 1)));
    const PyObjectPtr first(code ? PyTuple_Pack(1, code.get()) : nullptr);
    const PyObjectPtr rest(PyTuple_GetSlice(arguments, 1, PyTuple_Size(arguments)));
    compiled = PyObjectPtr(first ? PySequence_Concat(first.get(), rest.get()) : nullptr);
  }
  return compiled ? PyObject_CallObject(PyTuple_GetItem(self, 0), compiled.get()) : nullptr;
}

PyMethodDef spared_functions[] = {
    {"compile", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(&spared_compile)),
     METH_VARARGS | METH_KEYWORDS,                                                                          nullptr},
    {"exec",    &spared_run,                                                                  METH_VARARGS, nullptr},
    {"eval",    &spared_run,                                                                  METH_VARARGS, nullptr},
};

// So are functions that end the process, or crash, when there is no memory for the state of a thread or an iterator.
template <auto Function, class... Arguments>
auto call_spared(const char* name, Arguments... arguments) {
  static const auto original = reinterpret_cast<decltype(Function)>(dlsym(RTLD_NEXT, name));
  const exposure spared_now(false);
  return original(arguments...);
}

}  // namespace

void spare_what_breaks() {
  const GilGuard lock;
  const PyObjectPtr builtins(PyImport_ImportModule("builtins"));
  compile_function = PyObject_GetAttrString(builtins.get(), "compile");
  for (PyMethodDef& each : spared_functions) {
    const PyObjectPtr original(PyObject_GetAttrString(builtins.get(), each.ml_name));
    const PyObjectPtr self(Py_BuildValue("(Os)", original.get(), each.ml_name));
    const PyObjectPtr spared(PyCFunction_NewEx(&each, self.get(), nullptr));
    PyObject_SetAttrString(builtins.get(), each.ml_name, spared.get());
  }
  // A context that the module `decimal` cannot store it uses all the same.
  const PyObjectPtr decimal(PyImport_ImportModule("decimal"));
  const PyObjectPtr context(PyObject_CallMethod(decimal.get(), "getcontext", nullptr));
}

}  // namespace faults

extern "C" PyGILState_STATE PyGILState_Ensure() { return faults::call_spared<&PyGILState_Ensure>("PyGILState_Ensure"); }
extern "C" PyThreadState* PyThreadState_New(PyInterpreterState* interpreter) {
  return faults::call_spared<&PyThreadState_New>("PyThreadState_New", interpreter);
}
extern "C" PyObject* PyMapping_Items(PyObject* mapping) {
  return faults::call_spared<&PyMapping_Items>("PyMapping_Items", mapping);
}
extern "C" PyObject* Py_CompileString(const char* source, const char* file, int start) {
  return faults::call_spared<&Py_CompileString>("Py_CompileString", source, file, start);
}
extern "C" void Py_InitializeEx(int with_signals) {
  faults::call_spared<&Py_InitializeEx>("Py_InitializeEx", with_signals);
}
