// Running Python through the language module.
#include "command/python_session.h"

#include "command/session_source.h"
#include "ling/byte_array.h"
#include "ling/evaluation_scope.h"
#include "ling/extension.h"
#include "ling/hash_map.h"
#include "ling/interfaces.h"
#include "ling/logger.h"
#include "ling/module.h"
#include "ling/registration.h"
#include "ling/tuple.h"

#include <utility>

namespace ling::command {

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

Result<Boolean> python_session::prepare(const program_arguments& arguments) {
  // As bytes: what the shell passes need not be text.
  std::vector<Any> row;
  for (const std::string& argument : arguments.argv) {
    row.push_back(ByteArray(argument));
  }
  const HashMap_Generic locals;
  locals.set("arguments", Tuple_Generic(std::move(row)));
  locals.set("file", arguments.file ? Any(ByteArray(*arguments.file)) : Any(None()));
  const std::string code = std::string(session_source) + "\nreturn prepare(arguments, file)";
  const Any prepared = call_evaluator(evaluate_, code, EvaluationScope(None(), None(), locals, None()));
  if (is_error_result(prepared)) {
    return Error::unchecked(prepared);
  }
  const auto pair = I_Sequence_Generic::cast(prepared);
  handover_ = pair ? internal::unwrap(pair->at(1)) : Any();
  const auto is_package = Boolean::cast(pair ? internal::unwrap(pair->at(0)) : Any());
  if (!is_package || !I_MutableSequence_Generic::matches(handover_.get())) {
    return Error("The interpreter cannot be prepared for a program.");
  }
  return is_package.value();
}

Any python_session::evaluate(const String& code) const { return call_evaluator(evaluate_, code, None()); }
Any python_session::evaluate_expression(const String& code) const {
  return call_evaluator(evaluate_expr_, code, None());
}

void python_session::hand_over(const Error& error) const {
  static_cast<void>(I_MutableSequence_Generic::unchecked(handover_).append(error.value()));
}

}  // namespace ling::command
