// CPythonLanguage.
#include "language/cpython_language.h"

#include "language/evaluation.h"
#include "language/import_all.h"
#include "ling/published.h"
#include "python/convert.h"

namespace ling::cpython {

// clang-format off
const char language_doc[] =
    "Python is an easy to learn, powerful programming language. It has efficient high-level data structures and a "
    "simple but effective approach to object-oriented programming. Python\u00e2\u20ac\u2122s elegant syntax and dynamic "
    "typing, together with its interpreted nature, make it an ideal language for scripting and rapid application "
    "development in many areas on most platforms.";
// clang-format on
const char language_icon[] = ":/ling/icons/py.svg";

namespace {

// The language has no state, so whichever of two threads makes it first, the other's is as good and is dropped.
Any language_instance() {
  static constinit internal::published<object_value> instance;
  return Any::share(
      instance.get_or_make([] { return make<object_value_instance>(cpython_language_class.required()); }));
}

}  // namespace

// The members need no instance, so they can be called on the class, too.
constinit const class_definition<void> cpython_language_class("CPythonLanguage", [](class_builder<void>& c) {
  c.module("ling.cpython")
      .doc("Implementation of 'I_Language' interface for Python language.")
      .parent(I_Language::getClass())
      .constructor("", "The language: the same object every time.",
                   [](const Class_Generic&) { return language_instance(); })
      .class_method("toCode", "value", "The text that stands for a value in Python code.", &to_code)
      .class_method("resolve", "name", "The Python object with a dotted name.", &resolve)
      .class_method("evaluateExpression", "code, scope", "Evaluates Python expression.", &evaluate_expr, {None()})
      .class_method("evaluate", "code, scope", "Evaluates Python code.", &language_python_evaluate_method, {None()})
      .class_method("importAllModules", "", "Imports all standard python modules.", &import_all_modules)
      .property("instance", "The language.", [] { return language_instance(); })
      .constant("name", "CPython", "What the language is called.")
      .constant("canEvaluate", true, "Whether it can evaluate.");
});

}  // namespace ling::cpython
