// Evaluation runs text as Python's own `exec` and `eval` do. Code becomes the body of a function, so that it can return
// a value; what it leaves behind is carried back by functions of the host that the generated text calls.
#include "language/evaluation.h"

#include "ling/class_builder.h"
#include "ling/detail/immortal.h"
#include "ling/detail/iterator.h"
#include "ling/detail/try.h"
#include "ling/evaluation_scope.h"
#include "ling/module.h"
#include "ling/spinlock.h"
#include "python/base_namespace.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/function_body.h"
#include "python/interpreter.h"
#include "python/pending_exception.h"
#include "python/python_source.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace ling::cpython {

namespace {

using optional_map = Union<I_Map_Generic, None>;
using optional_mutable_map = Union<I_MutableMap_Generic, None>;

// What an EvaluationScope says; any other scope counts as none.
struct context {
  Any self;
  optional_map globals = None(), locals = None();
  optional_mutable_map out_locals = None();
};
context context_of(const Any& scope) {
  const auto given = EvaluationScope::cast(scope);
  return given ? context{given->self(), given->globals(), given->locals(), given->outLocals()} : context();
}

// --- what comes back -------------------------------------------------------------------------------------------------

// `ling_store_result`, and where it puts the result. The code may keep it for longer than the run, and call it from
// another thread.
class object_value_store_result final : public object_value_function {
 public:
  object_value_store_result() : object_value_function(declared(), {&types, &None::getType}) {}

  Any do_call(std::span<const Any> arguments) const override {
    if (arguments.size() != 1) {
      return error_arguments_count(arguments.size());
    }
    Any value = arguments.front();
    const std::lock_guard guard(lock_);
    value_.swap(value);  // the former value dies after the lock
    return None();
  }
  Any take() const noexcept {
    const std::lock_guard guard(lock_);
    return std::move(value_);
  }

 private:
  static const declaration& declared() {
    static const internal::immortal<declaration> shared(
        declaration{"ling_store_result", "value", "Stores what the evaluated code returned.", {}});
    return shared.object;
  }
  static std::vector<Type> types() { return {Type::untyped()}; }

