// What is left of Python in the host when another part of the process, its owner, has ended the interpreter.
#include "extension/search_paths.h"
#include "function/python_function.h"
#include "proxies/outcomes.h"

#include <iostream>

namespace ling::cpython {
namespace {

constexpr const char* objects = R"(
class Class:
    """A class."""
    constant = 5
    def method(self): return 1
def function(a=1): return a
result = {'object': Class(), 'class': Class, 'function': function, 'built-in': len, 'list': [1], 'dict': {1: 2},
          'set': {1}, 'iterable': frozenset((1,)), 'iterator': iter([1]).__iter__})";

Any call_by_name(const char* function, const std::vector<Any>& arguments) {
  return I_Callable_Generic::unchecked(find_module("ling.cpython").value().callables().get(function))
      .callWith(arguments);
}

// What the host holds by then.
class held_values {
 public:
  held_values() {
    const PyObjectPtr dict = run(objects);
    PyObject *key = nullptr, *value = nullptr;
    for (Py_ssize_t position = 0; PyDict_Next(dict.get(), &position, &key, &value) != 0;) {
      values_.set(from_python(key), from_python(value));
    }
    values_.set("error", call_by_name("evaluate", {"raise ValueError"}));
    values_.set("iterator", I_Callable_Generic::unchecked(values_.get("iterator"))());
  }
  Any operator[](const char* name) const { return values_.get(name); }
  I_Callable_Generic callable(const char* name) const { return I_Callable_Generic::unchecked(values_.get(name)); }

 private:
  HashMap_Generic values_;
};

Any ask_language(const char* member, const Any& argument) {
  const Any of_class = find_module("ling.cpython").value().classes().get("CPythonLanguage");
  return ask(I_Callable_Generic::unchecked(of_class)(), member, {argument});
}

// Everything that the host can ask for.
std::vector<std::pair<const char*, Any>> ask_all(const held_values& held) {
  const Any object = held["object"];
  const auto of_class = Class_Generic::unchecked(held["class"]);
  const auto method = of_class.definedMethod(meta_method_untyped("method")).value();
  const I_Callable_Generic function = held.callable("function"), constructor = CPythonFunction::getClass();
  HashMap_Generic named;
  named.set("a", 1);
  const meta_property_untyped property("x"), constant("constant");
  const meta_method_untyped x("x");
  const List_Generic list_of_host{object};
  return {
      {"evaluate", call_by_name("evaluate", {"return 1"})},
      {"evaluate_expr", call_by_name("evaluate_expr", {"1"})},
      {"cpython_add_sys_path", call_by_name("cpython_add_sys_path", {"/one"})},
      {"toCode", ask_language("toCode", 1)},
      {"resolve", ask_language("resolve", "os")},
      {"function from text", constructor("lambda x: x")},
      {"function from a value", constructor(5)},
      {"from Python", from_python(nullptr)},
      {"property", object.propertyValue(property)},
      {"set property", object.setPropertyValue(property, 1)},
      {"insert property", insert_property_value(object, property, 1)},
      {"describe property", property_of(object, property)},
      {"method", object.boundMethod(x)},
      {"call method", call_method(object, x, {})},
      {"display", display(object)},
      {"equal", equal_objects(object, held["list"])},
      {"search", ask(list_of_host, "indexOf", {held["list"]})},
      {"value of an error", Error::unchecked(held["error"]).value()},
      {"doc", ask(function, ".doc")},
      {"compare", compare_objects(object, held["list"])},
      {"call", function(1)},
      {"call by name", function.callWithNamed(named)},
      {"signature", function.signature()},
      {"defaults", ask(function, ".$$defaults")},
      {"set defaults", function.setPropertyValue(meta_property_untyped("$$defaults"), List_Generic())},
      {"compare functions", compare_objects(function, held["built-in"])},
      {"instance", of_class()},
      {"class signature", of_class.signature()},
      {"class attribute", of_class.propertyValue(constant)},
      {"class method", method(object)},
      {"class method's signature", method.signature()},
      {"length", ask(held["list"], ".__length__")},
      {"item", ask(held["list"], "at", {0})},
      {"item or default", ask(held["list"], "atOr", {0, 5})},
      {"index", ask(held["list"], "indexOf", {1})},
      {"slice", ask(held["list"], "sliced", {0, 1})},
      {"append", ask(held["list"], "append", {1})},
      {"to a list", I_Iterable_Generic::unchecked(held["list"]).toList()},
      {"keys", ask(held["dict"], ".keys")},
      {"get", ask(held["dict"], "get", {1})},
      {"insert", ask(held["set"], "insert", {2})},
      {"remove", ask(held["set"], "remove", {1})},
      {"iterate", ask(held["iterable"], "iter")},
      {"contains", ask(held["iterable"], "contains", {1})},
      {"next", ask(held["iterator"], "next")},
  };
}

bool passed = true;

// Says what is wrong where the parent process sees it.
void expect(bool right, const char* what, const Any& answer = {}) {
  if (!right) {
    std::cerr << what << ": " << outcome_text(answer) << "\n";
    passed = false;
  }
}

bool is_refused(const Any& answer) {
  return is_error_result(answer) && Error::unchecked(answer).message() == "The Python interpreter has ended.";
}

void end_interpreter(bool and_start_another) {
  Py_InitializeEx(0);
  expect(!initialize().is_error(), "initialize");
  {
    const held_values held;
    for (const auto& [what, answer] : ask_all(held)) {
      expect(!is_refused(answer), what, answer);
    }
    PyThreadState* const own = PyEval_SaveThread();
    std::thread([&] {
      expect(!is_refused(display(held["list"])), "display");
    }).join();  // its thread state stays behind
    PyEval_RestoreThread(own);
    Py_FinalizeEx();
    if (and_start_another) {
      Py_InitializeEx(0);
    }
    for (const auto& [what, answer] : ask_all(held)) {
      expect(is_refused(answer), what, answer);
    }
    expect(is_refused(call_by_name("importAllModules", {})), "importAllModules");
    expect(!to_python(1), "to Python");
    const auto method = Class_Generic::unchecked(held["class"]).definedMethod(meta_method_untyped("method")).value();
    expect(method.declaringContext().empty(), "class of a method");
    expect(held.callable("function").name().empty() && held.callable("function").doc().empty(), "texts");
    std::thread([&] { expect(is_refused(display(held["list"])), "display"); }).join();
  }
  std::exit(passed ? 3 : 1);
}

TEST(EndedInterpreterDeathTest, IsAnErrorForWhateverNeedsIt) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const bool and_start_another : {false, true}) {
    EXPECT_EXIT(end_interpreter(and_start_another), testing::ExitedWithCode(3), "");
  }
}

}  // namespace
}  // namespace ling::cpython
