// What is left of Python in the host when another part of the process, its owner, has ended the interpreter.
#include "corvantis/python_language.h"
#include "function/python_function.h"
#include "proxies/outcomes.h"

namespace ling::cpython {
namespace {

Any call_by_name(const char* function, const std::vector<Any>& arguments) {
  return I_Callable_Generic::unchecked(find_module("ling.cpython").value().callables().get(function))
      .callWith(arguments);
}

// What the host holds by then.
struct held_values {
  const I_Sequence_Generic all = I_Sequence_Generic::unchecked(call_by_name("evaluate", {R"(
class Class:
    def method(self): return 1
def function(a=1): return a
return Class(), Class, function, [1], iter([1]))"}));
  const Any object = all.at(0);
  const Class_Generic of_class = Class_Generic::unchecked(all.at(1));
  const I_Callable_Generic function = I_Callable_Generic::unchecked(all.at(2));
  const I_Callable_Generic method = of_class.definedMethod(meta_method_untyped("method")).value();
  const Any list = all.at(3), iterator = all.at(4);
  const Error error = Error::unchecked(call_by_name("evaluate", {"raise ValueError"}));
};

// Everything that the host can ask for.
std::vector<std::pair<const char*, Any>> ask_all(const held_values& held) {
  const auto& [all, object, of_class, function, method, list, iterator, error] = held;
  const I_Callable_Generic constructor = CPythonFunction::getClass(), language = CPythonLanguage::getClass();
  const meta_property_untyped property("x");
  return {
      {"evaluate", call_by_name("evaluate", {"return 1"})},
      {"evaluate_expr", call_by_name("evaluate_expr", {"1"})},
      {"cpython_add_sys_path", call_by_name("cpython_add_sys_path", {"/one"})},
      {"toCode", ask(language(), "toCode", {1})},
      {"resolve", ask(language(), "resolve", {"os"})},
      {"function from text", constructor("lambda x: x")},
      {"from Python", from_python(nullptr)},
      {"property", object.propertyValue(property)},
      {"display", display(object)},
      {"equal", equal_objects(object, list)},
      {"value of an error", error.value()},
      {"compare", compare_objects(object, list)},
      {"call", function(1)},
      {"call by name", function.callWithNamed(HashMap_Generic())},
      {"signature", function.signature()},
      {"doc", ask(function, ".doc")},
      {"defaults", ask(function, ".$$defaults")},
      {"set defaults", function.setPropertyValue(meta_property_untyped("$$defaults"), List_Generic())},
      {"instance", of_class()},
      {"class signature", of_class.signature()},
      {"class method", method(object)},
      {"class method's signature", method.signature()},
      {"item or default", ask(list, "atOr", {0, 5})},
      {"next", ask(iterator, "next")},
  };
}

bool is_refused(const Any& answer) {
  return is_error_result(answer) && Error::unchecked(answer).message() == "The Python interpreter has ended.";
}

void end_interpreter(bool and_start_another) {
  Py_InitializeEx(0);
  EXPECT_FALSE(initialize().is_error());
  {
    const held_values held;
    for (const auto& [what, answer] : ask_all(held)) {
      EXPECT_FALSE(is_refused(answer)) << what;
    }
    PyThreadState* const own = PyEval_SaveThread();
    std::thread([&] { EXPECT_FALSE(is_refused(display(held.list))); }).join();  // its thread state stays behind
    PyEval_RestoreThread(own);
    Py_FinalizeEx();
    if (and_start_another) {
      Py_InitializeEx(0);
    }
    for (const auto& [what, answer] : ask_all(held)) {
      EXPECT_TRUE(is_refused(answer)) << what << ": " << outcome_text(answer);
    }
    EXPECT_TRUE(is_refused(call_by_name("importAllModules", {})));
    EXPECT_FALSE(to_python(1));
    EXPECT_TRUE(held.method.declaringContext().empty());
    EXPECT_TRUE(held.function.name().empty() && held.function.doc().empty());
    std::thread([&] { EXPECT_TRUE(is_refused(display(held.list))); }).join();
  }
}

TEST(EndedInterpreterDeathTest, IsAnErrorForWhateverNeedsIt) {
  for (const bool and_start_another : {false, true}) {
    expect_passes_alone([=] { end_interpreter(and_start_another); });
  }
}

}  // namespace
}  // namespace ling::cpython
