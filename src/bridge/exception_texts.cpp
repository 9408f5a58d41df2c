// What Python has to say of an exception, and where it happened, which is put into words when somebody asks.
#include "bridge/exception_details.h"
#include "ling/detail/try.h"
#include "ling/detail/under_way.h"
#include "ling/lazy.h"
#include "python/error_bridge.h"
#include "python/interpreter.h"
#include "python/module_attribute.h"
#include "python/pending_exception.h"
#include "python/python_helper.h"
#include "python/python_name.h"
#include "python/python_text.h"

#include <cstdlib>
#include <utility>
#include <vector>

namespace ling::cpython {

namespace {

constinit const module_attribute format_exception("traceback", "format_exception");
constinit const module_attribute exception_group("builtins", "BaseExceptionGroup");
constinit const python_name name_of_type("__name__");
constinit const struct {
  python_name traceback{"__traceback__"}, notes{"__notes__"}, arguments{"args"};
  python_name next{"tb_next"}, frame{"tb_frame"}, line{"tb_lineno"}, instruction{"tb_lasti"};
  python_name code{"f_code"}, globals{"f_globals"}, module{"__name__"}, loader{"__loader__"};
} names;

// What is being told of exceptions on this thread, innermost first. An exception's own code makes its text, and what
// that shows by way of the host may be exceptions again, among them the same one.
struct told_exception {
  const PyObject* instance;
  bool is_traceback;
};
using telling = internal::under_way<told_exception>;

bool is_telling_traceback() {
  return telling::any([](const told_exception& each) { return each.is_traceback; });
}

// `str(instance)`; null when that raises, or is being asked already.
PyObjectPtr text_of_exception(PyObject* instance) {
  if (telling::any([&](const told_exception& each) { return each.instance == instance && !each.is_traceback; })) {
    return {};
  }
  const telling guard({instance, false});
  PyObjectPtr text(PyObject_Str(instance));
  if (!text && reinterpret_cast<PyObject*>(Py_TYPE(instance)) == PyExc_RecursionError) {
    // Where there is no room for a call, what it would answer is still there.
    PyErr_Clear();
    const PyObjectPtr arguments = names.arguments.of(instance);
    PyObject* const first =
        arguments && PyTuple_Size(arguments.get()) == 1 ? PyTuple_GetItem(arguments.get(), 0) : nullptr;
    text = PyObjectPtr::share(first != nullptr && PyUnicode_Check(first) ? first : nullptr);
  }
  drop_exception();
  return text;
}

String message_of(PyObject* instance, const PyObjectPtr& text) {
  return text ? text_of(text.get(), surrogates::escape) : type_name_of(instance);
}

// What the interpreter prints, with the traceback and the causes.
String full_text(PyObject* instance) {
  // Within a traceback an exception is told by its message alone: with two texts of each, which their own code makes,
  // there would be four of what these show, and so on.
  PyObject* const format = is_telling_traceback() ? nullptr : format_exception.get();
  if (format == nullptr) {
    return {};
  }
  const telling guard({instance, true});
  // Spelled with all three arguments, which Python 3.9 insists on.
  const PyObjectPtr traceback = names.traceback.of(instance);
  const PyObjectPtr lines(traceback
                              ? PyObject_CallFunctionObjArgs(format, reinterpret_cast<PyObject*>(Py_TYPE(instance)),
                                                             instance, traceback.get(), nullptr)
                              : nullptr);
  const PyObjectPtr separator(lines ? PyUnicode_FromString("") : nullptr);
  const PyObjectPtr joined(separator ? PyUnicode_Join(separator.get(), lines.get()) : nullptr);
  drop_exception();
  return text_of(joined.get(), surrogates::escape);
}

// --- later -----------------------------------------------------------------------------------------------------------

// Shows the formatter of tracebacks what was taken down in place of the exception, its traceback and its frames.
constinit const python_helper stack_helper("format_stack", R"(from traceback import TracebackException
from types import SimpleNamespace
class Told:
  __cause__ = __context__ = None
  __suppress_context__ = False
  def __init__(self, text): self.text = text
  def __str__(self): return self.text
def format_stack(type, text, places):
  trace = None
  for code, line, instruction, names in reversed(places):
    frame = SimpleNamespace(f_code=code, f_globals=names, f_lineno=line)
    trace = SimpleNamespace(tb_frame=frame, tb_lineno=line, tb_lasti=instruction, tb_next=trace)
  return ''.join(TracebackException(type, Told(text), trace).format())
)");

// The places that an exception has passed through, without the frames, which keep all their variables alive: a list of
// tuples of a code object, a line, an instruction, and a dict with what finds the source of a module that is not a
// file.
PyObjectPtr take_down(PyObject* traceback) {
  PyObjectPtr places(PyList_New(0));
  for (PyObjectPtr each = PyObjectPtr::share(traceback); places && each && each.get() != Py_None;
       each = names.next.of(each.get())) {
    const PyObjectPtr frame = names.frame.of(each.get());
    const PyObjectPtr code = frame ? names.code.of(frame.get()) : PyObjectPtr();
    const PyObjectPtr line = code ? names.line.of(each.get()) : PyObjectPtr();
    const PyObjectPtr instruction = line ? names.instruction.of(each.get()) : PyObjectPtr();
    const PyObjectPtr globals = instruction ? names.globals.of(frame.get()) : PyObjectPtr();
    const PyObjectPtr of_module(globals ? PyDict_New() : nullptr);
    for (const python_name* name : {&names.module, &names.loader}) {
      PyObject* const key = of_module ? name->get() : nullptr;
      PyObject* const known = key == nullptr ? nullptr : PyDict_GetItemWithError(globals.get(), key);
      if (known != nullptr && PyDict_SetItem(of_module.get(), key, known) != 0) {
        return {};
      }
    }
    const PyObjectPtr place(of_module && PyErr_Occurred() == nullptr
                                ? PyTuple_Pack(4, code.get(), line.get(), instruction.get(), of_module.get())
                                : nullptr);
    if (!place || PyList_Append(places.get(), place.get()) != 0) {
      return {};
    }
  }
  return PyErr_Occurred() == nullptr ? std::move(places) : PyObjectPtr();
}

class told_later final : public object_value_external {
 public:
  told_later(PyObjectPtr type, PyObjectPtr text, PyObjectPtr places) noexcept
      : type_(std::move(type)), text_(std::move(text)), places_(std::move(places)) {}

