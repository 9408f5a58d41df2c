// Failures in both directions.
#include "python/error_bridge.h"

#include "bridge/python.h"
#include "ling/ling.h"
#include "lingobject/ling_object.h"
#include "proxies/cpython_object.h"

#include <stdexcept>

namespace ling::cpython {
namespace {

using ErrorBridge = PythonTest;

const class_definition<Error> stock_error_class("StockError", [](class_builder<Error>& c) {
  c.module("shop")
      .parent(Error::getClass())
      .constructor("message", "",
                   [](Class_Generic of_class, const String& message) { return Error(of_class, message); });
});
Class_Generic stock_error() { return stock_error_class.required(); }

// What the code raised, pending.
void raise(const std::string& code) { EXPECT_FALSE(run(code)) << code; }

Error captured(const std::string& code) {
  raise(code);
  return capture_error_or("no exception");
}

TEST_F(ErrorBridge, KeepsTheTextsOfAnException) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"raise ValueError('bad')",                                          "bad",                                "ValueError: bad"  },
      {"def f(): 1 // 0\nf()",                                             "integer division or modulo by zero", "line 1, in f"     },
      {"raise ValueError('\\ud800')",                                      "\\ud800",                            "\\ud800"          },
      {"class E(Exception):\n  def __str__(self): return 1 // 0\nraise E", "E",                                  "E"                },
      {"class E(Exception): ling = property(len)\nraise E('text')",        "text",                               "E: text"          },
      {"raise KeyboardInterrupt",                                          "KeyboardInterrupt",                  "KeyboardInterrupt"},
  };
  for (const auto& [code, message, in_stack] : rows) {
    const Error error = captured(code);
    EXPECT_EQ(error.message().view(), message) << code;
    EXPECT_TRUE(error.stack().contains(in_stack)) << error.stack().view();
    EXPECT_TRUE(raw_class_of(error) == Error::getClass());
  }
  const Error of_syntax = captured("compile('a = 1 +* 2', 'shop.py', 'exec')");
  EXPECT_TRUE(of_syntax.message().contains("SyntaxError: invalid syntax")) << of_syntax.message().view();
  EXPECT_EQ(of_syntax.message(), of_syntax.stack());
}

TEST_F(ErrorBridge, PlacesErrorsInTheSource) {
  const std::string placed = R"(
class E(Exception):
    def __init__(self, lineno, offset, end_lineno, end_offset): self.__dict__.update(locals())
    def __str__(self): return 'text'
class Hostile(E):
    lineno = property(lambda self: sys.exit())
import sys
)";  // the next line is 8
  using expected = std::optional<std::int64_t>;
  const std::tuple<const char*, int, int, expected, expected, expected> rows[] = {
      {"E(3, 4, 3, 9)",                        0,  0,  3,  4,  5 },
      {"E(3, 4, 3, 4)",                        0,  0,  3,  4,  0 },
      {"E(3, 9, 3, 4)",                        0,  0,  3,  9,  {}},
      {"E(3, 4, 3, 9)",                        -2, -3, 1,  1,  5 },
      {"E(3, 4, 3, 9)",                        -3, -4, {}, {}, {}},
      {"E('3', [], 2**70, 1.5)",               0,  0,  8,  {}, {}},
      {"E(-2**63, -2**63, -2**63, 2**63 - 1)", -1, -1, {}, {}, {}},
      {"Hostile(3, 4, 3, 9)",                  0,  0,  8,  4,  {}},
  };
  for (const auto& [raised, line_shift, column_shift, line, column, length] : rows) {
    raise(placed + "raise " + raised);
    const Error error = exception_to_error(line_shift, column_shift);
    EXPECT_EQ(error.message(), "text") << raised;
    EXPECT_TRUE(error.stack().contains("line 8")) << error.stack().view();
    const auto at = EvaluationError::cast(error);
    ASSERT_EQ(at.has_value(), line || column) << raised;
    EXPECT_EQ(at ? at->line() : expected(), line) << raised;
    EXPECT_EQ(at ? at->column() : expected(), column) << raised;
    EXPECT_EQ(at ? at->length() : expected(), length) << raised;
  }
  // Whoever raised an error of the host's finds that very error again.
  raise("import ling\nling.Date.fromString('no date')");
  const auto own = EvaluationError::cast(exception_to_error(0, 0));
  ASSERT_TRUE(own && own->cause());
  EXPECT_THROW(std::rethrow_exception(own->cause()), Error);
}

