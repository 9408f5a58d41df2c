// Running and ending a program by the interpreter's C functions: nothing that the program does to its interpreter is in
// their way, and its hooks see none of it.
#include "host/program.h"

#include "host/platform.h"
#include "ling/error.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

namespace ling::host {

namespace {

constexpr int file_input = 257;  // Py_file_input
constexpr int as_text = 1;       // Py_PRINT_RAW

constexpr char main_name[] = "__main__";

class [[nodiscard]] interpreter_lock {
 public:
  interpreter_lock() : state_(python.PyGILState_Ensure()) {}
  ~interpreter_lock() { python.PyGILState_Release(state_); }
  interpreter_lock(const interpreter_lock&) = delete;
  interpreter_lock& operator=(const interpreter_lock&) = delete;

 private:
  int state_;
};

PyObject* none() { return python._Py_NoneStruct; }
bool is_none(PyObject* object) { return object == nullptr || object == none(); }

reference module_attribute(const char* module, const char* name) {
  return attribute(reference(python.PyImport_ImportModule(module)).get(), name);
}

// --- exceptions ------------------------------------------------------------------------------------------------------

struct exception {
  reference type;
  reference value;
  reference traceback;
};

exception fetch() {
  PyObject *type = nullptr, *value = nullptr, *traceback = nullptr;
  python.PyErr_Fetch(&type, &value, &traceback);
  return {reference(type), reference(value), reference(traceback)};
}

// As an `except` clause would get it.
exception fetch_normalized() {
  exception raw = fetch();
  PyObject *type = raw.type.release(), *value = raw.value.release(), *traceback = raw.traceback.release();
  python.PyErr_NormalizeException(&type, &value, &traceback);
  if (value != nullptr && traceback != nullptr) {
    python.PyException_SetTraceback(value, traceback);
  }
  return {reference(type), reference(value), reference(traceback)};
}

void display(const exception& shown) {
  python.PyErr_Display(shown.type.get(), shown.value.get(), shown.traceback.get());
}

// An exception that nobody is left to handle. Newer versions say in words where it comes from.
void ignore(const char* words, PyObject* culprit) {
  if (python.PyErr_FormatUnraisable != nullptr) {
    python.PyErr_FormatUnraisable("Exception ignored %s", words);
    return;
  }
  if (culprit == nullptr) {
    python.PySys_WriteStderr("Exception ignored %s:\n", words);  // or nothing would say so
  }
  python.PyErr_WriteUnraisable(culprit);
}

bool is_exit_pending() {
  return python.PyErr_GivenExceptionMatches(python.PyErr_Occurred(), *python.PyExc_SystemExit) != 0;
}

bool is_integer(PyObject* object) {
  const reference type(python.PyObject_Type(object));
  return python.PyType_IsSubtype(type.get(), python.PyLong_Type) != 0;
}

// The status of the pending SystemExit.
int take_exit_status() {
  const exception request = fetch_normalized();
  std::fflush(stdout);
  reference code = attribute(request.value.get(), "code");
  python.PyErr_Clear();
  if (!code) {
    code = reference::share(request.value.get());
  }
  if (is_none(code.get())) {
    return success;
  }
  if (is_integer(code.get())) {
    const auto status = static_cast<int>(python.PyLong_AsLong(code.get()));
    python.PyErr_Clear();
    return status;
  }
  PyObject* const stream = python.PySys_GetObject("stderr");
  if (is_none(stream)) {
    python.PyObject_Print(code.get(), stderr, as_text);
    std::fflush(stderr);
  } else {
    python.PyFile_WriteObject(code.get(), stream, as_text);
  }
  python.PyErr_Clear();
  python.PySys_WriteStderr("\n");
  return failure;
}

// Keeps the exception where a debugger looks for it after the end.
void set_last(const exception& last) {
  const reference version = reference::share(python.PySys_GetObject("hexversion"));
  if (version && is_integer(version.get()) && python.PyLong_AsLong(version.get()) >= 0x030C0000) {
    python.PySys_SetObject("last_exc", last.value.get());
  }
  python.PySys_SetObject("last_type", last.type.get());
  python.PySys_SetObject("last_value", last.value.get());
  python.PySys_SetObject("last_traceback", last.traceback ? last.traceback.get() : none());
  python.PyErr_Clear();
}

// Reports the pending exception, and takes it away.
outcome report() {
  if (is_exit_pending()) {
    return {.status = take_exit_status(), .exited = true};
  }
  // Of this very class: those derived from it are exceptions like others.
  const bool interrupted = python.PyErr_Occurred() == *python.PyExc_KeyboardInterrupt;
  const exception error = fetch_normalized();
  PyObject* const traceback = error.traceback ? error.traceback.get() : none();
  set_last(error);
  const reference hook = reference::share(python.PySys_GetObject("excepthook"));
  if (python.PySys_Audit("sys.excepthook", "OOOO", hook ? hook.get() : none(), error.type.get(), error.value.get(),
                         traceback) < 0) {
    if (python.PyErr_GivenExceptionMatches(python.PyErr_Occurred(), *python.PyExc_RuntimeError) != 0) {
      python.PyErr_Clear();
      return {.status = failure, .interrupted = interrupted};
    }
    ignore("in audit hook", nullptr);
  }
  if (!hook) {
    python.PySys_WriteStderr("sys.excepthook is missing\n");
    display(error);
  } else if (!call(hook, error.type.get(), error.value.get(), traceback)) {
    if (is_exit_pending()) {
      return {.status = take_exit_status(), .exited = true};
    }
    const exception raised = fetch_normalized();
    std::fflush(stdout);
    python.PySys_WriteStderr("Error in sys.excepthook:\n");
    display(raised);
    python.PySys_WriteStderr("\nOriginal exception was:\n");
    display(error);
  }
  python.PyErr_Clear();
  return {.status = failure, .interrupted = interrupted};
}

// --- streams ---------------------------------------------------------------------------------------------------------

bool is_closed(PyObject* stream) {
  const reference closed = attribute(stream, "closed");
  const bool is_so = closed && python.PyObject_IsTrue(closed.get()) > 0;
  python.PyErr_Clear();
  return is_so;
}

// False with the exception pending.
bool flush(PyObject* stream) {
  return is_none(stream) || is_closed(stream) || static_cast<bool>(call(attribute(stream, "flush")));
}

// What a program has printed comes before the report of its failure.
void flush_quietly() {
  exception pending = fetch();
  for (const char* name : {"stderr", "stdout"}) {
    const reference stream = reference::share(python.PySys_GetObject(name));
    static_cast<void>(flush(stream.get()));
    python.PyErr_Clear();
  }
  python.PyErr_Restore(pending.type.release(), pending.value.release(), pending.traceback.release());
}

bool flush_standard_streams() {
  const reference output = reference::share(python.PySys_GetObject("stdout"));
  const reference errors = reference::share(python.PySys_GetObject("stderr"));
  const bool is_output_written = flush(output.get());
  if (!is_output_written) {
    ignore("on flushing sys.stdout", output.get());
  }
  const bool are_errors_written = flush(errors.get());
  python.PyErr_Clear();
  return is_output_written && are_errors_written;
}

// --- running ---------------------------------------------------------------------------------------------------------

bool is_compiled(const std::string& path, std::FILE* file) {
  if (std::string_view(path).ends_with(".pyc")) {
    return true;
  }
  if (std::ftell(file) != 0) {
    return false;  // what has no beginning to return to, such as a pipe
  }
  const long magic = python.PyImport_GetMagicNumber();
  unsigned char start[2];
  const bool is_so = std::fread(start, 1, sizeof start, file) == sizeof start && start[0] == (magic & 0xFF) &&
                     start[1] == (magic >> 8 & 0xFF);
  std::rewind(file);
  return is_so;
}

// Null with the exception pending.
reference read_code(std::FILE* file) {
  if (python.PyMarshal_ReadLongFromFile(file) != python.PyImport_GetMagicNumber()) {
    python.PyErr_SetString(*python.PyExc_RuntimeError, "Bad magic number in .pyc file");
    return {};
  }
  for (int i = 0; i < 3; ++i) {
    static_cast<void>(python.PyMarshal_ReadLongFromFile(file));  // flags, and what it was compiled from
  }
  reference code(python.PyMarshal_ReadLastObjectFromFile(file));
  if (!code || reference(python.PyObject_Type(code.get())).get() != python.PyCode_Type) {
    python.PyErr_SetString(*python.PyExc_RuntimeError, "Bad code object in .pyc file");
    return {};
  }
  return code;
}

// Closes the file.
reference run_in(PyObject* names, std::FILE* file, const std::string& path) {
  const bool compiled = is_compiled(path, file);
  const reference name(python.PyUnicode_DecodeFSDefault(path.c_str()));
  const reference module_name(python.PyUnicode_FromString(main_name));
  const reference loader =
      call(module_attribute("_frozen_importlib_external", compiled ? "SourcelessFileLoader" : "SourceFileLoader"),
           module_name.get(), name.get());
  if (!loader || python.PyDict_SetItemString(names, "__file__", name.get()) != 0 ||
      python.PyDict_SetItemString(names, "__cached__", none()) != 0 ||
      python.PyDict_SetItemString(names, "__loader__", loader.get()) != 0) {
    std::fclose(file);
    return {};
  }
  if (compiled) {
    const reference code = read_code(file);
    std::fclose(file);
    return reference(code ? python.PyEval_EvalCode(code.get(), names, names) : nullptr);
  }
  constexpr int close_file = 1;
  return reference(python.PyRun_FileExFlags(file, path.c_str(), file_input, names, names, close_file, nullptr));
}

// --- ending ----------------------------------------------------------------------------------------------------------

void wait_for_threads() {
  const reference name(python.PyUnicode_FromString("threading"));
  const reference module(name ? python.PyImport_GetModule(name.get()) : nullptr);
  if (module && !call(attribute(module.get(), "_shutdown"))) {
    ignore("on threading shutdown", module.get());
  }
  python.PyErr_Clear();
}

// Whether other threads may run Python code: the program's own that nobody waits for, or a host's.
bool are_others_running() {
  PyThreadState* const own = python.PyThreadState_Get();
  PyThreadState* const first = python.PyInterpreterState_ThreadHead(python.PyInterpreterState_Get());
  return first != own || python.PyThreadState_Next(own) != nullptr;
}

// Replaces the values of the names that are wanted by None, as the interpreter does.
template <class Wanted>
void take_contents(PyObject* names, const Wanted& is_wanted) {
  const reference contents(python.PyDict_Copy(names));
  PyObject* key = nullptr;
  for (std::ptrdiff_t i = 0; contents && python.PyDict_Next(contents.get(), &i, &key, nullptr) != 0;) {
    const char* const name = python.PyUnicode_AsUTF8AndSize(key, nullptr);
    if (name != nullptr && is_wanted(std::string_view(name))) {
      python.PyDict_SetItem(names, key, none());
    }
    python.PyErr_Clear();
  }
}

// What is private first, the built-in functions never.
void empty_namespace(PyObject* names) {
  take_contents(names, [](std::string_view key) { return key.starts_with('_') && !key.starts_with("__"); });
  take_contents(names, [](std::string_view key) { return key != "__builtins__"; });
}

// Takes their contents from modules that something still refers to.
void empty_modules(PyObject* weak_references) {
  PyObject *name = nullptr, *weak = nullptr;
  for (std::ptrdiff_t i = 0;
       weak_references != nullptr && python.PyDict_Next(weak_references, &i, &name, &weak) != 0;) {
    const reference module = reference::share(is_none(weak) ? nullptr : python.PyWeakref_GetObject(weak));
    if (is_none(module.get())) {
      continue;
    }
    const reference names = attribute(module.get(), "__dict__");
    python.PyErr_Clear();
    if (names) {
      empty_namespace(names.get());
    }
  }
}

// What a program has added or replaced goes away; while it goes, the module is whole.
void restore(PyObject* names, PyObject* before) {
  const reference contents(python.PyDict_Copy(names));
  if (contents) {
    python.PyDict_Clear(names);
    python.PyDict_Update(names, before);
  }
  python.PyErr_Clear();
}

}  // namespace

program& program::instance() {
  static auto* const only = new program;
  return *only;
}

Result<None> program::start() {
  if (auto opened = python.open(); opened.is_error()) {
    return opened;
  }
  const interpreter_lock lock;
  run_exit_handlers_ = module_attribute("atexit", "_run_exitfuncs");
  signal_handler_ = module_attribute("_signal", "getsignal");
  set_signal_handler_ = module_attribute("_signal", "signal");
  collect_garbage_ = module_attribute("gc", "collect");
  garbage_callbacks_ = module_attribute("gc", "callbacks");
  referrers_ = module_attribute("gc", "get_referrers");
  modules_before_ = reference(python.PyDict_Copy(python.PyImport_GetModuleDict()));
  handover_ = reference::share(python.PySys_GetObject(handover_name));
  python.PySys_SetObject(handover_name, nullptr);
  own_output_ = reference::share(python.PySys_GetObject("stdout"));
  own_errors_ = reference::share(python.PySys_GetObject("stderr"));
  const bool complete = run_exit_handlers_ && signal_handler_ && set_signal_handler_ && collect_garbage_ &&
                        garbage_callbacks_ && referrers_ && modules_before_ && handover_;
  if (complete) {
    python.PyDict_DelItemString(modules_before_.get(), main_name);  // the program's
    remember_contents();
  }
  python.PyErr_Clear();
  return complete ? Result<None>(None()) : Error("The interpreter is not fit to run a program.");
}

void program::remember_contents() {
  PyObject *name = nullptr, *module = nullptr;
  for (std::ptrdiff_t i = 0; python.PyDict_Next(modules_before_.get(), &i, &name, &module) != 0;) {
    reference names = attribute(module, "__dict__");
    reference before(names ? python.PyDict_Copy(names.get()) : nullptr);
    if (before) {
      contents_before_.push_back({std::move(names), std::move(before)});
    }
    python.PyErr_Clear();  // not everything that is called a module is one
  }
  // `sys` is the first module; the hooks in it are there for the finalisers of all others.
  const auto first = contents_before_.begin();
  std::rotate(first, contents_before_.empty() ? first : first + 1, contents_before_.end());
}

outcome program::run_file(const std::string& path) const {
  const interpreter_lock lock;
  const reference name(python.PyUnicode_DecodeFSDefault(path.c_str()));
  if (!name || python.PySys_Audit("cpython.run_file", "O", name.get()) < 0) {
    return report();
  }
  std::FILE* const file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) {
    const int cause = errno;
    python.PySys_FormatStderr("ling: can't open file %R: [Errno %d] %s\n", name.get(), cause, std::strerror(cause));
    return {wrong_usage};
  }
  const reference main = reference::share(python.PyImport_AddModule(main_name));
  const reference names = attribute(main.get(), "__dict__");
  const bool done = names && run_in(names.get(), file, path);
  flush_quietly();
  const outcome how = done ? outcome{} : report();
  if (names && !how.exited) {
    for (const char* own : {"__file__", "__cached__"}) {
      python.PyDict_DelItemString(names.get(), own);
      python.PyErr_Clear();
    }
  }
  return how;
}

