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
  const auto error = capture_error();
  EXPECT_TRUE(error) << code;
  EXPECT_EQ(PyErr_Occurred(), nullptr) << code;
  return error ? error.value() : Error::unknown();
}

TEST_F(ErrorBridge, HasNothingToSayWithoutAnException) {
  EXPECT_FALSE(capture_error());
  EXPECT_EQ(capture_error_or("fixed").message(), "fixed");
  EXPECT_EQ(exception_to_error(0, 0).message(), Error::unknown().message());
}

TEST_F(ErrorBridge, KeepsTheTextsOfAnException) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"raise ValueError('bad')",                                           "bad",                                "ValueError: bad"  },
      {"def f(): 1 // 0\nf()",                                              "integer division or modulo by zero", "line 1, in f"     },
      {"raise ValueError('\\ud800')",                                       "\\ud800",                            "\\ud800"          },
      {"try: 1 // 0\nexcept Exception as e: raise OSError('outer') from e", "outer",                              "ZeroDivisionError"},
      {"class E(Exception):\n  def __str__(self): return 1 // 0\nraise E",  "E",                                  "E"                },
      {"class E(Exception): ling = 'mine'\nraise E('text')",                "text",                               "E: text"          },
      {"class E(Exception): ling = property(len)\nraise E('text')",         "text",                               "E: text"          },
      {"raise KeyboardInterrupt",                                           "KeyboardInterrupt",                  "KeyboardInterrupt"},
  };
  for (const auto& [code, message, in_stack] : rows) {
    const Error error = captured(code);
    EXPECT_EQ(error.message().view(), message) << code;
    EXPECT_TRUE(error.stack().contains(in_stack)) << error.stack().view();
    EXPECT_TRUE(raw_class_of(error) == Error::getClass());
  }
}

TEST_F(ErrorBridge, PutsTheTracebackTextIntoTheMessageOfASyntaxError) {
  const Error error = captured("compile('a = 1 +* 2', 'shop.py', 'exec')");
  EXPECT_TRUE(error.message().contains("File \"shop.py\", line 1")) << error.message().view();
  EXPECT_TRUE(error.message().contains("SyntaxError: invalid syntax"));
  EXPECT_EQ(error.message(), error.stack());
}

TEST_F(ErrorBridge, PlacesErrorsInTheSource) {
  const std::string placed = R"(
class E(Exception):
    def __init__(self, lineno=None, offset=None, end_lineno=None, end_offset=None):
        self.__dict__.update(locals())
    def __str__(self): return 'text'
class Hostile(Exception):
    @property
    def lineno(self): raise SystemExit
    @property
    def offset(self): return object()
    def __str__(self): return 'text'
)";  // the next line is 12
  using expected = std::optional<std::int64_t>;
  const std::tuple<const char*, int, int, expected, expected, expected> rows[] = {
      {"E(3, 4, 3, 9)",                        0,  0,  3,  4,  5 },
      {"E(3, 4, 3, 4)",                        0,  0,  3,  4,  0 },
      {"E(3, 9, 3, 4)",                        0,  0,  3,  9,  {}},
      {"E(3, 4, 3, 9)",                        -2, -3, 1,  1,  5 },
      {"E(3, 4, 3, 9)",                        -3, -4, {}, {}, {}},
      {"E('3', [], 2**70, 1.5)",               0,  0,  12, {}, {}},
      {"E(-2**63, -2**63, -2**63, 2**63 - 1)", -1, -1, {}, {}, {}},
      {"E()",                                  0,  0,  12, {}, {}},
      {"Hostile()",                            0,  0,  12, {}, {}},
  };
  for (const auto& [raised, line_shift, column_shift, line, column, length] : rows) {
    raise(placed + "raise " + raised);
    const Error error = exception_to_error(line_shift, column_shift);
    EXPECT_EQ(error.message(), "text") << raised;
    EXPECT_TRUE(error.stack().contains("line 12")) << error.stack().view();
    const auto at = EvaluationError::cast(error);
    ASSERT_EQ(at.has_value(), line || column) << raised;
    if (at) {
      EXPECT_EQ(at->line(), line) << raised;
      EXPECT_EQ(at->column(), column) << raised;
      EXPECT_EQ(at->length(), length) << raised;
      EXPECT_FALSE(at->offset());
    }
  }
  // Whoever raised an error of the host's finds that very error again.
  raise("import ling\nling.Date.fromString('no date')");
  const auto own = EvaluationError::cast(exception_to_error(0, 0));
  ASSERT_TRUE(own && own->cause());
  EXPECT_THROW(std::rethrow_exception(own->cause()), Error);
}

TEST_F(ErrorBridge, RaisesAnErrorThatComesBackAsTheSameObject) {
  const Error with_cause("wrapped");
  with_cause.setCause(std::make_exception_ptr(std::runtime_error("cause")));
  const std::pair<Error, const char*> rows[] = {
      {with_cause, "<class 'RuntimeError'>"},
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
  EXPECT_EQ(exception_type_of(stock_error()), type);
  EXPECT_EQ(PyObject_IsSubclass(type, PyExc_RuntimeError), 1);
  // Python code raises it by itself, too.
  const Any error = from_python(PyObjectPtr(PyObject_CallFunction(type, "s", "sold out")).get());
  EXPECT_TRUE(raw_class_of(error) == stock_error());
  EXPECT_EQ(Error::unchecked(error).message(), "sold out");
}

TEST_F(ErrorBridge, FollowsExceptionsThatCarryEachOtherOnlySoFar) {
  for (const char* circle :
       {"e = ValueError('self')\ne.ling = result = e",
        "a, b, c = ValueError('self'), OSError(), OSError()\na.ling, b.ling, c.ling = b, c, a\nresult = a"}) {
    EXPECT_EQ(Error::unchecked(from_python(run(circle).get())).message(), "self");
  }
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
  });
  EXPECT_EQ(error.get()->reference_count(), 1u);
}

}  // namespace
}  // namespace ling::cpython
