// Rows in which the host asks Python, from one thread and from several: each contestant takes the interpreter lock,
// runs a text in fresh namespaces, and turns the outcome into a value of its host.
#include "contestants.h"
#include "ling/ling.h"

#include <benchmark/benchmark.h>
#include <pybind11/embed.h>

#include <string>

namespace py = pybind11;

namespace benchmarks {
namespace {

constexpr char expression[] = "1 + 2";
constexpr char five_lines[] =
    "total = 0\n"
    "for number in range(limit):\n"
    "    total += number\n"
    "text = 'total: %d' % total\n"
    "result = len(text)\n";
constexpr std::int64_t limit = 3;
constexpr std::int64_t expected_result = 8;
constexpr int calls_per_loop = 10'000;
constexpr char function_text[] = "lambda number: number + 1";

const std::string method_loop = "for _ in range(" + std::to_string(calls_per_loop) + "): w.add(1)";
// In a function, as the language module does it by itself.
const std::string method_loop_function = "def loop():\n  " + method_loop + "\nloop()";

// --- ling ------------------------------------------------------------------------------------------------------------
using ling::Any;

Any evaluate(const char* code, const Any& scope) {
  static const ling::I_Callable_Generic function = language_function("evaluate");
  return function(code, scope);
}

Any evaluate_expr(const char* code) {
  static const ling::I_Callable_Generic function = language_function("evaluate_expr");
  return function(code, Any());
}

bool is_number(const Any& value, std::int64_t expected) {
  return ling::Integer::matches(value.get()) && ling::Integer::unchecked(value).value() == expected;
}

bool ling_evaluate_expr() { return is_number(evaluate_expr(expression), 3); }

bool ling_call_function() {
  static const auto function = ling::I_Callable_Generic::unchecked(evaluate_expr(function_text));
  return is_number(function(large_number), large_number + 1);
}

bool ling_evaluate() {
  const ling::HashMap_Generic locals;
  locals.set("limit", limit);
  const ling::HashMap_Generic out_locals;
  out_locals.set("result", 0);
  const Any outcome = evaluate(five_lines, ling::EvaluationScope({}, {}, locals, out_locals));
  return !ling::is_error_result(outcome) && is_number(out_locals.get("result"), expected_result);
}

bool ling_method_loop() {
  static const Any scope = [] {
    const ling::HashMap_Generic locals;
    locals.set("w", evaluate_expr("__import__('contestant_ling').subject"));
    return ling::EvaluationScope({}, {}, locals, {});
  }();
  return !ling::is_error_result(evaluate(method_loop.c_str(), scope));
}

// --- pybind11 --------------------------------------------------------------------------------------------------------
bool pybind11_evaluate_expr() {
  const py::gil_scoped_acquire lock;
  return py::eval(expression, py::dict()).cast<std::int64_t>() == 3;
}

bool pybind11_call_function() {
  const py::gil_scoped_acquire lock;
  // Never released: at the end of the process nobody holds the lock.
  static const py::object& function = *new py::object(py::eval(function_text, py::dict()));
  return function(large_number).cast<std::int64_t>() == large_number + 1;
}

bool pybind11_evaluate() {
  const py::gil_scoped_acquire lock;
  py::dict names;
  names["limit"] = limit;
  py::exec(five_lines, names);
  return names["result"].cast<std::int64_t>() == expected_result;
}

bool pybind11_method_loop() {
  const py::gil_scoped_acquire lock;
  py::dict names;
  names["w"] = py::module_::import(module_of(contestant::pybind11)).attr("subject");
  py::exec(method_loop_function, names);
  return true;
}

// --- the C API -------------------------------------------------------------------------------------------------------
class raw_lock {
 public:
  raw_lock() noexcept : state_(PyGILState_Ensure()) {}
  ~raw_lock() { PyGILState_Release(state_); }
  raw_lock(const raw_lock&) = delete;
  raw_lock& operator=(const raw_lock&) = delete;

