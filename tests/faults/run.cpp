// Tries every scenario with allocations that fail: exactly the n-th for every n until none is left to fail, every n-th,
// and several in a row. Each must give its result or say that memory has run out, must be done or not done, and must
// work the next time. A process for each scenario, so that a crash or a hang is told with its name and its number.
#include "faults/run.h"

#include "bridge/convert.h"
#include "extension/interpreter.h"
#include "faults/allocation_faults.h"
#include "faults/scenario.h"
#include "ling/ling.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <optional>
#include <regex>
#include <string>

namespace faults {

namespace {

using namespace ling;
using namespace ling::cpython;

constexpr char memory_error[] = "MemoryError";
constexpr int unusable = 3;        // the exit status of a process that cannot even prepare its scenario
constexpr unsigned patience = 60;  // seconds, for what takes milliseconds

struct mode {
  const char* text;
  plan (*what_fails)(std::size_t n);
};
constexpr mode modes[] = {
    {"only the allocation",
     [](std::size_t n) {
       return plan{n, 1, 1};
     }},
    {"every allocation",
     [](std::size_t n) {
       return plan{n, n, without_end};
     }},
    {"eight allocations from",
     [](std::size_t n) {
       return plan{n, 1, 8};
     }},
    {"all allocations from",
     [](std::size_t n) {
       return plan{n, 1, without_end};
     }},
};

// What the process that tries tells the one that watches.
struct progress {
  std::size_t mode;
  std::size_t n;
  std::size_t trials;
  std::size_t complaints;
  bool started;
};

struct options {
  std::regex wanted{""};
  std::size_t only_mode = SIZE_MAX;
  std::size_t limit = 5000;
  bool shown = false;
  bool leaks = true;
};

// --- Python ----------------------------------------------------------------------------------------------------------

PyObjectPtr run_code(const char* code, PyObject* names) {
  const PyObjectPtr compiled(Py_CompileString(code, "<scenario>", Py_file_input));
  return PyObjectPtr(compiled ? PyEval_EvalCode(compiled.get(), names, names) : nullptr);
}

std::string text_of_object(PyObject* object) {
  const PyObjectPtr text(PyObject_Repr(object));
  const PyObjectPtr bytes(text ? PyUnicode_AsEncodedString(text.get(), "utf-8", "backslashreplace") : nullptr);
  PyErr_Clear();
  return bytes ? PyBytes_AsString(bytes.get()) : "no text";
}

// The result, or the exception, which then is no longer pending.
std::string text_of_outcome(PyObject* result) {
  if (result != nullptr) {
    return text_of_object(result);
  }
  PyObject *type = nullptr, *value = nullptr, *traceback = nullptr;
  PyErr_Fetch(&type, &value, &traceback);
  PyErr_NormalizeException(&type, &value, &traceback);
  const PyObjectPtr owned_type(type), owned_value(value), owned_traceback(traceback);
  if (type == nullptr) {
    return "failed without an exception";
  }
  return PyErr_GivenExceptionMatches(type, PyExc_MemoryError) != 0 ? memory_error : text_of_object(value);
}

[[noreturn]] void give_up(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  if (PyErr_Occurred() != nullptr) {
    PyErr_Print();
  }
  std::_Exit(unusable);
}

// --- what is spared --------------------------------------------------------------------------------------------------

// The interpreter's compiler is left alone: it frees some of its buffers twice when there is no memory for the next one
// (seen in 3.11). The code that it has compiled is not.
PyObject* compile_function = nullptr;

PyObject* spared_compile(PyObject*, PyObject* arguments, PyObject* keywords) noexcept {
  const respite unarmed;
  return PyObject_Call(compile_function, arguments, keywords);
}

// `exec` or `eval`, which are in the tuple `self` with the kind of code that they take.
PyObject* spared_run(PyObject* self, PyObject* arguments) noexcept {
  PyObjectPtr compiled;
  {
    const respite unarmed;
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
    {"compile", reinterpret_cast<PyCFunction>(&spared_compile), METH_VARARGS | METH_KEYWORDS, nullptr},
    {"exec",    &spared_run,                                    METH_VARARGS,                 nullptr},
    {"eval",    &spared_run,                                    METH_VARARGS,                 nullptr},
};

void spare_the_compiler() {
  const GilGuard lock;
  const PyObjectPtr builtins(PyImport_ImportModule("builtins"));
  compile_function = PyObject_GetAttrString(builtins.get(), "compile");
  for (PyMethodDef& each : spared_functions) {
    const PyObjectPtr original(PyObject_GetAttrString(builtins.get(), each.ml_name));
    const PyObjectPtr self(Py_BuildValue("(Os)", original.get(), each.ml_name));
    const PyObjectPtr spared(PyCFunction_NewEx(&each, self.get(), nullptr));
    PyObject_SetAttrString(builtins.get(), each.ml_name, spared.get());
  }
}

// --- the two kinds of scenarios --------------------------------------------------------------------------------------

class scenario {
 public:
  virtual ~scenario() = default;
  virtual void before() = 0;
  virtual std::size_t act(const plan& what_fails) = 0;  // how many allocations have failed
  virtual std::string outcome() = 0;
  virtual std::string state() = 0;
  virtual const char* fault_of_lock() = 0;  // null: the lock is as it was
};

class python_scenario final : public scenario {
 public:
  explicit python_scenario(const python_row& row)
      : names_(PyDict_New()),
        before_(compile(std::string("result = None\n") + row.before)),
        action_(compile(row.action)),
        state_(compile(std::string("state = ") + row.state)) {
    PyDict_SetItemString(names_.get(), "__builtins__", PyEval_GetBuiltins());
    if (!run_code("import ling\nfrom ling.faults import *", names_.get())) {
      give_up("The modules of the host cannot be imported.");
    }
  }
  void before() override {
    if (!evaluate(before_)) {
      give_up("The preparation failed.");
    }
  }
  std::size_t act(const plan& what_fails) override {
    arm(what_fails);
    PyObject* const done = PyEval_EvalCode(action_.get(), names_.get(), names_.get());
    const std::size_t failed = disarm();
    outcome_ = text_of_outcome(done == nullptr ? nullptr : PyDict_GetItemString(names_.get(), "result"));
    const PyObjectPtr owned(done);
    return failed;
  }
  std::string outcome() override { return std::exchange(outcome_, {}); }
  std::string state() override {
    return text_of_outcome(evaluate(state_) ? PyDict_GetItemString(names_.get(), "state") : nullptr);
  }
  const char* fault_of_lock() override {
    const PyGILState_STATE lock = PyGILState_Ensure();
    PyGILState_Release(lock);
    return lock == PyGILState_LOCKED ? nullptr : "the lock was given away";
  }

 private:
  static PyObjectPtr compile(const std::string& code) {
    PyObjectPtr compiled(Py_CompileString(code.c_str(), "<scenario>", Py_file_input));
    if (!compiled) {
      give_up(code.c_str());
    }
    return compiled;
  }
  bool evaluate(const PyObjectPtr& code) {
    return static_cast<bool>(PyObjectPtr(PyEval_EvalCode(code.get(), names_.get(), names_.get())));
  }

  const PyObjectPtr names_, before_, action_, state_;
  std::string outcome_;
};

class host_scenario final : public scenario {
 public:
  explicit host_scenario(const host_row& row) : row_(row) {}
  void before() override {
    result_ = {};
    subject_ = row_.before();
  }
  std::size_t act(const plan& what_fails) override {
    arm(what_fails);
    try {
      result_ = row_.action(subject_);
    } catch (...) {
      const std::size_t failed = disarm();
      outcome_ = "a C++ exception: " + std::string(Error::fromCurrentException().message().view());
      return failed;
    }
    const std::size_t failed = disarm();
    const bool out_of_memory = is_error_result(result_) && Error::unchecked(result_).isOutOfMemory();
    outcome_ = out_of_memory ? memory_error : std::string(display_text(result_).view());
    return failed;
  }
  std::string outcome() override { return std::exchange(outcome_, {}); }
  std::string state() override { return std::string(display_text(subject_).view()); }
  const char* fault_of_lock() override {
    const PyGILState_STATE lock = PyGILState_Ensure();
    PyGILState_Release(lock);
    return lock == PyGILState_UNLOCKED ? nullptr : "the lock was kept";
  }

 private:
  const host_row& row_;
  Any subject_;
  Any result_;
  std::string outcome_;
};

// --- trying ----------------------------------------------------------------------------------------------------------

class trials {
 public:
  trials(scenario& what, const char* name, const options& chosen, progress& shared)
      : what_(what), name_(name), chosen_(chosen), shared_(shared) {}

  void run() {
    for (int i = 0; i < 4; ++i) {
      attempt(plan{1, 1, 0});
      outcome_ = what_.outcome();
      after_ = what_.state();
    }
    what_.before();
    before_ = what_.state();
    settle(true);
    depth_ = depth();
    if (chosen_.limit == 0) {
      std::printf("%s\n  gives  %s\n  before %s\n  after  %s\n", name_, outcome_.c_str(), before_.c_str(),
                  after_.c_str());
      return;
    }
    for (; shared_.mode < std::size(modes); ++shared_.mode, shared_.n = 1) {
      if (chosen_.only_mode != SIZE_MAX && chosen_.only_mode != shared_.mode) {
        continue;
      }
      for (; shared_.n <= chosen_.limit; ++shared_.n) {
        if (!try_once(modes[shared_.mode].what_fails(shared_.n))) {
          break;
        }
      }
    }
  }

 private:
  std::size_t attempt(const plan& what_fails) {
    alarm(patience);
    what_.before();
    return what_.act(what_fails);
  }

  // False when nothing has failed.
  bool try_once(const plan& what_fails) {
    show_failures(chosen_.shown && shared_.n == chosen_.limit);
    const std::size_t failed = attempt(what_fails);
    show_failures(false);
    if (failed == 0) {
      return false;
    }
    ++shared_.trials;
    const std::string outcome = what_.outcome();
    if (outcome != memory_error && outcome != outcome_) {
      complain("gives " + outcome);
    }
    const std::string state = what_.state();
    if (state != after_ && (state != before_ || outcome != memory_error)) {
      complain("leaves " + state);
    }
    check_world();
    attempt(plan{1, 1, 0});
    if (const std::string again = what_.outcome(); again != outcome_) {
      complain("gives afterwards " + again);
    }
    if (const std::string again = what_.state(); again != after_) {
      complain("leaves afterwards " + again);
    }
    if (chosen_.leaks && shared_.mode == 0) {
      check_leaks(what_fails);
    }
    return true;
  }

  void check_world() {
    if (const char* fault = what_.fault_of_lock()) {
      complain(fault);
    }
    const GilGuard lock;
    if (PyErr_Occurred() != nullptr) {
      PyErr_Clear();
      complain("leaves an exception pending");
    }
    if (const long now = depth(); now != depth_) {
      complain("leaves a depth of " + std::to_string(now) + ", not " + std::to_string(depth_));
      depth_ = now;
    }
  }

  // The same fault again and again must not need more and more memory.
  void check_leaks(const plan& what_fails) {
    constexpr int times = 4;
    const auto held = [&] {
      for (int i = 0; i < times; ++i) {
        attempt(what_fails);
        what_.outcome();
      }
      what_.before();
      settle(false);
      return live_blocks();
    };
    held();
    const long long first = held();
    const long long grown = held() - first;
    if (grown >= times && held() - first >= 2 * times) {
      complain("leaks " + std::to_string(grown / times) + " blocks");
    }
  }

  static void settle(bool for_good) {
    const GilGuard lock;
    const PyObjectPtr names(PyDict_New());
    PyDict_SetItemString(names.get(), "__builtins__", PyEval_GetBuiltins());
    const PyObjectPtr done = run_code(
        for_good ? "import gc\ngc.disable()\ngc.collect()\ngc.freeze()" : "import gc\ngc.collect()", names.get());
  }

  // How deep Python can call from here.
  static long depth() {
    const GilGuard lock;
    const PyObjectPtr names(PyDict_New());
    PyDict_SetItemString(names.get(), "__builtins__", PyEval_GetBuiltins());
    const PyObjectPtr done =
        run_code("def dig():\n  try: return 1 + dig()\n  except RecursionError: return 0\nresult = dig()", names.get());
    return done ? PyLong_AsLong(PyDict_GetItemString(names.get(), "result")) : -1;
  }

  void complain(const std::string& what) {
    constexpr std::size_t enough = 40;
    if (++shared_.complaints <= enough) {
      std::printf("%s: %s %zu: %s\n", name_, modes[shared_.mode].text, shared_.n, what.c_str());
      std::fflush(stdout);
    }
  }

  scenario& what_;
  const char* name_;
  const options& chosen_;
  progress& shared_;
  std::string outcome_, before_, after_;
  long depth_ = 0;
};

void start() {
  if (initialize().is_error()) {
    give_up("The runtime does not start.");
  }
  ensure_interpreter();
  spare_the_compiler();
  prepare_rows();
}

template <class Scenario, class Row>
void try_row(const Row& row, const options& chosen, progress& shared) {
  start();
  std::optional<GilGuard> lock;
  if constexpr (std::same_as<Scenario, python_scenario>) {
    lock.emplace();
  }
  Scenario what(row);
  trials(what, row.name, chosen, shared).run();
}

// In processes of their own, each of which goes on where the one before it has died. Whether all is well.
bool watch(const char* name, const options& chosen, const std::function<void(progress&)>& work) {
  constexpr int most_deaths = 20;
  auto& shared = *static_cast<progress*>(
      mmap(nullptr, sizeof(progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  shared = {0, 1, 0, 0, false};
  int deaths = 0;
  for (bool ended = false; !ended && deaths < most_deaths;) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
      work(shared);
      std::fflush(stdout);
      std::_Exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ended = WIFEXITED(status) && (WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == unusable);
    deaths += status == 0 ? 0 : 1;
    if (!ended) {
      const char* const how = !WIFSIGNALED(status)          ? "ends the process"
                              : WTERMSIG(status) == SIGALRM ? "hangs"
                                                            : strsignal(WTERMSIG(status));
      std::printf("%s: %s %zu: %s\n", name, modes[shared.mode].text, shared.n, how);
      ++shared.n;
    }
  }
  std::printf("%s: %zu trials, %zu complaints, %d deaths\n", name, shared.trials, shared.complaints, deaths);
  return deaths == 0 && shared.complaints == 0 && chosen.limit != 0;
}

}  // namespace

int run_scenarios(int count, char** arguments) {
  setenv("PYTHONMALLOC", "malloc", 1);  // or the interpreter's own pools would serve most of what it needs
  setenv("PYTHONDONTWRITEBYTECODE", "1", 1);
  options chosen;
  for (int i = 1; i < count; ++i) {
    const std::string_view argument = arguments[i];
    const auto number = [&] { return std::strtoul(arguments[++i], nullptr, 10); };
    if (argument == "--mode") {
      chosen.only_mode = number();
    } else if (argument == "--until") {
      chosen.limit = number();
      chosen.shown = true;
    } else if (argument == "--limit") {
      chosen.limit = number();
    } else if (argument == "--no-leaks") {
      chosen.leaks = false;
    } else if (argument == "--show") {
      chosen.limit = 0;
    } else {
      chosen.wanted = arguments[i];
    }
  }
  bool well = true;
  for (const python_row& row : python_rows()) {
    if (std::regex_search(row.name, chosen.wanted)) {
      well &= watch(row.name, chosen, [&](progress& shared) { try_row<python_scenario>(row, chosen, shared); });
    }
  }
  for (const host_row& row : host_rows()) {
    if (std::regex_search(row.name, chosen.wanted)) {
      well &= watch(row.name, chosen, [&](progress& shared) { try_row<host_scenario>(row, chosen, shared); });
    }
  }
  return well ? 0 : 1;
}

}  // namespace faults