TEST_F(ErrorBridge, RaisesAnErrorThatComesBackAsTheSameObject) {
  const std::pair<Error, const char*> rows[] = {
      {Error(String(std::string_view("a\0b", 3))), "<class 'RuntimeError'>"},
      {StopIteration(), "<class 'StopIteration'>"},
      {Error(stock_error(), "none left"), "<class 'ling.shop.StockError'>"},
      {EvaluationError("text", {}, 1, 2, 3), "<class 'ling.ling.EvaluationError'>"},
  };
  for (const auto& [error, type] : rows) {
    raise_error(error);
    EXPECT_EQ(repr(PyObjectPtr::share(PyErr_Occurred())), type);
    const auto back = capture_error();
    EXPECT_TRUE(back.is_same(error)) << type;
  }
}

TEST_F(ErrorBridge, LetsARequestToStopTravelThroughTheHost) {
  for (const char* raised : {"KeyboardInterrupt('now')", "SystemExit(3)", "GeneratorExit()"}) {
    const PyObjectPtr instance = eval(raised);
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(instance.get())), instance.get());
    const Error error = exception_to_error(0, 0);
    EXPECT_EQ(python_object_of(error.value()).get(), instance.get()) << raised;
    EXPECT_FALSE(to_python(error));
    EXPECT_EQ(take_pending().get(), instance.get()) << raised;
  }
  const Error of_the_host = Error::interruption("enough");
  of_the_host.setValue(from_python(eval("object()").get()));
  EXPECT_FALSE(to_python(of_the_host));
  EXPECT_EQ(repr(take_pending()), "KeyboardInterrupt('enough')");
}

TEST_F(ErrorBridge, MirrorsAClassOfErrorsByOnePythonClass) {
  PyObject* const type = exception_type_of(stock_error());
  EXPECT_EQ(PyObject_IsSubclass(type, PyExc_RuntimeError), 1);
  // Python code raises it by itself, too.
  const Any error = from_python(PyObjectPtr(PyObject_CallFunction(type, "s", "sold out")).get());
  EXPECT_TRUE(raw_class_of(error) == stock_error());
  EXPECT_EQ(Error::unchecked(error).message(), "sold out");
}

TEST_F(ErrorBridge, FollowsExceptionsThatCarryEachOtherOnlySoFar) {
  const Any first = from_python(
      run("a, b, c = KeyError('a'), OSError(), OSError()\na.ling, b.ling, c.ling = b, c, a\nresult = a").get());
  EXPECT_EQ(Error::unchecked(first).message(), "'a'");
  const Any last = from_python(run("a, b = ValueError('a'), OSError('b')\na.ling = b\nresult = a").get());
  EXPECT_EQ(Error::unchecked(last).message(), "b");
}

TEST_F(ErrorBridge, LeaksNothing) {
  const Error error(stock_error(), "none left");
  expect_no_leak("there and back", [&] {
    captured("raise ValueError('bad')");
    captured("raise SystemExit");
    raise("def f(");
    exception_to_error(0, 0);
    raise_error(error);
    static_cast<void>(capture_error());
    EXPECT_FALSE(to_python_locked(Tuple_Generic({1000, error})));
    PyErr_Clear();
  });
  EXPECT_EQ(error.get()->reference_count(), 1u);
}

}  // namespace
}  // namespace ling::cpython
