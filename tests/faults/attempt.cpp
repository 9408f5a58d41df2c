#include "faults/attempt.h"

#include <cstdio>
#include <cstdlib>

namespace faults {

namespace {

using ling::cpython::PyObjectPtr;

// What there is so far is not looked at again and again.
constexpr char preparation[] = R"(
import gc, sys, ling
from ling.faults import *
sys.unraisablehook = lambda *all: None
def dig():
  try: return 1 + dig()
  except RecursionError: return 0
class Point:
  'A place.'
  def __init__(self, x): self.x = x
  def double(self, by=2): return self.x * by
  size = property(lambda self: self.x + 100000)
  __lt__ = lambda self, other: self.x < other.x
  __gt__ = lambda self, other: self.x > other.x
  __str__ = lambda self: f'Point at {self.x}'
text = 'a text that is long enough'
gc.disable()
gc.collect()
gc.freeze())";

// The text of a result, or the exception, which then is no longer pending.
std::string text_of_outcome(PyObject* result) {
  PyObject *type = nullptr, *value = PyObjectPtr::share(result).release(), *traceback = nullptr;
  if (result == nullptr) {
    PyErr_Fetch(&type, &value, &traceback);
    PyErr_NormalizeException(&type, &value, &traceback);
  }
  const PyObjectPtr owned_type(type), owned_value(value), owned_traceback(traceback);
  if (value == nullptr) {
    return "failed without an exception";
  }
  if (type != nullptr && PyErr_GivenExceptionMatches(type, PyExc_MemoryError) != 0) {
    return memory_error;
  }
  const PyObjectPtr text(PyObject_Repr(value));
  const PyObjectPtr bytes(text ? PyUnicode_AsEncodedString(text.get(), "utf-8", "backslashreplace") : nullptr);
  PyErr_Clear();
  return bytes ? PyBytes_AsString(bytes.get()) : "no text";
}

}  // namespace

attempt::attempt(const scenario& row)
    : names_(PyDict_New()),
      before_(compile(std::string("result = None\n") + row.before)),
      action_(compile(row.action)) {
  PyDict_SetItemString(names_.get(), "__builtins__", PyEval_GetBuiltins());
  if (!run(compile(preparation))) {
    give_up("The modules of the host cannot be imported.");
  }
}

void attempt::before() {
  if (!run(before_)) {
    give_up("The preparation failed.");
  }
}

std::size_t attempt::act(const plan& what_fails) {
  arm(what_fails);
  const PyObjectPtr done = run(action_);
  const std::size_t failed = disarm();
  outcome = text_of_outcome(done ? PyDict_GetItemString(names_.get(), "result") : nullptr);
  return failed;
}

std::string attempt::value(const std::string& expression) const {
  return text_of_outcome(run(compile("value = " + expression)) ? PyDict_GetItemString(names_.get(), "value") : nullptr);
}

PyObjectPtr attempt::compile(const std::string& text) const {
  PyObjectPtr compiled(Py_CompileString(text.c_str(), "<scenario>", Py_file_input));
  if (!compiled) {
    give_up(text.c_str());
  }
  return compiled;
}

PyObjectPtr attempt::run(const PyObjectPtr& code) const {
  return PyObjectPtr(PyEval_EvalCode(code.get(), names_.get(), names_.get()));
}

void give_up(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  PyErr_Print();
  std::abort();
}

}  // namespace faults
