// What `exec` and `eval` do, with compiled texts kept.
#include "python/python_source.h"

#include "ling/detail/immortal.h"
#include "python/code_cache.h"
#include "python/convert.h"
#include "python/interpreter_function.h"
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

// A function of the interpreter's own, which programs may have put others in the place of before anybody looked.
class builtin_function {
 public:
  constexpr explicit builtin_function(const char* name) noexcept : name_(name) {}

  const char* name() const noexcept { return name_; }
  // Whether it is this one: no Python code makes functions like it.
  bool is(PyObject* function) const noexcept {
    if (function != known_.get()) {
      return known_.get() == nullptr && is_own(function) && known_.publish(PyObjectPtr::share(function)) == function;
    }
    return true;
  }
  // Borrowed; null when another function is in its place.
  PyObject* find() const {
    PyObject* const builtins = known_.get() != nullptr ? nullptr : PyEval_GetBuiltins();
    PyObject* const function = builtins == nullptr ? nullptr : cpython::find(builtins, name_);
    return known_.get() != nullptr || (function != nullptr && is(function)) ? known_.get() : nullptr;
  }

 private:
  bool is_own(PyObject* function) const noexcept {
    if (Py_TYPE(function) != &PyCFunction_Type) {
      return false;
    }
    static constinit const python_name name_of_object("__name__");
    PyObject* const owner = PyCFunction_GetSelf(function);
    const PyObjectPtr owner_name(owner != nullptr && PyModule_Check(owner) ? name_of_object.find(owner)
                                                                           : PyObjectPtr());
    const PyObjectPtr own_name = name_of_object.find(function);
    const bool is_known = owner_name && own_name &&
                          PyUnicode_CompareWithASCIIString(owner_name.get(), "builtins") == 0 &&
                          PyUnicode_CompareWithASCIIString(own_name.get(), name_) == 0;
    forget_exception();
    return is_known;
  }

  const char* name_;
  mutable internal::published<PyObject> known_;
};

constinit const builtin_function own_compile("compile");

// The two ways to run a text, which are also modes of `compile`.
struct way_to_run {
  builtin_function own;
  python_name name;
};
constinit const way_to_run ways[] = {
    {builtin_function("exec"), "exec"},
    {builtin_function("eval"), "eval"},
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
  PyObject* const compile = own_compile.find();
  const PyObjectPtr text = text_of(source);
  if (compile == nullptr || !text) {
    return {};
  }
  return or_no_memory(PyObject_CallFunction(compile, "Oss", text.get(), "<string>", way_of(source).own.name()));
}

}  // namespace

PyObjectPtr compile_source(const python_source& source) {
  auto* const merge = merge_flags.get();
  if (merge == nullptr) {
    return compile_anew(source);
  }
  compiler_flags inherited{};
  merge(&inherited);
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
  if (way.own.is(function) && own_compile.find() != nullptr) [[likely]] {
    const PyObjectPtr code = compile_source(source);
    return code ? run_code(code.get(), globals, locals) : PyObjectPtr();
  }
  const PyObjectPtr text = text_of(source);
  return text ? or_no_memory(PyObject_CallFunctionObjArgs(function, text.get(), globals, locals, nullptr))
              : PyObjectPtr();
}

}  // namespace ling::cpython
