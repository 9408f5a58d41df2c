// Running and ending a program.
#include "command/program.h"

#include "command/platform.h"
#include "ling/error.h"

#include <cerrno>
#include <cstring>
#include <string_view>

namespace ling::command {

namespace {

constexpr int file_input = 257;  // Py_file_input

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

void wait_for_threads() {
  const reference name(python.PyUnicode_FromString("threading"));
  const reference module(name ? python.PyImport_GetModule(name.get()) : nullptr);
  if (module && !call(attribute(module.get(), "_shutdown"))) {
    ignore_exception("on threading shutdown", module.get());
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
  handover_ = reference::share(python.PySys_GetObject(handover_name));
  python.PySys_SetObject(handover_name, nullptr);
  own_output_ = reference::share(python.PySys_GetObject("stdout"));
  own_errors_ = reference::share(python.PySys_GetObject("stderr"));
  const bool complete = cleanup_.prepare() && run_exit_handlers_ && handover_;
  python.PyErr_Clear();
  return complete ? Result<None>(None()) : Error("The interpreter is not fit to run a program.");
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
  cleanup_.run();
  // What the program's objects have printed while they went, and what a program that has lost its streams had printed.
  for (const reference* stream : {&own_output_, &own_errors_}) {
    static_cast<void>(flush(stream->get()));
    python.PyErr_Clear();
  }
  return how.interrupted ? end_by_interrupt() : status;
}

}  // namespace ling::command
