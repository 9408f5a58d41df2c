// Rows in which the host asks Python, from one thread and from several: each contestant takes the interpreter lock and
// turns the outcome into a value of its host.
#include "cases.h"
#include "contestants.h"
#include "ling/ling.h"

#include <pybind11/embed.h>
#include <pybind11/stl.h>

#include <atomic>
#include <optional>
#include <string>
#include <vector>

namespace py = pybind11;

namespace benchmarks {
namespace {

constexpr char expression[] = "1 + 2";
// The first line of five, in which a text may differ from all before it.
constexpr char first_line[] = "total = 0";
constexpr char further_lines[] =
    "\nfor number in range(limit):\n"
    "    total += number\n"
    "text = 'total: %d' % total\n"
    "result = len(text)\n";
const std::string five_lines = std::string(first_line) + further_lines;
constexpr std::int64_t limit = 3;
constexpr std::int64_t expected_result = 8;
constexpr std::int64_t calls_per_loop = 10'000;
constexpr std::int64_t tuple_length = 100'000;

// In `functions`, the same objects for everybody.
constexpr char functions_text[] = R"py(
def next_number(number): return number + 1
def length(items): return len(items)
row = tuple(range(1000000, 1100000))
def get_row(): return row
def fail(): raise ValueError('nothing')
class Shelf: value = 1000000
shelf = Shelf()
numbers = list(range(1000000, 1001000))
)py";

std::string different_number() {
  static std::atomic<std::int64_t> number{large_number};
  return std::to_string(++number);
}
std::string different_expression() { return "0 * " + different_number() + " + 3"; }
std::string different_lines() { return "total = 0 * " + different_number() + further_lines; }

const std::string method_loop = "for _ in range(" + std::to_string(calls_per_loop) + "): w.add(1)";
// In a function, as the language module does it by itself.
const std::string method_loop_function = "def loop():\n  " + method_loop + "\nloop()";

// --- ling ------------------------------------------------------------------------------------------------------------
using ling::Any;

namespace with_ling {

Any evaluate(const std::string& code, const Any& scope) {
  static const ling::I_Callable_Generic function = language_function("evaluate");
  return function(ling::String(code), scope);
}

Any evaluate_expr(const std::string& code) {
  static const ling::I_Callable_Generic function = language_function("evaluate_expr");
  return function(ling::String(code), Any());
}

Any python_object(const std::string& name) { return evaluate_expr("__import__('functions')." + name); }
ling::I_Callable_Generic python_function(const std::string& name) {
  return ling::I_Callable_Generic::unchecked(python_object(name));
}

bool is_number(const Any& value, std::int64_t expected) {
  return ling::Integer::matches(value.get()) && ling::Integer::unchecked(value).value() == expected;
}

bool expression_again() { return is_number(evaluate_expr(expression), 3); }
bool expression_first() { return is_number(evaluate_expr(different_expression()), 3); }

bool run_lines(const std::string& text) {
  const ling::HashMap_Generic locals;
  locals.set("limit", limit);
  const ling::HashMap_Generic out_locals;
  out_locals.set("result", 0);
  const Any outcome = evaluate(text, ling::EvaluationScope({}, {}, locals, out_locals));
  return !ling::is_error_result(outcome) && is_number(out_locals.get("result"), expected_result);
}
bool lines_again() { return run_lines(five_lines); }
bool lines_first() { return run_lines(different_lines()); }

bool call_function() {
  static const auto next_number = python_function("next_number");
  return is_number(next_number(large_number), large_number + 1);
}

bool read_attribute() {
  static const ling::meta_property_untyped value("value");
  static const Any shelf = python_object("shelf");
  return is_number(shelf.propertyValue(value), large_number);
}

bool iterate() {
  static const auto numbers = ling::I_Iterable_Generic::unchecked(python_object("numbers"));
  const auto iterator = numbers.iter();
  std::int64_t expected = large_number;
  for (;;) {
    const Any item = iterator->next();
    if (!is_number(item, expected)) {
      return expected == large_number + item_count && ling::StopIteration::matches(item.get());
    }
    ++expected;
  }
}

bool tuple_to_python() {
  static const Any tuple = [] {
    std::vector<Any> items;
    for (std::int64_t i = 0; i < tuple_length; ++i) {
      items.push_back(large_number + i);
    }
    return ling::Tuple_Generic(std::move(items));
  }();
  static const auto length = python_function("length");
  return is_number(length(tuple), tuple_length);
}

bool tuple_from_python() {
  static const auto get_row = python_function("get_row");
  const auto items = ling::I_Iterable_Generic::unchecked(get_row()).toList();
  return !items.is_error() && is_number(items->at(tuple_length - 1), large_number + tuple_length - 1);
}

Any failed_call() {
  static const auto fail = python_function("fail");
  return fail();
}
bool error() {
  const Any outcome = failed_call();
  return ling::is_error_result(outcome) && !ling::Error::unchecked(outcome).message().empty();
}
bool error_with_stack() {
  const Any outcome = failed_call();
  return ling::is_error_result(outcome) && !ling::Error::unchecked(outcome).stack().empty();
}

bool loop_over_method() {
  static const Any scope = [] {
    const ling::HashMap_Generic locals;
    locals.set("w", evaluate_expr("__import__('contestant_ling').subject"));
    return ling::EvaluationScope({}, {}, locals, {});
  }();
  return !ling::is_error_result(evaluate(method_loop, scope));
}

// Without Python: an object that all threads share.
bool read_shared_object() {
  static const ling::meta_property_untyped value("value");
  static const Any subject = evaluate_expr("__import__('contestant_ling').subject");
  return is_number(subject.propertyValue(value), large_number);
}

}  // namespace with_ling

// --- pybind11 --------------------------------------------------------------------------------------------------------
namespace with_pybind11 {

py::object python_object(const char* name) { return py::module_::import("functions").attr(name); }

bool run_expression(const std::string& text) {
  const py::gil_scoped_acquire lock;
  return py::eval(text, py::dict()).cast<std::int64_t>() == 3;
}
bool expression_again() { return run_expression(expression); }
bool expression_first() { return run_expression(different_expression()); }

bool run_lines(const std::string& text) {
  const py::gil_scoped_acquire lock;
  py::dict names;
  names["limit"] = limit;
  py::exec(text, names);
  return names["result"].cast<std::int64_t>() == expected_result;
}
bool lines_again() { return run_lines(five_lines); }
bool lines_first() { return run_lines(different_lines()); }

bool call_function() {
  const py::gil_scoped_acquire lock;
  static const py::object next_number = python_object("next_number");
  return next_number(large_number).cast<std::int64_t>() == large_number + 1;
}

bool read_attribute() {
  const py::gil_scoped_acquire lock;
  static const py::object shelf = python_object("shelf");
  return shelf.attr("value").cast<std::int64_t>() == large_number;
}

bool iterate() {
  const py::gil_scoped_acquire lock;
  std::int64_t expected = large_number;
  static const py::object numbers = python_object("numbers");
  for (const py::handle item : numbers) {
    if (item.cast<std::int64_t>() != expected++) {
      return false;
    }
  }
  return expected == large_number + item_count;
}

bool tuple_to_python() {
  const py::gil_scoped_acquire lock;
  py::tuple tuple(tuple_length);
  for (std::int64_t i = 0; i < tuple_length; ++i) {
    tuple[static_cast<std::size_t>(i)] = py::int_(large_number + i);
  }
  static const py::object length = python_object("length");
  return length(tuple).cast<std::int64_t>() == tuple_length;
}

bool tuple_from_python() {
  const py::gil_scoped_acquire lock;
  static const py::object get_row = python_object("get_row");
  return get_row().cast<std::vector<std::int64_t>>().back() == large_number + tuple_length - 1;
}

bool error() {
  const py::gil_scoped_acquire lock;
  try {
    static const py::object fail = python_object("fail");
    fail();
  } catch (const py::error_already_set& raised) {
    return !py::str(raised.value()).cast<std::string>().empty();
  }
  return false;
}
bool error_with_stack() {
  const py::gil_scoped_acquire lock;
  try {
    static const py::object fail = python_object("fail");
    fail();
  } catch (const py::error_already_set& raised) {
    return std::string(raised.what()).find("fail") != std::string::npos;
  }
  return false;
}

bool loop_over_method() {
  const py::gil_scoped_acquire lock;
  py::dict names;
  names["w"] = py::module_::import(module_of(contestant::pybind11)).attr("subject");
  py::exec(method_loop_function, names);
  return true;
}

}  // namespace with_pybind11

// --- the C API -------------------------------------------------------------------------------------------------------
namespace with_raw {

class gil_lock {
 public:
  gil_lock() noexcept : state_(PyGILState_Ensure()) {}
  ~gil_lock() { PyGILState_Release(state_); }
  gil_lock(const gil_lock&) = delete;
  gil_lock& operator=(const gil_lock&) = delete;