outcome program::run_package() const {
  const interpreter_lock lock;
  const reference name(python.PyUnicode_FromString(main_name));
  const bool done =
      static_cast<bool>(call(module_attribute("runpy", "_run_module_as_main"), name.get(), python._Py_FalseStruct));
  return done ? outcome{} : report();
}

outcome program::print(const String& line) const {
  const interpreter_lock lock;
  const reference stream = reference::share(python.PySys_GetObject("stdout"));
  const reference text(python.PyUnicode_DecodeUTF8(line.view().data(), static_cast<std::ptrdiff_t>(line.view().size()),
                                                   "surrogateescape"));
  const bool done =
      text && (is_none(stream.get()) || (python.PyFile_WriteObject(text.get(), stream.get(), as_text) == 0 &&
                                         python.PyFile_WriteString("\n", stream.get()) == 0));
  return done ? outcome{} : report();
}

std::optional<outcome> program::report_handed_over() const {
  const interpreter_lock lock;
  const reference instance(python.PySequence_GetItem(handover_.get(), 0));
  python.PySequence_DelSlice(handover_.get(), 0, 1);
  python.PyErr_Clear();
  if (!instance || python.PyErr_GivenExceptionMatches(instance.get(), *python.PyExc_BaseException) == 0 ||
      python.PyErr_GivenExceptionMatches(instance.get(), *python.PyExc_Exception) != 0) {
    return std::nullopt;
  }
  python.PyErr_SetObject(reference(python.PyObject_Type(instance.get())).get(), instance.get());
  return report();
}

