// What `exec` and `eval` do, with compiled texts kept.
#include "python/python_source.h"

#include "ling/detail/immortal.h"
#include "python/code_cache.h"
#include "python/convert.h"
#include "python/interpreter_function.h"
#include "python/module_attribute.h"
#include "python/pending_exception.h"
#include "python/python_name.h"

namespace ling::cpython {

// Not PyDict_GetItemString, which does not tell a name that is missing from memory that is.
PyObject* find(PyObject* dict, const char* name) {
  const PyObjectPtr key(PyUnicode_FromString(name));
  return key ? PyDict_GetItemWithError(dict, key.get()) : nullptr;
}

bool store(PyObject* dict, const String& name, const Any& value) {
  if (is_error_result(value)) {
    return true;  // would be raised
  }
  // Not PyDict_SetItemString, which would end the name at a zero byte.
  const PyObjectPtr key(PyUnicode_FromStringAndSize(name.c_str(), static_cast<Py_ssize_t>(name.size())));
  const PyObjectPtr object = key ? to_python_locked(value) : PyObjectPtr();
  const bool stored = object && PyDict_SetItem(dict, key.get(), object.get()) == 0;
  tolerate_exception();
  return stored;
}

namespace {

constinit const module_attribute compile_function("builtins", "compile");

// The two ways to run a text.
struct way_to_run {
  module_attribute own;  // the interpreter's function
  python_name name;
  const char* mode;  // as `compile` calls it
};
constinit const way_to_run ways[] = {
    {{"builtins", "exec"}, "exec", "exec"},
    {{"builtins", "eval"}, "eval", "eval"},
};
const way_to_run& way_of(const python_source& source) noexcept { return ways[static_cast<int>(source.what)]; }

// The interpreter's structure of this name.
struct compiler_flags {
  int flags;
  int feature_version;
};
constinit const interpreter_function<int(compiler_flags*)> merge_flags("PyEval_MergeCompilerFlags");
constinit const interpreter_function<int(const char*, const char*, ...)> audit("PySys_Audit");

PyObjectPtr text_of(const python_source& source) {
  if (source.wrap != nullptr) {
    const std::string wrapped = source.wrap(source.code, source.names);
    return PyObjectPtr(PyUnicode_FromStringAndSize(wrapped.data(), static_cast<Py_ssize_t>(wrapped.size())));
  }
  return PyObjectPtr(PyUnicode_FromStringAndSize(source.code.data(), static_cast<Py_ssize_t>(source.code.size())));
}

// Not each version of the parser says that memory has run out.
PyObjectPtr or_no_memory(PyObject* result) {
  if (result == nullptr && PyErr_Occurred() == nullptr) {
    PyErr_NoMemory();
  }
  return PyObjectPtr(result);
}

code_cache& kept_codes() {
  static internal::immortal<code_cache> cache;  // outlives all static objects
  return cache.object;
}

PyObjectPtr compile_anew(python_source source) {
  if (source.what == python_source::kind::expression) {  // `eval` takes blanks away, `compile` does not
    source.code.remove_prefix(std::min(source.code.find_first_not_of(" \t"), source.code.size()));
  }
  PyObject* const compile = compile_function.get();
  const PyObjectPtr text = text_of(source);
  if (compile == nullptr || !text) {
    return {};
  }
  return or_no_memory(PyObject_CallFunction(compile, "Oss", text.get(), "<string>", way_of(source).mode));
}

}  // namespace

PyObjectPtr compile_source(const python_source& source) {
  compiler_flags inherited{};
  if (auto* const merge = merge_flags.get(); merge != nullptr) {
    merge(&inherited);
  } else {
    return compile_anew(source);
  }
  const void* const kind =
      source.wrap != nullptr ? reinterpret_cast<const void*>(source.wrap) : static_cast<const void*>(&way_of(source));
  const code_key key{kind, inherited.flags, source.code, source.names};
  if (PyObjectPtr kept = kept_codes().find(key)) {
    return kept;
  }
  PyObjectPtr code = compile_anew(source);
  // Warnings, which compiling shows, may have run code that came here.
  if (code && !kept_codes().find(key)) {
    kept_codes().add(key, code.get());
  }
  return code;
}

PyObjectPtr run_code(PyObject* code, PyObject* globals, PyObject* locals) {
  static constinit const python_name builtins_name("__builtins__");
  PyObject* const name = builtins_name.get();
  const int has_builtins = name == nullptr ? -1 : PyDict_Contains(globals, name);
  if (has_builtins < 0 || (has_builtins == 0 && PyDict_SetItem(globals, name, PyEval_GetBuiltins()) != 0)) {
    return {};
  }
  if (auto* const tell = audit.get(); tell != nullptr && tell("exec", "O", code) < 0) {
    return {};
  }
  return or_no_memory(PyEval_EvalCode(code, globals, locals));
}

PyObjectPtr run_source(const python_source& source, PyObject* globals, PyObject* locals) {
  const way_to_run& way = way_of(source);
  PyObject* const builtins = PyEval_GetBuiltins();
  PyObject* const name = builtins == nullptr ? nullptr : way.name.get();
  PyObject* const function = name == nullptr ? nullptr : PyDict_GetItemWithError(builtins, name);
  if (function == nullptr) {
    return {};
  }
  if (function == way.own.get()) [[likely]] {
    const PyObjectPtr code = compile_source(source);
    return code ? run_code(code.get(), globals, locals) : PyObjectPtr();
  }
  const PyObjectPtr text = text_of(source);
  return text ? or_no_memory(PyObject_CallFunctionObjArgs(function, text.get(), globals, locals, nullptr))
              : PyObjectPtr();
}

void know_own_functions() {
  const pending_exception_aside aside;
  static_cast<void>(compile_function.get());
  for (const way_to_run& each : ways) {
    static_cast<void>(each.own.get());
  }
}

}  // namespace ling::cpython