 private:
  PyGILState_STATE state_;
};

PyObject* python_object(const char* name) {
  PyObject* module = PyImport_ImportModule("functions");
  PyObject* found = PyObject_GetAttrString(module, name);
  Py_DECREF(module);
  return found;
}

bool is_number(PyObject* object, std::int64_t expected) {
  return object != nullptr && PyLong_AsLongLong(object) == expected;
}
// Takes the reference.
bool was_number(PyObject* object, std::int64_t expected) {
  const bool right = is_number(object, expected);
  Py_XDECREF(object);
  return right;
}

bool run_expression(const std::string& text) {
  const gil_lock lock;
  PyObject* names = PyDict_New();
  const bool right = was_number(PyRun_String(text.c_str(), Py_eval_input, names, names), 3);
  Py_DECREF(names);
  return right;
}
bool expression_again() { return run_expression(expression); }
bool expression_first() { return run_expression(different_expression()); }

bool run_lines(const std::string& text) {
  const gil_lock lock;
  PyObject* names = PyDict_New();
  PyObject* number = PyLong_FromLongLong(limit);
  PyDict_SetItemString(names, "limit", number);
  Py_DECREF(number);
  PyObject* result = PyRun_String(text.c_str(), Py_file_input, names, names);
  const bool right = result != nullptr && is_number(PyDict_GetItemString(names, "result"), expected_result);
  Py_XDECREF(result);
  Py_DECREF(names);
  return right;
}
bool lines_again() { return run_lines(five_lines); }
bool lines_first() { return run_lines(different_lines()); }

bool call_function() {
  const gil_lock lock;
  PyObject* number = PyLong_FromLongLong(large_number);
  static PyObject* const next_number = python_object("next_number");
  const bool right = was_number(PyObject_CallOneArg(next_number, number), large_number + 1);
  Py_DECREF(number);
  return right;
}

bool read_attribute() {
  const gil_lock lock;
  static PyObject* const name = PyUnicode_InternFromString("value");
  static PyObject* const shelf = python_object("shelf");
  return was_number(PyObject_GetAttr(shelf, name), large_number);
}

bool iterate() {
  const gil_lock lock;
  static PyObject* const numbers = python_object("numbers");
  PyObject* iterator = PyObject_GetIter(numbers);
  std::int64_t expected = large_number;
  bool right = true;
  while (PyObject* item = PyIter_Next(iterator)) {
    right = was_number(item, expected++) && right;
  }
  Py_DECREF(iterator);
  return right && expected == large_number + item_count;
}

bool tuple_to_python() {
  const gil_lock lock;
  PyObject* tuple = PyTuple_New(tuple_length);
  for (std::int64_t i = 0; i < tuple_length; ++i) {
    PyTuple_SET_ITEM(tuple, i, PyLong_FromLongLong(large_number + i));
  }
  static PyObject* const length = python_object("length");
  const bool right = was_number(PyObject_CallOneArg(length, tuple), tuple_length);
  Py_DECREF(tuple);
  return right;
}

bool tuple_from_python() {
  const gil_lock lock;
  static PyObject* const get_row = python_object("get_row");
  PyObject* tuple = PyObject_CallNoArgs(get_row);
  std::vector<std::int64_t> items;
  for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(tuple); ++i) {
    items.push_back(PyLong_AsLongLong(PyTuple_GET_ITEM(tuple, i)));
  }
  Py_DECREF(tuple);
  return items.back() == large_number + tuple_length - 1;
}

// The text of an object, whose reference is taken.
std::string text_of(PyObject* object) {
  PyObject* text = PyObject_Str(object);
  Py_ssize_t length = 0;
  const char* utf8 = PyUnicode_AsUTF8AndSize(text, &length);
  std::string copy(utf8, static_cast<std::size_t>(length));
  Py_DECREF(text);
  Py_DECREF(object);
  return copy;
}

struct raised_exception {
  PyObject* type = nullptr;
  PyObject* value = nullptr;
  PyObject* trace = nullptr;
  raised_exception() {
    PyErr_Fetch(&type, &value, &trace);
    PyErr_NormalizeException(&type, &value, &trace);
  }
  ~raised_exception() {
    Py_XDECREF(type);
    Py_XDECREF(value);
    Py_XDECREF(trace);
  }
  raised_exception(const raised_exception&) = delete;
  raised_exception& operator=(const raised_exception&) = delete;
};

bool error() {
  const gil_lock lock;
  static PyObject* const fail = python_object("fail");
  if (PyObject_CallNoArgs(fail) != nullptr) {
    return false;
  }
  const raised_exception raised;
  Py_INCREF(raised.value);
  return !text_of(raised.value).empty();
}
bool error_with_stack() {
  const gil_lock lock;
  static PyObject* const fail = python_object("fail");
  if (PyObject_CallNoArgs(fail) != nullptr) {
    return false;
  }
  const raised_exception raised;
  static PyObject* const format = PyObject_GetAttrString(PyImport_ImportModule("traceback"), "format_exception");
  static PyObject* const nothing = PyUnicode_FromString("");
  PyObject* lines = PyObject_CallFunctionObjArgs(format, raised.type, raised.value, raised.trace, nullptr);
  const std::string text = text_of(PyUnicode_Join(nothing, lines));
  Py_DECREF(lines);
  return text.find("fail") != std::string::npos;
}

bool loop_over_method() {
  const gil_lock lock;
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

}  // namespace with_raw

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

using one_call = bool (*)();

run_turns repeat(one_call call, bool needs_python = true) {
  return [=](std::int64_t turns) {
    std::optional<kept_thread_state> state;
    if (needs_python) {
      state.emplace();
    }
    for (std::int64_t i = 0; i < turns; ++i) {
      if (!call()) {
        throw failure("wrong result");
      }
    }
  };
}

struct row {
  const char* name;
  one_call calls[3];            // in the order of `contestants`
  std::int64_t operations = 1;  // per call
};

#define LING_BENCHMARK_CALLS(name) \
  { with_ling::name, with_pybind11::name, with_raw::name }
constexpr row rows[] = {
    {"evaluate_expr", LING_BENCHMARK_CALLS(expression_again)},
    {"evaluate_expr, first", LING_BENCHMARK_CALLS(expression_first)},
    {"evaluate", LING_BENCHMARK_CALLS(lines_again)},
    {"evaluate, first", LING_BENCHMARK_CALLS(lines_first)},
    {"call_function", LING_BENCHMARK_CALLS(call_function)},
    {"proxy_attribute_read", LING_BENCHMARK_CALLS(read_attribute)},
    {"proxy_iteration", LING_BENCHMARK_CALLS(iterate), item_count},
    {"tuple_to_python", LING_BENCHMARK_CALLS(tuple_to_python), tuple_length},
    {"tuple_from_python", LING_BENCHMARK_CALLS(tuple_from_python), tuple_length},
    {"error", LING_BENCHMARK_CALLS(error)},
    {"error_with_stack", LING_BENCHMARK_CALLS(error_with_stack)},
};
constexpr row thread_rows[] = {
    {"evaluate_expr", LING_BENCHMARK_CALLS(expression_again)},
    {"call_function", LING_BENCHMARK_CALLS(call_function)},
    {"method_loop", LING_BENCHMARK_CALLS(loop_over_method), calls_per_loop},
};

#undef LING_BENCHMARK_CALLS

void add_threads(const char* name, const char* who, one_call call, std::int64_t operations, bool needs_python) {
  for (const int threads : {1, 2, 4, 8}) {
    add_case({.group = "Threads",
              .row = name,
              .contestant = who,
              .parameter = threads,
              .operations = operations * threads,
              .measure = wall_time(threads, repeat(call, needs_python)),
              .countable = false});
  }
}

}  // namespace

void register_host_rows() {
  run_python(
      "import sys, types\nmodule = sys.modules['functions'] = types.ModuleType('functions')\n"
      "exec(text, vars(module))",
      "text", functions_text);
  for (const row& of : rows) {
    for (const contestant who : contestants) {
      add_case({.group = "Host asks",
                .row = of.name,
                .contestant = name_of(who),
                .operations = of.operations,
                .measure = processor_time(repeat(of.calls[static_cast<int>(who)]))});
    }
  }
  for (const row& of : thread_rows) {
    for (const contestant who : contestants) {
      add_threads(of.name, name_of(who), of.calls[static_cast<int>(who)], of.operations, true);
    }
  }
  add_threads("shared_attribute_read", name_of(contestant::ling), with_ling::read_shared_object, 1, false);
}

}  // namespace benchmarks
