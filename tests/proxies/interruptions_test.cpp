// Requests to stop that come while the host asks a Python object something: they reach whoever asked.
#include "extension/search_paths.h"
#include "function/python_function.h"
#include "proxies/outcomes.h"
#include "python/error_bridge.h"
#include "python/python_modules.h"

namespace ling::cpython {
namespace {

// The object of an expression, in which `stop` raises what ends more than an operation.
class Interruptions : public PythonTest, public testing::WithParamInterface<const char*> {
 protected:
  static PyObjectPtr made(const std::string& expression) {
    return run("def stop(*_): raise " + std::string(GetParam()) + "('now')\nresult = " + expression);
  }
  static Any presented(const std::string& expression) { return from_python(made(expression).get()); }
  // An object that stops whoever looks for one of its attributes.
  static std::string stopping_at(const std::string& attribute, const std::string& base = "object") {
    return "type('Stopping', (" + base + ",), {'__getattribute__': lambda self, name: stop() if name == '" + attribute +
           "' else " + base + ".__getattribute__(self, name)})()";
  }
  static void expect_stop(const Any& answer, const std::string& what) {
    EXPECT_NE(outcome_text(answer).find("now"), std::string::npos) << what << ": " << outcome_text(answer);
    EXPECT_TRUE(is_error_result(answer) && Error::unchecked(answer).isInterruption()) << what;
    EXPECT_EQ(PyErr_Occurred(), nullptr) << what;
  }
};

TEST_P(Interruptions, TravelThroughLookups) {
  const Any object = presented(stopping_at("x"));
  const meta_method_untyped method("x");
  expect_stop(ask(object, ".x"), "propertyValue");
  expect_stop(method_of(object, method), "method_of");
  expect_stop(call_method(object, method, {}), "call_method");
  EXPECT_TRUE(is_none(method_of(object, meta_method_untyped("y")))) << "what is not there is nothing to stop at";
}

TEST_P(Interruptions, TravelThroughCollections) {
  const std::string late_iterator =
      "type('T', (), {'looks': [lambda: iter(())], "
      "'__iter__': property(lambda self: self.looks.pop() if self.looks else stop())})()";
  const std::tuple<std::string, const char*, std::vector<Any>> rows[] = {
      {late_iterator, "iter", {}},
      {stopping_at("remove", "set"), "remove", {1}},
      {"type('L', (list,), {'__getitem__': stop})([1])", "atOr", {0, 5}},
      {"type('L', (list,), {'index': stop})([1])", "indexOf", {1}},
  };
  for (const auto& [expression, member, arguments] : rows) {
    expect_stop(ask(presented(expression), member, arguments), expression);
  }
}

TEST_P(Interruptions, TravelThroughConversions) {
  const char* const claims_to_be = "type('C', (), {'__class__': property(stop)})()";
  const char* const date = "type('D', (__import__('datetime').date,), {'month': property(stop)})(2020, 1, 1)";
  for (const char* expression : {claims_to_be, "type('I', (), {'__iter__': stop})()", date}) {
    expect_stop(presented(expression), expression);
  }

  const PyObjectPtr modules = run("import sys\nresult = sys.modules");
  const PyObjectPtr module(PyModule_New("stopping_module"));
  PyModule_AddObject(module.get(), "member", made(claims_to_be).release());
  PyDict_SetItemString(modules.get(), "stopping_module", module.get());
  expect_stop(export_python_module("test.stopping", "stopping_module"), "export");
  EXPECT_FALSE(find_module("test.stopping"));

  const PyObjectPtr path = eval("__import__('sys').path");
  PyList_Append(path.get(), made("type('P', (), {'__eq__': stop})()").get());
  expect_stop(cpython_add_sys_path("/never/there"), "sys.path");
}

// Where an answer has no room for it, an interrupt comes once more.
TEST_P(Interruptions, AreNotLostWhereNothingCanCarryThem) {
  const bool comes_again = std::string(GetParam()) == "KeyboardInterrupt";
  const PyObjectPtr callable = made(stopping_at("__doc__", "type('C', (), {'__call__': lambda self: 1})"));
  static_cast<void>(make_python_function(callable.get()).value().doc());
  EXPECT_EQ(PyErr_Occurred(), nullptr);
  EXPECT_EQ(!run("result = [each for each in range(3)]"), comes_again);
  EXPECT_EQ(PyErr_ExceptionMatches(PyExc_KeyboardInterrupt) != 0, comes_again);
  PyErr_Clear();
}

INSTANTIATE_TEST_SUITE_P(Of, Interruptions, testing::Values("KeyboardInterrupt", "SystemExit"),
                         [](const auto& each) { return each.param; });

}  // namespace
}  // namespace ling::cpython