  mutable spinlock lock_;
  mutable Any value_;
};

I_Callable_Generic make_store_local(const I_MutableMap_Generic& out_locals) {
  return make_function("ling_store_local", "name, value", "Stores a variable of the evaluated code.",
                       [out_locals](const String& name, const Any& value) { return out_locals.set(name, value); });
}

// The names of the variables that the code gives back. `what` they are is said of one that is no text.
Result<None> read_names(const std::vector<Any>& values, const char* what, std::vector<String>& names) {
  for (const Any& value : values) {
    if (const auto name = String::cast(value)) {
      names.push_back(*name);
    } else {
      return BadArgument(String("{} must be texts, not {}.").arg(what, value));
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

// The pending exception, which code has raised that gives back these variables. Above the code stand the line of `def`
// and the declarations, before each of its lines a tab. (What follows a literal on the last of its lines comes out one
// column too small.)
Error error_in_code(std::span<const String> names) {
  return exception_to_error(-(1 + static_cast<int>(names.size())), -1);
}

// Text that defines a function with the code as its body, calls it, and hands its result and then the variables of
// these names to the functions `ling_store_result` and `ling_store_local`. The names are declared global, one to a
// line, between the line of `def` and the code.
std::string text_of_run(std::string_view code, std::span<const String> names) {
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
python_source source_of_run(const String& code, std::span<const String> names) {
  return {python_source::kind::statements, code.view(), names, &text_of_run};
}

// --- what goes in ----------------------------------------------------------------------------------------------------

void store_pairs(PyObject* dict, const std::vector<std::pair<Any, Any>>& pairs) {
  for (const auto& [key, value] : pairs) {
    if (const auto name = String::cast(key)) {
      store(dict, *name, value);
    }
  }
}

// The entries whose keys are texts. An Error when the map cannot be read.
Result<None> store_all(PyObject* dict, const optional_map& map) {
  if (map.has_value()) {
    std::vector<std::pair<Any, Any>> pairs;
    TRY(map.value().pairs(pairs));
    store_pairs(dict, pairs);
  }
  return None();
}

// --- a run -----------------------------------------------------------------------------------------------------------

// The namespaces of one run, never used again. All variables are globals: the body of the generated function sees no
// others.
struct run_dicts {
  PyObjectPtr globals = new_namespace(base_names::modules_and_inlined);
  PyObjectPtr locals{PyDict_New()};
  bool complete() const noexcept { return globals && locals; }

  // Later ones win. Without global variables of the caller's, those of the host.
  Result<None> fill(const context& in) const {
    if (in.globals.has_value()) {
      TRY(store_all(globals.get(), in.globals));
    } else {
      store_pairs(globals.get(), ling::globals().copyPairs());
    }
    TRY(store_all(globals.get(), in.out_locals));
    return store_all(globals.get(), in.locals);
  }
};

// Runs code that gives back the variables of these names; without them, of the keys of `outLocals`. `execute` is given
// the names and the namespaces and answers null when it fails.
template <class Execute>
Result<Any> run(const context& in, const std::vector<String>* given, const Execute& execute) {
  const run_dicts dicts;
  if (!dicts.complete()) {
    return exception_to_error(0, 0);
  }
  TRY(dicts.fill(in));
  std::vector<String> keys;
  if (given == nullptr && in.out_locals.has_value()) {
    const List_Generic listed = TRY(in.out_locals.value().keys());
    TRY(read_names(listed.copyItems(), "The keys of outLocals", keys));
  }
  const std::vector<String>& names = given != nullptr ? *given : keys;
  if (in.out_locals.has_value()) {
    store(dicts.locals.get(), "ling_store_local", make_store_local(in.out_locals.value()));
  }
  const Any result = make<object_value_store_result>();
  store(dicts.locals.get(), "ling_store_result", result);
  store(dicts.globals.get(), "self", in.self);
  if (execute(names, dicts.globals.get(), dicts.locals.get())) {
    return static_cast<const object_value_store_result&>(*result.get()).take();
  }
  return failed_behind_code() ? capture_error_or("Unable to take the results of the code.") : error_in_code(names);
}

Result<Any> run_program(PyObject* program, const std::vector<String>& names, const Any& scope) {
  TRY(ensure_interpreter());
  const GilGuard lock;
  const context in = context_of(scope);
  if (!names.empty() && !in.out_locals.has_value()) {
    return BadArgument("The code gives variables back, for which the scope has no outLocals.");
  }
  return run(in, &names, [&](std::span<const String>, PyObject* globals, PyObject* locals) {
    return run_code(program, globals, locals);
  });
}

}  // namespace

Result<Any> evaluate(const String& code, const Any& scope) {
  TRY(ensure_interpreter());
  const GilGuard lock;
  return run(context_of(scope), nullptr, [&](std::span<const String> names, PyObject* globals, PyObject* locals) {
    return run_source(source_of_run(code, names), globals, locals);
  });
}

Result<Any> evaluate_expr(const String& code, const Any& scope) {
  TRY(ensure_interpreter());
  const GilGuard lock;
  context in = context_of(scope);
  in.out_locals = None();
  const run_dicts dicts;
  if (!dicts.complete()) {
    return exception_to_error(0, 0);
  }
  TRY(dicts.fill(in));
  const PyObjectPtr value =
      run_source({python_source::kind::expression, code.view()}, dicts.globals.get(), dicts.locals.get());
  if (!value) {
    return exception_to_error(0, 0);
  }
  return from_python_locked(value.get());
}

Result<I_Callable_Generic> compile(const String& code, const Any& names) {
  TRY(ensure_interpreter());
  const GilGuard lock;
  std::vector<String> given_back;
  if (!is_none(names)) {
    std::vector<Any> values;
    TRY(internal::collect(names, values));
    TRY(read_names(values, "The names of variables", given_back));
  }
  PyObjectPtr program = compile_source(source_of_run(code, given_back));
  if (!program) {
    return error_in_code(given_back);
  }
  return make_function("run", "scope", "Runs the compiled code in that scope.",
                       [program = std::move(program), names = std::move(given_back)](const Any& scope) {
                         return run_program(program.get(), names, scope);
                       },
                       {None()});
}

}  // namespace ling::cpython

namespace ling {

Result<Any> language_python_evaluate_method(const String& code, const Any& scope) {
  return cpython::evaluate(code, scope);
}

}  // namespace ling