int program::end(const outcome& how) const {
  const interpreter_lock lock;
  wait_for_threads();
  static_cast<void>(call(run_exit_handlers_));
  python.PyErr_Clear();  // it has been printed
  const int status = flush_standard_streams() ? how.status : lost_output;
  let_go();
  // What the program's objects have printed while they went, and what a program that has lost its streams had printed.
  for (const reference* stream : {&own_output_, &own_errors_}) {
    static_cast<void>(flush(stream->get()));
    python.PyErr_Clear();
  }
  return how.interrupted ? end_by_interrupt() : status;
}

// Objects are finalised when nothing refers to them any more.
void program::let_go() const {
  let_go_of_signal_handlers();
  python.PyGC_Collect();
  python.PySequence_DelSlice(garbage_callbacks_.get(), 0, PTRDIFF_MAX);
  for (const char* name : {"last_exc", "last_type", "last_value", "last_traceback"}) {
    python.PySys_SetObject(name, nullptr);
  }
  PyObject* const modules = python.PyImport_GetModuleDict();
  if (are_others_running()) {
    // They may be using anything else.
    python.PyDict_SetItemString(modules, main_name, none());
    collect_garbage();
    return;
  }
  for (const auto& [name, original] : {
           std::pair{"stdin",  "__stdin__" },
           {"stdout", "__stdout__"},
           {"stderr", "__stderr__"}
  }) {
    PyObject* const stream = python.PySys_GetObject(original);
    python.PySys_SetObject(name, stream == nullptr ? none() : stream);
  }
  std::vector<known_namespace> namespaces;
  const reference forgotten = forget_modules(modules, namespaces);
  // What a program has put into `builtins` ends before what other modules hold.
  const reference builtins_name(python.PyUnicode_FromString("builtins"));
  const reference builtins = attribute(
      builtins_name ? python.PyDict_GetItem(modules_before_.get(), builtins_name.get()) : nullptr, "__dict__");
  python.PyErr_Clear();
  for (const known_module& each : contents_before_) {
    if (each.names.get() == builtins.get()) {
      restore(each.names.get(), each.before.get());
    }
  }
  collect_garbage();
  empty_modules(forgotten.get());
  for (const known_module& each : contents_before_) {
    restore(each.names.get(), each.before.get());
  }
  collect_garbage();
  // What lives for as long as the interpreter, such as a table of codecs or a value of the host, may hold functions of
  // modules that have gone, and with them all variables of those modules. They find no streams any more.
  for (const char* name : {"stdin", "stdout", "stderr"}) {
    python.PySys_SetObject(name, none());
  }
  for (const known_namespace& each : namespaces) {
    empty_left_namespace(each);
  }
  collect_garbage();
}

