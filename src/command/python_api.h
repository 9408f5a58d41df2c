// The functions of the interpreter library that the command calls itself. How a program ends must not depend on what it
// did to its interpreter, so that is written in them and not in Python. The command is not linked with the library: it
// uses the one that came with the language module.
#pragma once

#include "ling/none.h"
#include "ling/union.h"

#include <cstddef>
#include <cstdio>
#include <utility>

namespace ling::command {

struct PyObject;
struct PyThreadState;
struct PyInterpreterState;

// All but those with a FILE, PySys_Audit and the walk through the threads belong to the stable interface; those few are
// the same in all versions. A FILE belongs to one C library, which the interpreter and the command must share: on
// Windows the universal one as a DLL, as compilers choose it unless they are told otherwise.
// clang-format off
#define LING_PYTHON_FUNCTIONS(X)                                                                                       \
  X(void, Py_IncRef, (PyObject*))                                                                                      \
  X(void, Py_DecRef, (PyObject*))                                                                                      \
  X(int, PyGILState_Ensure, ())                                                                                        \
  X(void, PyGILState_Release, (int))                                                                                   \
  X(PyThreadState*, PyThreadState_Get, ())                                                                             \
  X(PyThreadState*, PyThreadState_Next, (PyThreadState*))                                                              \
  X(PyInterpreterState*, PyInterpreterState_Get, ())                                                                   \
  X(PyThreadState*, PyInterpreterState_ThreadHead, (PyInterpreterState*))                                              \
  X(PyObject*, PyErr_Occurred, ())                                                                                     \
  X(void, PyErr_Clear, ())                                                                                             \
  X(void, PyErr_Fetch, (PyObject**, PyObject**, PyObject**))                                                           \
  X(void, PyErr_NormalizeException, (PyObject**, PyObject**, PyObject**))                                              \
  X(void, PyErr_Restore, (PyObject*, PyObject*, PyObject*))                                                            \
  X(void, PyErr_SetObject, (PyObject*, PyObject*))                                                                     \
  X(void, PyErr_SetString, (PyObject*, const char*))                                                                   \
  X(int, PyErr_GivenExceptionMatches, (PyObject*, PyObject*))                                                          \
  X(void, PyErr_Display, (PyObject*, PyObject*, PyObject*))                                                            \
  X(void, PyErr_WriteUnraisable, (PyObject*))                                                                          \
  X(int, PyException_SetTraceback, (PyObject*, PyObject*))                                                             \
  X(PyObject*, PySys_GetObject, (const char*))                                                                         \
  X(int, PySys_SetObject, (const char*, PyObject*))                                                                    \
  X(void, PySys_WriteStderr, (const char*, ...))                                                                       \
  X(void, PySys_FormatStderr, (const char*, ...))                                                                      \
  X(int, PySys_Audit, (const char*, const char*, ...))                                                                 \
  X(PyObject*, PyImport_ImportModule, (const char*))                                                                   \
  X(PyObject*, PyImport_AddModule, (const char*))                                                                      \
  X(PyObject*, PyImport_GetModule, (PyObject*))                                                                        \
  X(PyObject*, PyImport_GetModuleDict, ())                                                                             \
  X(long, PyImport_GetMagicNumber, ())                                                                                 \
  X(PyObject*, PyRun_FileExFlags, (std::FILE*, const char*, int, PyObject*, PyObject*, int, void*))                    \
  X(PyObject*, PyEval_EvalCode, (PyObject*, PyObject*, PyObject*))                                                     \
  X(long, PyMarshal_ReadLongFromFile, (std::FILE*))                                                                    \
  X(PyObject*, PyMarshal_ReadLastObjectFromFile, (std::FILE*))                                                         \
  X(PyObject*, PyObject_Type, (PyObject*))                                                                             \
  X(int, PyType_IsSubtype, (PyObject*, PyObject*))                                                                     \
  X(PyObject*, PyObject_GetAttrString, (PyObject*, const char*))                                                       \
  X(PyObject*, PyObject_CallFunctionObjArgs, (PyObject*, ...))                                                         \
  X(int, PyObject_IsTrue, (PyObject*))                                                                                 \
  X(int, PyObject_Print, (PyObject*, std::FILE*, int))                                                                 \
  X(int, PyFile_WriteObject, (PyObject*, PyObject*, int))                                                              \
  X(int, PyFile_WriteString, (const char*, PyObject*))                                                                 \
  X(long, PyLong_AsLong, (PyObject*))                                                                                  \
  X(PyObject*, PyLong_FromLong, (long))                                                                                \
  X(PyObject*, PyUnicode_FromString, (const char*))                                                                    \
  X(PyObject*, PyUnicode_DecodeUTF8, (const char*, std::ptrdiff_t, const char*))                                       \
  X(PyObject*, PyUnicode_DecodeFSDefault, (const char*))                                                               \
  X(const char*, PyUnicode_AsUTF8AndSize, (PyObject*, std::ptrdiff_t*))                                                \
  X(PyObject*, PySequence_GetItem, (PyObject*, std::ptrdiff_t))                                                        \
  X(int, PySequence_DelSlice, (PyObject*, std::ptrdiff_t, std::ptrdiff_t))                                             \
  X(PyObject*, PySet_New, (PyObject*))                                                                                 \
  X(PyObject*, PyDict_Copy, (PyObject*))                                                                               \
  X(void, PyDict_Clear, (PyObject*))                                                                                   \
  X(int, PyDict_Update, (PyObject*, PyObject*))                                                                        \
  X(int, PyDict_Next, (PyObject*, std::ptrdiff_t*, PyObject**, PyObject**))                                            \
  X(PyObject*, PyDict_GetItem, (PyObject*, PyObject*))                                                                 \
  X(int, PyDict_SetItem, (PyObject*, PyObject*, PyObject*))                                                            \
  X(int, PyDict_SetItemString, (PyObject*, const char*, PyObject*))                                                    \
  X(int, PyDict_DelItemString, (PyObject*, const char*))                                                               \
  X(PyObject*, PyWeakref_NewRef, (PyObject*, PyObject*))                                                               \
  X(PyObject*, PyWeakref_GetObject, (PyObject*))                                                                       \
  X(std::ptrdiff_t, PyGC_Collect, ())

// Objects that the library has as variables, and variables that hold the object.
#define LING_PYTHON_OBJECTS(X)                                                                                         \
  X(PyObject*, _Py_NoneStruct)                                                                                         \
  X(PyObject*, _Py_FalseStruct)                                                                                        \
  X(PyObject*, PyLong_Type)                                                                                            \
  X(PyObject*, PyCode_Type)                                                                                            \
  X(PyObject**, PyExc_BaseException)                                                                                   \
  X(PyObject**, PyExc_Exception)                                                                                       \
  X(PyObject**, PyExc_SystemExit)                                                                                      \
  X(PyObject**, PyExc_KeyboardInterrupt)                                                                               \
  X(PyObject**, PyExc_RuntimeError)
// clang-format on

#define LING_DECLARE_PYTHON_FUNCTION(result, name, parameters) result(*name) parameters = nullptr;
#define LING_DECLARE_PYTHON_OBJECT(type, name) type name = nullptr;

struct python_api {
  // Finds them all; the Error names what the library does not have.
  Result<None> open();