  Any load() override {
    TRY(ensure_interpreter());
    const GilGuard lock;
    const pending_exception_aside aside;
    PyObject* const format = stack_helper.get();
    const PyObjectPtr text(
        format == nullptr ? nullptr
                          : PyObject_CallFunctionObjArgs(format, type_.get(), text_.get(), places_.get(), nullptr));
    if (!text) {
      return capture_error_or("Unable to put the stack into words.");  // the next attempt may do better
    }
    return text_of(text.get(), surrogates::escape);
  }

 private:
  const PyObjectPtr type_, text_, places_;
};

// From 3.12 on, the text of an error about a name proposes others, out of what the frames and objects hold.
bool proposes_names(PyObject* instance) {
  static const bool does_version = std::strtol(Py_GetVersion() + 2, nullptr, 10) >= 12;  // behind "3."
  if (!does_version) {
    return false;
  }
  for (PyObject* type : {PyExc_AttributeError, PyExc_NameError, PyExc_ImportError}) {
    if (PyErr_GivenExceptionMatches(instance, type) != 0) {
      return true;
    }
  }
  return false;
}

// Whether there is more to the full text than the places and the message.
bool has_more_to_tell(PyObject* instance) {
  if (!PyExceptionInstance_Check(instance)) {
    return true;  // only claims to be one
  }
  const PyObjectPtr cause(PyException_GetCause(instance)), context(PyException_GetContext(instance));
  if (cause || context || proposes_names(instance)) {
    return true;
  }
  // Both came with the same version.
  PyObject* const group = exception_group.get();
  const bool has_notes = group != nullptr && names.notes.find(instance);
  drop_exception();
  return has_notes || (group != nullptr && PyErr_GivenExceptionMatches(instance, group) != 0);
}

}  // namespace

String type_name_of(PyObject* object) {
  const PyObjectPtr name = name_of_type.of(reinterpret_cast<PyObject*>(Py_TYPE(object)));
  const bool is_text = name && PyUnicode_Check(name.get());
  drop_exception();
  return is_text ? text_of(name.get(), surrogates::escape) : String();
}

exception_texts texts_of(PyObject* instance) {
  if (PyErr_GivenExceptionMatches(instance, PyExc_SyntaxError) != 0) {
    const String full = full_text(instance);
    return {full.empty() ? message_of(instance, text_of_exception(instance)) : full, full};
  }
  PyObjectPtr text = text_of_exception(instance);
  String message = message_of(instance, text);
  if (is_telling_traceback()) {
    return {std::move(message), String()};
  }
  if (text && !has_more_to_tell(instance)) {
    const PyObjectPtr traceback(PyException_GetTraceback(instance));
    PyObjectPtr places = take_down(traceback ? traceback.get() : Py_None);
    if (places) {
      return {std::move(message), make<told_later>(PyObjectPtr::share(reinterpret_cast<PyObject*>(Py_TYPE(instance))),
                                                   std::move(text), std::move(places))};
    }
    drop_exception();
  }
  return {std::move(message), full_text(instance)};
}

}  // namespace ling::cpython