 private:
  PyGILState_STATE state_;
};

bool is_number(PyObject* object, std::int64_t expected) {
  return object != nullptr && PyLong_AsLongLong(object) == expected;
}

bool raw_evaluate_expr() {
  const raw_lock lock;
  PyObject* names = PyDict_New();
  PyObject* result = PyRun_String(expression, Py_eval_input, names, names);
  const bool right = is_number(result, 3);
  Py_XDECREF(result);
  Py_DECREF(names);
  return right;
}

bool raw_call_function() {
  const raw_lock lock;
  static PyObject* const function = [] {
    PyObject* names = PyDict_New();
    return PyRun_String(function_text, Py_eval_input, names, names);
  }();
  PyObject* number = PyLong_FromLongLong(large_number);
  PyObject* result = PyObject_CallOneArg(function, number);
  const bool right = is_number(result, large_number + 1);
  Py_XDECREF(result);
  Py_DECREF(number);
  return right;
}

bool raw_evaluate() {
  const raw_lock lock;
  PyObject* names = PyDict_New();
  PyObject* number = PyLong_FromLongLong(limit);
  PyDict_SetItemString(names, "limit", number);
  Py_DECREF(number);
  PyObject* result = PyRun_String(five_lines, Py_file_input, names, names);
  const bool right = result != nullptr && is_number(PyDict_GetItemString(names, "result"), expected_result);
  Py_XDECREF(result);
  Py_DECREF(names);
  return right;
}

bool raw_method_loop() {
  const raw_lock lock;
  PyObject* module = PyImport_ImportModule(module_of(contestant::raw));
  PyObject* subject = module != nullptr ? PyObject_GetAttrString(module, "subject") : nullptr;
  PyObject* names = PyDict_New();
  PyDict_SetItemString(names, "w", subject);
  PyObject* result = PyRun_String(method_loop_function.c_str(), Py_file_input, names, names);
  Py_XDECREF(result);
  Py_DECREF(names);
  Py_XDECREF(subject);
  Py_XDECREF(module);
  return result != nullptr;
}

// --- the rows --------------------------------------------------------------------------------------------------------
// Making a thread state and dropping it again costs more than most calls. The language module keeps one per thread by
// itself; here every contestant's threads have one, so that the rows compare the calls.
class kept_thread_state {
 public:
  kept_thread_state() noexcept : state_(PyGILState_Ensure()), saved_(PyEval_SaveThread()) {}
  ~kept_thread_state() {
    PyEval_RestoreThread(saved_);
    PyGILState_Release(state_);
  }
  kept_thread_state(const kept_thread_state&) = delete;
  kept_thread_state& operator=(const kept_thread_state&) = delete;

 private:
  PyGILState_STATE state_;
  PyThreadState* saved_;
};

void run(benchmark::State& state, bool (*call)(), int operations) {
  const kept_thread_state kept;
  while (state.KeepRunningBatch(operations)) {
    if (!call()) {
      state.SkipWithError("wrong result");
      break;
    }
  }
}

struct row {
  const char* name;
  bool (*calls[3])();  // in the order of `contestants`
  int operations;      // per call
};

constexpr row rows[] = {
    {"evaluate_expr", {ling_evaluate_expr, pybind11_evaluate_expr, raw_evaluate_expr}, 1             },
    {"evaluate",      {ling_evaluate, pybind11_evaluate, raw_evaluate},                1             },
    {"call_function", {ling_call_function, pybind11_call_function, raw_call_function}, 1             },
    {"method_loop",   {ling_method_loop, pybind11_method_loop, raw_method_loop},       calls_per_loop},
};

}  // namespace

void register_host_rows() {
  for (const row& of : rows) {
    for (const contestant who : contestants) {
      const std::string name = std::string(of.name) + "/" + name_of(who);
      benchmark::RegisterBenchmark(name.c_str(), run, of.calls[static_cast<int>(who)], of.operations)
          ->ThreadRange(1, 4)
          ->UseRealTime();
    }
  }
}

}  // namespace benchmarks
