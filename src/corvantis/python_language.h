// PythonLanguage: Python as one of the host's languages, for code that is written against the runtime's typed values.
//
//   ling::load_extension("…/corvantis_python.so");
//   const auto value = ling::CPythonLanguage::evaluateExpression("[1, 2, 3]");
//
// The header is all there is to it: what it does goes through the runtime to the language module, which need not be
// linked. Until that module is loaded, every operation gives an Error, and no value is a PythonLanguage.
//
// Threads: any.
#pragma once

#include "ling/error.h"
#include "ling/interfaces.h"
#include "ling/module.h"
#include "ling/none.h"
#include "ling/reflection.h"

#include <atomic>

namespace ling {

class PythonLanguage : public Handle<PythonLanguage, object_value_instance, I_Language> {
  LING_HANDLE(PythonLanguage, object_value_instance)

  // The language; there is one in a process.
  static Result<PythonLanguage> instance() {
    object_value_class* const of_class = find_class();
    if (of_class == nullptr) {
      return Error("The Python language is not loaded.");
    }
    return Result<PythonLanguage>::unchecked(of_class->call({}));
  }

  // The text that stands for the value in Python code; empty when there is none.
  static Result<String> toCode(const Any& value) {
    const auto language = instance();
    return language ? language->I_Language::toCode(value) : Result<String>(language.error());
  }
  // The Python object with a dotted name: "os.path.join".
  static Result<Any> resolve(const String& name) {
    const auto language = instance();
    return language ? language->I_Language::resolve(name) : Result<Any>(language.error());
  }
  // The value of an expression, what code returns that is run as the body of a function. The scope is an
  // EvaluationScope or None.
  static Result<Any> evaluateExpression(const String& code, const Any& scope = {}) {
    const auto language = instance();
    return language ? language->I_Language::evaluateExpression(code, scope) : Result<Any>(language.error());
  }
  static Result<Any> evaluate(const String& code, const Any& scope = {}) {
    const auto language = instance();
    return language ? language->I_Language::evaluate(code, scope) : Result<Any>(language.error());
  }
  // Imports every Python module there is and makes it a module of the host under "python."; may take a minute.
  static Result<None> importAllModules() {
    const auto language = instance();
    if (!language) {
      return language.error();
    }
    return Result<None>::unchecked(call_method(language.value(), meta_method_untyped("importAllModules"), {}));
  }

  static bool matches(const object_value* object) noexcept {
    const object_value_class* const of_class = object == nullptr ? nullptr : find_class();
    return of_class != nullptr && object->object_class().is_ancestor(*of_class);
  }
  // Those of I_Language as long as the language is not loaded.
  static Type getType() { return Type::of(getClass()); }
  static Class_Generic getClass() {
    object_value_class* const of_class = find_class();
    return of_class == nullptr ? I_Language::getClass() : Class_Generic(*of_class);
  }

 private:
  // Looked up until it is found.
  static object_value_class* find_class() noexcept {
    static std::atomic<object_value_class*> found{nullptr};
    object_value_class* known = found.load(std::memory_order_acquire);
    if (known == nullptr) {
      const auto module = find_module("ling.cpython");
      const Any of_class = module ? module->classes().get(String("CPythonLanguage")) : Any();
      if (Class_Generic::matches(of_class.get())) {
        known = static_cast<object_value_class*>(of_class.get());
        found.store(known, std::memory_order_release);
      }
    }
    return known;
  }
};
// By the name of its class.
using CPythonLanguage = PythonLanguage;

}  // namespace ling
