// Tries every scenario with allocations that fail: exactly the n-th for every n until none is left to fail, every n-th,
// and several in a row. Each must give its result or say that memory has run out, must be done or not done, and must
// work the next time. A process for each scenario, so that a crash or a hang is told with its name and its number.
#include "faults/run.h"

#include "faults/allocation_faults.h"
#include "faults/scenario.h"
#include "language/evaluation.h"
#include "ling/ling.h"
#include "python/convert.h"
#include "python/interpreter.h"

#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <optional>
#include <regex>
#include <string>
#include <thread>

namespace faults {

namespace {

using namespace ling;
using namespace ling::cpython;

constexpr char memory_error[] = "MemoryError";
constexpr int unusable = 3;  // the exit status of a process that cannot even prepare its scenario
constexpr std::size_t most_of_start = 1'000'000;
constexpr unsigned patience = 60;  // seconds, for what takes milliseconds

struct mode {
  const char* text;
  plan (*what_fails)(std::size_t n);
  bool first_time = false;  // in processes that have not done it before
};
// Never without end: some versions of the interpreter wait for memory when they look for the handler of an exception.
constexpr mode modes[] = {
    {"only, the first time, the allocation",
     [](std::size_t n) {
       return plan{n, 1, 1};
     }, true},
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
    {"a thousand from",
     [](std::size_t n) {
       return plan{n, 1, 1000};
     }},
};

// What the process that tries tells the one that watches.
struct progress {
  std::size_t mode;
  std::size_t n;
  std::size_t trials;
  std::size_t complaints;
  char outcome[4096], before[4096], after[4096];
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
    {"compile", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(&spared_compile)),
     METH_VARARGS | METH_KEYWORDS,                                                                          nullptr},
    {"exec",    &spared_run,                                                                  METH_VARARGS, nullptr},
    {"eval",    &spared_run,                                                                  METH_VARARGS, nullptr},
};

// So are functions that end the process, or crash, when there is no memory for the state of a thread.
template <class Function>
Function* original(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void spare_what_breaks() {
  const GilGuard lock;
  const PyObjectPtr builtins(PyImport_ImportModule("builtins"));
  compile_function = PyObject_GetAttrString(builtins.get(), "compile");
  for (PyMethodDef& each : spared_functions) {
    const PyObjectPtr original(PyObject_GetAttrString(builtins.get(), each.ml_name));
    const PyObjectPtr self(Py_BuildValue("(Os)", original.get(), each.ml_name));
    const PyObjectPtr spared(PyCFunction_NewEx(&each, self.get(), nullptr));
    PyObject_SetAttrString(builtins.get(), each.ml_name, spared.get());
  }
  // A context that the module `decimal` cannot store it uses all the same.
  const PyObjectPtr decimal(PyImport_ImportModule("decimal"));
  const PyObjectPtr context(PyObject_CallMethod(decimal.get(), "getcontext", nullptr));
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
  virtual bool keeps() const { return false; }
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
    if ((row_.traits & on_new_thread) == 0) {
      return act_here(what_fails);
    }
    std::size_t failed = 0;
    std::thread([&] { failed = act_here(what_fails); }).join();
    return failed;
  }
  std::size_t act_here(const plan& what_fails) {
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
  bool keeps() const override { return (row_.traits & keeps_memory) != 0; }

 private:
  const host_row& row_;
  Any subject_;
  Any result_;
  std::string outcome_;
};

// --- processes -------------------------------------------------------------------------------------------------------

// The answer of a process of its own; this one dies as that one does.
bool apart(const std::function<bool()>& work) {
  constexpr int no = 1;
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    const bool answer = work();
    std::fflush(stdout);
    std::_Exit(answer ? 0 : no);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (status != 0 && !(WIFEXITED(status) && WEXITSTATUS(status) == no)) {
    std::raise(WIFSIGNALED(status) ? WTERMSIG(status) : SIGABRT);
  }
  return status == 0;
}

// --- trying ----------------------------------------------------------------------------------------------------------

class trials {
 public:
  trials(scenario& what, const char* name, const char* also, const options& chosen, progress& shared)
      : what_(what), name_(name), also_(also), chosen_(chosen), shared_(shared) {
    const GilGuard lock;
    const PyObjectPtr names(PyDict_New());
    PyDict_SetItemString(names.get(), "__builtins__", PyEval_GetBuiltins());
    // What there is so far is not looked at again and again.
    if (!run_code("import gc\n"
                  "def dig():\n"
                  "  try: return 1 + dig()\n"
                  "  except RecursionError: return 0\n"
                  "import sys\n"
                  "sys.unraisablehook = lambda *all: None\n"
                  "gc.disable()\n"
                  "gc.collect()\n"
                  "gc.freeze()\n"
                  "collect = gc.collect\n",
                  names.get())) {
      give_up("The helpers cannot be made.");
    }
    collect_ = PyObjectPtr::share(PyDict_GetItemString(names.get(), "collect"));
    dig_ = PyObjectPtr::share(PyDict_GetItemString(names.get(), "dig"));
  }

  void run() {
    if (modes[shared_.mode].first_time) {
      run_first_time();
      return;
    }
    for (int i = 0; i < 4; ++i) {
      find_expectations();
    }
    if (chosen_.limit == 0) {
      std::printf("%s\n  gives  %s\n  before %s\n  after  %s\n", name_, shared_.outcome, shared_.before, shared_.after);
    }
    for (; shared_.mode < std::size(modes); ++shared_.mode, shared_.n = 1) {
      for (; is_wanted() && try_once(modes[shared_.mode].what_fails(shared_.n)); ++shared_.n) {
      }
    }
  }

 private:
  bool is_wanted() const {
    return shared_.n <= chosen_.limit && (chosen_.only_mode == SIZE_MAX || chosen_.only_mode == shared_.mode);
  }

  // What comes of it without faults.
  void find_expectations() {
    attempt(plan{1, 1, 0});
    const auto note = [](char(&place)[4096], const std::string& text) {
      std::snprintf(place, sizeof place, "%s", text.c_str());
    };
    note(shared_.outcome, what_.outcome());
    note(shared_.after, what_.state());
    what_.before();
    note(shared_.before, what_.state());
    depth_ = depth();
  }

  // Each number in a process of its own.
  void run_first_time() {
    apart([&] { return find_expectations(), true; });
    depth_ = depth();
    // Making types for all there is takes very many allocations, one much like the other.
    while (is_wanted() && apart([&] { return try_once(modes[shared_.mode].what_fails(shared_.n)); })) {
      shared_.n += 1 + shared_.n / 100;
    }
    ++shared_.mode;
    shared_.n = 1;
  }

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
    const bool is_refused =
        outcome == memory_error || (*also_ != '\0' && std::regex_search(outcome, std::regex(also_)));
    if (!is_refused && outcome != shared_.outcome) {
      complain("gives " + outcome);
    }
    const std::string state = what_.state();
    if (state != shared_.after && (state != shared_.before || !is_refused)) {
      complain("leaves " + state);
    }
    check_world();
    attempt(plan{1, 1, 0});
    if (const std::string again = what_.outcome(); again != shared_.outcome) {
      complain("gives afterwards " + again);
    }
    if (const std::string again = what_.state(); again != shared_.after) {
      complain("leaves afterwards " + again);
    }
    if (chosen_.leaks && shared_.mode == 1 && !what_.keeps()) {
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

  // The same fault again and again must not need more and more memory. Caches fill up; what grows a few times must keep
  // on growing. What fails may be another allocation from then on.
  void check_leaks(const plan& what_fails) {
    constexpr int few = 4, many = 200;
    if (growth(what_fails, few) < few || growth(what_fails, many) < many) {
      return;
    }
    if (const long long grown = growth(what_fails, many); grown >= many) {
      complain("leaks " + std::to_string(grown / many) + " blocks");
    }
  }
  long long growth(const plan& what_fails, int times) {
    long long held = 0;
    for (int i = 0; i <= 2 * times; ++i) {
      attempt(what_fails);
      if (failed_in_python_code()) {
        return 0;
      }
      what_.outcome();
      if (i == times) {
        held = live_blocks_in_use();
      }
    }
    return live_blocks_in_use() - held;
  }
  long long live_blocks_in_use() {
    what_.before();
    const GilGuard lock;
    const PyObjectPtr done(PyObject_CallObject(collect_.get(), nullptr));
    return live_blocks();
  }

  // How deep Python can call from here.
  long depth() const {
    const GilGuard lock;
    const PyObjectPtr reached(PyObject_CallObject(dig_.get(), nullptr));
    return reached ? PyLong_AsLong(reached.get()) : -1;
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
  const char* also_;
  const options& chosen_;
  progress& shared_;
  PyObjectPtr collect_, dig_;
  long depth_ = 0;
};

void start() {
  if (initialize().is_error() || ensure_interpreter().is_error()) {
    give_up("The runtime does not start.");
  }
  spare_what_breaks();
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
  trials(what, row.name, row.also, chosen, shared).run();
}

// The start of the runtime and the interpreter, which a process sees once. What it lacks then may be missing for ever,
// but the interpreter evaluates.
void try_start(const options& chosen, progress& shared) {
  for (; shared.mode < std::size(modes); ++shared.mode, shared.n = 1) {
    if (modes[shared.mode].first_time || (chosen.only_mode != SIZE_MAX && chosen.only_mode != shared.mode)) {
      continue;
    }
    while (shared.n <= most_of_start && apart([&] {
             alarm(patience);
             spare_python_code();  // modules are compiled on the way
             arm(modes[shared.mode].what_fails(shared.n));
             const Result<None> started = initialize();
             const Result<None> interpreter = ensure_interpreter();
             const std::size_t failed = disarm();
             const auto is_told = [](const Result<None>& result) {
               return !result.is_error() || result.error().isOutOfMemory();
             };
             const bool told = is_told(started) && is_told(interpreter);
             const std::string sum(display_text(evaluate_expr("1 + 1", {})).view());
             if (!told || sum != "2") {
               ++shared.complaints;
               std::printf("start: %s %zu: gives %s, then %s\n", modes[shared.mode].text, shared.n,
                           display_text(started).c_str(), sum.c_str());
             }
             ++shared.trials;
             return failed != 0;
           })) {
      shared.n += 1 + shared.n / 10;
    }
  }
}

// In processes of their own, each of which goes on where the one before it has died. Whether all is well.
bool watch(const char* name, const options& chosen, const std::function<void(progress&)>& work) {
  constexpr int most_deaths = 20;
  auto& shared = *static_cast<progress*>(
      mmap(nullptr, sizeof(progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  shared.n = 1;
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
    ended = WIFEXITED(status) && (shared.mode == std::size(modes) || WEXITSTATUS(status) == unusable);
    deaths += status == 0 ? 0 : 1;
    if (status != 0) {
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

}  // namespace faults

extern "C" PyGILState_STATE PyGILState_Ensure() {
  static auto* const spared = faults::original(&PyGILState_Ensure, "PyGILState_Ensure");
  const faults::respite unarmed;
  return spared();
}
extern "C" PyThreadState* PyThreadState_New(PyInterpreterState* interpreter) {
  static auto* const spared = faults::original(&PyThreadState_New, "PyThreadState_New");
  const faults::respite unarmed;
  return spared(interpreter);
}
extern "C" PyObject* Py_CompileString(const char* source, const char* file, int start) {
  static auto* const spared = faults::original(&Py_CompileString, "Py_CompileString");
  const faults::respite unarmed;
  return spared(source, file, start);
}
extern "C" void Py_InitializeEx(int with_signals) {
  static auto* const spared = faults::original(&Py_InitializeEx, "Py_InitializeEx");
  const faults::respite unarmed;
  spared(with_signals);
}

namespace faults {

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
    } else if (argument == "--spare-python-code") {
      spare_python_code();
    } else if (argument == "--show") {
      chosen.limit = 0;
    } else {
      chosen.wanted = arguments[i];
    }
  }
  bool well = true;
  if (std::regex_search("start", chosen.wanted)) {
    well &= watch("start", chosen, [&](progress& shared) { try_start(chosen, shared); });
  }
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
