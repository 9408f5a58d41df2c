// Modules are listed by evaluated code, as a user of Python would list them, and imported one by one behind a shield.
#include "language/import_all.h"

#include "language/evaluation.h"
#include "language/process_shield.h"
#include "ling/detail/try.h"
#include "ling/evaluation_scope.h"
#include "ling/hash_map.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/interpreter.h"
#include "python/pending_exception.h"
#include "python/python_modules.h"
#include "python/silent_warnings.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <string_view>

namespace ling::cpython {

namespace {

// What is there from the start, what shows itself to the user, and programs that run when they are imported and end
// when their user, or a day's testing, has come to an end.
constexpr std::string_view left_out[] = {
    "builtins", "sys", "this", "antigravity", "idlelib.idle", "test.autotest", "test.memory_watchdog",
};

constexpr char list_all[] = "import pkgutil\nreturn list(pkgutil.iter_modules())";
constexpr char list_package[] =
    "import pkgutil\n"
    "path = getattr( pp, '__path__', None )\n"
    "if path:\n"
    "    return list( pkgutil.iter_modules( path ) )\n"
    "return list()";

// A folder that leads back to itself is a package without end.
constexpr int maximum_package_depth = 16;

bool is_left_out(const String& name) {
  return std::find(std::begin(left_out), std::end(left_out), name.view()) != std::end(left_out);
}

// What cannot be read is left out, unless that is because of an interrupt, or of memory.
Result<None> unless_interrupted(const Error& failure) {
  raise_error(failure);
  const bool interrupted = failure.isOutOfMemory() || PyErr_ExceptionMatches(PyExc_KeyboardInterrupt) != 0;
  PyErr_Clear();
  return interrupted ? Result<None>(failure) : None();
}

// The module, null when it cannot be imported, or the Error of an interrupt. Leaves no exception pending.
Result<None> import(const String& python_name, PyObjectPtr& module) {
  const PyObjectPtr text = to_python_locked(python_name);
  module = PyObjectPtr(text ? PyImport_Import(text.get()) : nullptr);
  if (!module && PyErr_ExceptionMatches(PyExc_KeyboardInterrupt) != 0) {
    return capture_error_or("Interrupted.");
  }
  drop_exception();
  return None();
}

// The submodules that a module lists; none when it cannot say.
Result<Any> submodules_of(PyObject* module) {
  const HashMap_Generic variables;
  variables.set("pp", from_python_locked(module));
  return evaluate(list_package, EvaluationScope({}, {}, variables, {}));
}

Result<None> export_listed(const Result<Any>& listed, const String& name, const String& python_name, int depth);

// A module with all that is in it.
Result<None> export_tree(const String& name, const String& python_name, int depth) {
  PyObjectPtr module;
  {
    const process_shield shield;
    if (!shield) {
      return None();
    }
    const silent_warnings silence;
    TRY(import(python_name, module));
    if (!module) {
      return None();
    }
    if (const auto exported = export_python_module(name, python_name); exported.is_error()) {
      return unless_interrupted(exported.error());
    }
  }
  return depth < maximum_package_depth ? export_listed(submodules_of(module.get()), name, python_name, depth + 1)
                                       : Result<None>(None());
}

String inside(const String& module, const String& name) {
  return module.empty() ? name : String("{}.{}").arg(module, name);
}

// Each of the listed modules, which are in the package of these names; that of top-level modules has no Python name.
Result<None> export_listed(const Result<Any>& listed, const String& name, const String& python_name, int depth) {
  if (listed.is_error()) {
    return unless_interrupted(listed.error());
  }
  const auto modules = I_Iterable_Generic::cast(listed);
  if (!modules) {
    return None();
  }
  const Result<List_Generic> items = modules->toList();
  if (items.is_error()) {
    return unless_interrupted(items.error());
  }
  for (const Any& item : items->copyItems()) {
    const auto own_name = String::cast(item.propertyValue(members::property::name));
    if (!own_name || own_name->empty() || own_name->startsWith("_")) {
      continue;
    }
    const String python_child = inside(python_name, *own_name);
    if (!is_left_out(python_child)) {
      TRY(export_tree(inside(name, *own_name), python_child, depth));
    }
  }
  return None();
}

// Only one at a time: the second would take the shields of the first for what the process is. It cannot wait either,
// since it may be called by a module that is being imported.
class [[nodiscard]] only_one {
 public:
  only_one() noexcept : first_(!running_.exchange(true)) {}
  ~only_one() {
    if (first_) {
      running_.store(false);
    }
  }
  only_one(const only_one&) = delete;
  only_one& operator=(const only_one&) = delete;
  explicit operator bool() const noexcept { return first_; }

 private:
  static inline constinit std::atomic<bool> running_{false};
  const bool first_;
};

}  // namespace

Result<None> import_all_modules() {
  TRY(ensure_interpreter());
  const GilGuard lock;
  const only_one guard;
  if (!guard || !get_module("python")) {
    return None();
  }
  const Any listed = TRY(evaluate(list_all, {}));
  return export_listed(listed, "python", "", 0);
}

}  // namespace ling::cpython
