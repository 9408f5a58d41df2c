// Functions from source text.
#include "function/python_function.h"
#include "ling/detail/try.h"
#include "python/base_namespace.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/function_body.h"
#include "python/interpreter.h"
#include "python/pending_exception.h"
#include "python/python_source.h"

#include <cctype>
#include <string>

namespace ling::cpython {

namespace {

constexpr char wrapped_name[] = "func";

// The name that a `def` gives; empty for other text.
String defined_name(std::string_view text) {
  if (text.size() < 4 || !text.starts_with("def") || std::isspace(static_cast<unsigned char>(text[3])) == 0) {
    return {};
  }
  const std::size_t colon = text.find(':', 4);
  if (colon == std::string_view::npos) {
    return {};
  }
  const String head = String(text.substr(4, colon - 4)).trimmed();
  const std::size_t parenthesis = head.view().find('(');
  return parenthesis == std::string_view::npos || parenthesis == 0
             ? head
             : String(head.view().substr(0, parenthesis)).trimmed();
}

std::string function_around(std::string_view body, std::span<const String>) {
  std::string source = "def func(*args):\n";
  append_function_body(source, body);
  return source;
}

Error error_not_compiled() { return capture_error_or("Unable to compile the function."); }

Result<CPythonFunction> evaluate_lambda(std::string_view text, PyObject* names) {
  const PyObjectPtr function = run_source({python_source::kind::expression, text}, names, names);
  return function ? make_python_function(function.get()) : Result<CPythonFunction>(error_not_compiled());
}

Result<CPythonFunction> execute_definition(const python_source& source, const String& name, PyObject* names) {
  if (!run_source(source, names, names)) {
    return error_not_compiled();
  }
  const PyObjectPtr key = to_python_locked(name);
  PyObject* const function = key ? PyDict_GetItemWithError(names, key.get()) : nullptr;
  tolerate_exception();
  if (function == nullptr || PyCallable_Check(function) == 0) {
    return Error(String("Unable to find the function: {}.").arg(name));
  }
  return make_python_function(function);
}

}  // namespace

Result<CPythonFunction> compile_function(const String& source) {
  TRY(ensure_interpreter());
  const GilGuard gil;
  const PyObjectPtr names = new_namespace(base_names::modules);
  if (!names) {
    return error_not_compiled();
  }
  const String text = source.trimmed();
  if (text.view().starts_with("lambda ")) {
    return evaluate_lambda(text.view(), names.get());
  }
  const String name = defined_name(text.view());
  using enum python_source::kind;
  return name.empty() ? execute_definition({statements, source.view(), {}, &function_around}, wrapped_name, names.get())
                      : execute_definition({statements, text.view()}, name, names.get());
}

}  // namespace ling::cpython