// The handlers that are functions lead to the variables of their modules.
void program::let_go_of_signal_handlers() const {
  constexpr long first_signal = 1, behind_last_signal = 65, by_default = 0;
  const reference default_handler(python.PyLong_FromLong(by_default));
  for (long number = first_signal; number != behind_last_signal; ++number) {
    const reference signal(python.PyLong_FromLong(number));
    const reference handler = call(signal_handler_, signal.get());
    if (!is_none(handler.get()) && reference(python.PyObject_Type(handler.get())).get() != python.PyLong_Type) {
      static_cast<void>(call(set_signal_handler_, signal.get(), default_handler.get()));
    }
    python.PyErr_Clear();
  }
}

// The modules that the program has brought with it, as weak references by their names; None stands for all others.
reference program::forget_modules(PyObject* modules, std::vector<known_namespace>& namespaces) const {
  reference forgotten(python.PyDict_Copy(modules));
  PyObject *name = nullptr, *module = nullptr;
  for (std::ptrdiff_t i = 0; forgotten && python.PyDict_Next(forgotten.get(), &i, &name, &module) != 0;) {
    reference weak;
    if (python.PyDict_GetItem(modules_before_.get(), name) != module) {
      weak = reference(python.PyWeakref_NewRef(module, nullptr));
      watch(attribute(module, "__dict__").get(), namespaces);
      python.PyDict_SetItem(modules, name, none());
    }
    python.PyErr_Clear();
    python.PyDict_SetItem(forgotten.get(), name, weak ? weak.get() : none());
  }
  return forgotten;
}

// What refers to the object is there, whatever it is: the namespace itself or a copy that a program has made of it.
void program::empty_left_namespace(const known_namespace& left) const {
  const reference alive = reference::share(python.PyWeakref_GetObject(left.alive.get()));
  const reference holders = is_none(alive.get()) ? reference() : call(referrers_, alive.get());
  for (std::ptrdiff_t i = 0; holders; ++i) {
    const reference holder(python.PySequence_GetItem(holders.get(), i));
    if (!holder) {
      break;
    }
    if (holder.get() == left.names) {
      empty_namespace(holder.get());
    }
  }
  python.PyErr_Clear();
}

void program::watch(PyObject* names, std::vector<known_namespace>& namespaces) {
  const reference object(python.PySet_New(nullptr));
  reference weak(object ? python.PyWeakref_NewRef(object.get(), nullptr) : nullptr);
  if (weak && names != nullptr && python.PyDict_SetItemString(names, "__alive__", object.get()) == 0) {
    namespaces.push_back({names, std::move(weak)});
  }
  python.PyErr_Clear();
}

void program::collect_garbage() const {
  static_cast<void>(call(collect_garbage_));
  python.PyErr_Clear();
}

}  // namespace ling::host
