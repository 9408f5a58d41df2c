// Evaluation hands text to Python's own `exec` and `eval`. Code becomes the body of a function, so that it can return a
// value; what it leaves behind is carried back by functions of the host that the generated text calls.
#include "language/evaluation.h"

#include "language/global_namespace.h"
#include "ling/class_builder.h"
#include "ling/detail/try.h"
#include "ling/evaluation_scope.h"
#include "ling/spinlock.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/function_body.h"
#include "python/interpreter.h"
#include "python/pending_exception.h"
#include "python/python_source.h"

#include <memory>
#include <mutex>
#include <string>

namespace ling::cpython {

namespace {

using optional_map = Union<I_Map_Generic, None>;
using optional_mutable_map = Union<I_MutableMap_Generic, None>;

// Where `ling_store_result` puts the result. Shared with that function, which the code may keep for longer than the
// run, and call from another thread.
class result_slot {
 public:
  void store(Any value) noexcept {
    const std::lock_guard guard(lock_);
    value_.swap(value);
  }
  Any take() noexcept {
    const std::lock_guard guard(lock_);
    return std::move(value_);
  }

 private:
  spinlock lock_;
  Any value_;
};

I_Callable_Generic make_store_result(const std::shared_ptr<result_slot>& slot) {
  return make_function("ling_store_result", "value", "Stores what the evaluated code returned.",
                       [slot](const Any& value) { slot->store(value); });
}

I_Callable_Generic make_store_local(const I_MutableMap_Generic& out_locals) {
  return make_function("ling_store_local", "name, value", "Stores a variable of the evaluated code.",
                       [out_locals](const String& name, const Any& value) { return out_locals.set(name, value); });
}

// The names of the variables that the code gives back, in the order of the map.
Result<None> read_names(const optional_mutable_map& map, std::vector<String>& names) {
  if (!map.has_value()) {
    return None();
  }
  const List_Generic keys = TRY(map.value().keys());
  for (const Any& key : keys.copyItems()) {
    if (const auto name = String::cast(key)) {
      names.push_back(*name);
    } else {
      return BadArgument(String("The keys of outLocals must be texts, not {}.").arg(key));
    }
  }
  return None();
}

// Whether the pending exception comes from the lines behind the code, which hand over its results: no function of the
// code is among those that it passed through.
bool failed_behind_code() {
  const pending_exception_aside aside;
  PyObject* const traceback = aside.traceback();
  const PyObjectPtr next(traceback == nullptr ? nullptr : PyObject_GetAttrString(traceback, "tb_next"));
  return next.get() == Py_None;
}

// Text that defines a function with the code as its body, calls it, and hands its result and then the variables of
// these names to the functions `ling_store_result` and `ling_store_local`. The names are declared global, one to a
// line, between the line of `def` and the code.
std::string source_of_run(std::string_view code, const std::vector<String>& names) {
  std::string source = "def ling_outer():\n";
  for (const String& name : names) {
    source.append("\tglobal ").append(name.view()).append("\n");
  }
  append_function_body(source, code);
  source.append("ling_store_result( ling_outer() )\n");
  for (const String& name : names) {
    source.append("ling_store_local('").append(name.view()).append("',").append(name.view()).append(")\n");
  }
  return source;
}

// The namespaces of one run, never used again.
struct run_dicts {
  PyObjectPtr globals{PyDict_New()};
  PyObjectPtr locals{PyDict_New()};
  bool complete() const noexcept { return globals && locals; }
};

// All variables are globals: the body of the generated function sees no others. Later ones win.
Result<None> fill_globals(PyObject* dict, const optional_map& globals, const optional_mutable_map& outLocals,
                          const optional_map& locals) {
  store_modules(dict);
  store_inlined_members(dict);
  TRY(store_globals(dict, globals));
  TRY(store_all(dict, outLocals));
  return store_all(dict, locals);
}

}  // namespace

Result<Any> evaluate_code(const Any& self, const String& code, const optional_map& locals, const optional_map& globals,
                          const optional_mutable_map& outLocals) {
  TRY(ensure_interpreter());
  const GilGuard lock;
  const run_dicts dicts;
  if (!dicts.complete()) {
    return exception_to_error(0, 0);
  }
  TRY(fill_globals(dicts.globals.get(), globals, outLocals, locals));
  std::vector<String> names;
  TRY(read_names(outLocals, names));
  if (outLocals.has_value()) {
    store(dicts.locals.get(), "ling_store_local", make_store_local(outLocals.value()));
  }
  const auto result = std::make_shared<result_slot>();
  store(dicts.locals.get(), "ling_store_result", make_store_result(result));
  store(dicts.globals.get(), "self", self);

  const std::string source = source_of_run(code.view(), names);
  if (!call_builtin("exec", source, dicts.globals.get(), dicts.locals.get())) {
    if (failed_behind_code()) {
      return capture_error_or("Unable to take the results of the code.");
    }
    // Above the code stand the line of `def` and the declarations, before each of its lines a tab. (What follows a
    // literal on the last of its lines comes out one column too small.)
    return exception_to_error(-(1 + static_cast<int>(names.size())), -1);
  }
  return result->take();
}

Result<Any> evaluate_expression(const String& code, const optional_map& globals, const optional_map& locals) {
  TRY(ensure_interpreter());
  const GilGuard lock;
  const run_dicts dicts;
  if (!dicts.complete()) {
    return exception_to_error(0, 0);
  }
  TRY(fill_globals(dicts.globals.get(), globals, None(), locals));
  const PyObjectPtr value = call_builtin("eval", code.view(), dicts.globals.get(), dicts.locals.get());
  if (!value) {
    return exception_to_error(0, 0);
  }
  return from_python_locked(value.get());
}

Result<Any> evaluate(const String& code, const Any& scope) {
  const auto given = EvaluationScope::cast(scope);
  if (!given) {
    return evaluate_code({}, code, None(), None(), None());
  }
  const EvaluationScope context = *given;
  return evaluate_code(context.self(), code, context.locals(), context.globals(), context.outLocals());
}

Result<Any> evaluate_expr(const String& code, const Any& scope) {
  const auto given = EvaluationScope::cast(scope);
  if (!given) {
    return evaluate_expression(code, None(), None());
  }
  return evaluate_expression(code, given->globals(), given->locals());
}

}  // namespace ling::cpython

namespace ling {

Result<Any> language_python_evaluate_method(const String& code, const Any& scope) {
  return cpython::evaluate(code, scope);
}

}  // namespace ling