  LING_PYTHON_FUNCTIONS(LING_DECLARE_PYTHON_FUNCTION)
  LING_PYTHON_OBJECTS(LING_DECLARE_PYTHON_OBJECT)

  // Of some versions only; null in others.
  void (*PyErr_FormatUnraisable)(const char*, ...) = nullptr;
};

#undef LING_DECLARE_PYTHON_FUNCTION
#undef LING_DECLARE_PYTHON_OBJECT

// Complete once it has been opened.
inline constinit python_api python;

// The interpreter lock, for as long as this lives.
class [[nodiscard]] interpreter_lock {
 public:
  interpreter_lock() : state_(python.PyGILState_Ensure()) {}
  ~interpreter_lock() { python.PyGILState_Release(state_); }
  interpreter_lock(const interpreter_lock&) = delete;
  interpreter_lock& operator=(const interpreter_lock&) = delete;

 private:
  int state_;
};

inline constexpr char main_name[] = "__main__";

inline PyObject* none() { return python._Py_NoneStruct; }
inline bool is_none(PyObject* object) { return object == nullptr || object == none(); }

// An owned reference to a Python object, or null; the lock must be held.
class [[nodiscard]] reference {
 public:
  reference() noexcept = default;
  // Adopts a new reference.
  explicit reference(PyObject* object) noexcept : object_(object) {}
  static reference share(PyObject* borrowed) noexcept {
    if (borrowed != nullptr) {
      python.Py_IncRef(borrowed);
    }
    return reference(borrowed);
  }
  reference(reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  reference& operator=(reference&& other) noexcept {
    const reference old(std::exchange(object_, std::exchange(other.object_, nullptr)));
    return *this;
  }
  reference(const reference&) = delete;
  reference& operator=(const reference&) = delete;
  ~reference() {
    if (object_ != nullptr) {
      python.Py_DecRef(object_);
    }
  }

  PyObject* get() const noexcept { return object_; }
  [[nodiscard]] PyObject* release() noexcept { return std::exchange(object_, nullptr); }
  explicit operator bool() const noexcept { return object_ != nullptr; }

 private:
  PyObject* object_ = nullptr;
};

// They pass a failure on: of null comes null, and the exception stays pending.
inline reference attribute(PyObject* object, const char* name) {
  return reference(object == nullptr ? nullptr : python.PyObject_GetAttrString(object, name));
}
inline reference module_attribute(const char* module, const char* name) {
  return attribute(reference(python.PyImport_ImportModule(module)).get(), name);
}
template <class... Arguments>
reference call(const reference& function, Arguments*... arguments) {
  const bool complete = function && ((arguments != nullptr) && ...);
  return reference(complete ? python.PyObject_CallFunctionObjArgs(function.get(), static_cast<PyObject*>(arguments)...,
                                                                  static_cast<PyObject*>(nullptr))
                            : nullptr);
}

}  // namespace ling::command
