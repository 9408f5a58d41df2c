#include "faults/attempt.h"

#include "ling/ling.h"
#include "python/convert.h"

#include <cstdio>
#include <cstdlib>
#include <thread>

namespace faults {

namespace {

using namespace ling;
using namespace ling::cpython;

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

class python_attempt final : public attempt {
 public:
  explicit python_attempt(const python_row& row)
      : attempt(row.name, row.also, PyGILState_LOCKED, 0),
        names_(PyDict_New()),
        before_(compile(std::string("result = None\n") + row.before)),
        action_(compile(row.action)),
        state_(compile(std::string("state = ") + row.state)) {
    PyDict_SetItemString(names_.get(), "__builtins__", PyEval_GetBuiltins());
    if (!run(compile("import ling\nfrom ling.faults import *"))) {
      give_up("The modules of the host cannot be imported.");
    }
  }
  void before() override {
    if (!run(before_)) {
      give_up("The preparation failed.");
    }
  }
  std::size_t act(const plan& what_fails) override {
    arm(what_fails);
    const PyObjectPtr done = run(action_);
    const std::size_t failed = disarm();
    outcome = text_of_outcome(done ? PyDict_GetItemString(names_.get(), "result") : nullptr);
    return failed;
  }
  std::string state() override {
    return text_of_outcome(run(state_) ? PyDict_GetItemString(names_.get(), "state") : nullptr);
  }

 private:
  static PyObjectPtr compile(const std::string& code) {
    PyObjectPtr compiled(Py_CompileString(code.c_str(), "<scenario>", Py_file_input));
    if (!compiled) {
      give_up(code.c_str());
    }
    return compiled;
  }
  PyObjectPtr run(const PyObjectPtr& code) {
    return PyObjectPtr(PyEval_EvalCode(code.get(), names_.get(), names_.get()));
  }

  const PyObjectPtr names_, before_, action_, state_;
};

class host_attempt final : public attempt {
 public:
  explicit host_attempt(const host_row& row)
      : attempt(row.name, row.also, PyGILState_UNLOCKED, row.traits), row_(row) {}
  void before() override {
    result_ = {};
    subject_ = row_.before();
  }
  std::size_t act(const plan& what_fails) override {
    if ((traits & on_new_thread) == 0) {
      return act_here(what_fails);
    }
    std::size_t failed = 0;
    std::thread([&] { failed = act_here(what_fails); }).join();
    return failed;
  }
  std::string state() override { return std::string(display_text(subject_).view()); }

 private:
  std::size_t act_here(const plan& what_fails) {
    arm(what_fails);
    try {
      result_ = row_.action(subject_);
    } catch (...) {
      const std::size_t failed = disarm();
      outcome = "a C++ exception: " + std::string(Error::fromCurrentException().message().view());
      return failed;
    }
    const std::size_t failed = disarm();
    const bool out_of_memory = is_error_result(result_) && Error::unchecked(result_).isOutOfMemory();
    outcome = out_of_memory ? memory_error : std::string(display_text(result_).view());
    return failed;
  }

  const host_row& row_;
  Any subject_;
  Any result_;
};

}  // namespace

std::unique_ptr<attempt> prepared(const python_row& row) { return std::make_unique<python_attempt>(row); }
std::unique_ptr<attempt> prepared(const host_row& row) { return std::make_unique<host_attempt>(row); }

void give_up(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  if (PyErr_Occurred() != nullptr) {
    PyErr_Print();
  }
  std::_Exit(unusable);
}

}  // namespace faults
