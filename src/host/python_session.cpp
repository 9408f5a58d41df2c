// Running Python through the language module.
#include "host/python_session.h"

#include "host/session_source.h"
#include "ling/byte_array.h"
#include "ling/evaluation_scope.h"
#include "ling/extension.h"
#include "ling/hash_map.h"
#include "ling/logger.h"
#include "ling/module.h"
#include "ling/registration.h"
#include "ling/tuple.h"

#include <cstdio>

namespace ling::host {

namespace {

Any call_evaluator(const Any& evaluator, const String& code, const Any& scope) {
  return internal::unwrap(I_Callable_Generic::unchecked(evaluator)(code, scope));
}

Result<None> find_evaluator(const char* name, Any& into) {
  const auto language = find_module("ling.cpython");
  const Any found = language ? language->callables().get(String(name)) : Any();
  if (!I_Callable_Generic::matches(found.get())) {
    return Error(String("The module file does not bring the function ling.cpython.{}.").arg(name));
  }
  into = found;
  return None();
}

}  // namespace

Result<None> python_session::open(const session_options& options) {
  get_logger().setLevel(options.log_level);
  if (auto ready = initialize(); ready.is_error()) {
    return ready;
  }
  // Plug-ins first: Python sees a module as it was when it was imported.
  for (const std::string& file : options.plug_ins) {
    if (auto loaded = load_extension(file); loaded.is_error()) {
      return loaded;
    }
  }
  if (auto loaded = load_extension(options.module_file); loaded.is_error()) {
    return loaded;
  }
  if (auto found = find_evaluator("evaluate", evaluate_); found.is_error()) {
    return found;
  }
  return find_evaluator("evaluate_expr", evaluate_expr_);
}

Any python_session::call(const char* expression, variables locals) const {
  const HashMap_Generic map;
  for (const auto& [name, value] : locals) {
    map.set(String(name), value);
  }
  const std::string code = std::string(session_source) + "\nreturn " + expression;
  return call_evaluator(evaluate_, code, EvaluationScope(None(), None(), map, None()));
}

int python_session::call_for_status(const char* expression, variables locals) const {
  const Any result = call(expression, locals);
  if (const auto status = Integer::cast(result)) {
    return static_cast<int>(status->value());
  }
  const String text = is_error_result(result) ? Error::unchecked(result).message() : String("no exit status");
  std::fprintf(stderr, "ling: %s: %s\n", expression, text.c_str());
  return failure;
}

int python_session::begin(const std::vector<std::string>& arguments) const {
  // As bytes: what the shell passes need not be text.
  std::vector<Any> row;
  for (const std::string& argument : arguments) {
    row.push_back(ByteArray(argument));
  }
  return call_for_status("begin(arguments)", {
                                                 {"arguments", Tuple_Generic(std::move(row))}
  });
}

int python_session::finish(int status) const {
  return call_for_status("finish(status)", {
                                               {"status", status}
  });
}
int python_session::run_file() const { return call_for_status("run_file()"); }
int python_session::show(const String& text) const {
  return call_for_status("show(text)", {
                                           {"text", text}
  });
}

Any python_session::evaluate(const String& code) const { return call_evaluator(evaluate_, code, None()); }
Any python_session::evaluate_expression(const String& code) const {
  return call_evaluator(evaluate_expr_, code, None());
}

int python_session::report(const Error& error) const {
  if (const auto status = Integer::cast(call("stop_status(value)", {
                                                                       {"value", error.value()}
  }))) {
    return static_cast<int>(status->value());
  }
  const String text = error.stack().empty() ? error.message() : error.stack();
  std::fprintf(stderr, "%s\n", text.trimmed().c_str());
  return failure;
}

}  // namespace ling::host
