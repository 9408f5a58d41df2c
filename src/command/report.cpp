// Reports of exceptions, and what is left in the streams.
#include "command/report.h"

#include <cstdio>

namespace ling::command {

namespace {

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

bool is_closed(PyObject* stream) {
  const reference closed = attribute(stream, "closed");
  const bool is_so = closed && python.PyObject_IsTrue(closed.get()) > 0;
  python.PyErr_Clear();
  return is_so;
}

}  // namespace

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
    ignore_exception("in audit hook", nullptr);
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

// Newer versions say in words where it comes from.
void ignore_exception(const char* words, PyObject* culprit) {
  if (python.PyErr_FormatUnraisable != nullptr) {
    python.PyErr_FormatUnraisable("Exception ignored %s", words);
    return;
  }
  if (culprit == nullptr) {
    python.PySys_WriteStderr("Exception ignored %s:\n", words);  // or nothing would say so
  }
  python.PyErr_WriteUnraisable(culprit);
}

bool flush(PyObject* stream) {
  return is_none(stream) || is_closed(stream) || static_cast<bool>(call(attribute(stream, "flush")));
}

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
    ignore_exception("on flushing sys.stdout", output.get());
  }
  const bool are_errors_written = flush(errors.get());
  python.PyErr_Clear();
  return is_output_written && are_errors_written;
}

}  // namespace ling::command
