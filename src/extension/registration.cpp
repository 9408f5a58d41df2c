// What the module brings to the host: the queue of its init handlers, in the order of their levels.
#include "ling/registration.h"

#include "extension/logging_bridge.h"
#include "extension/search_paths.h"
#include "function/python_function.h"
#include "language/cpython_language.h"
#include "language/evaluation.h"
#include "language/import_all.h"
#include "ling/class_builder.h"
#include "ling/detail/try.h"
#include "ling/property.h"
#include "proxies/collection_proxies.h"
#include "proxies/python_module.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

namespace {

constexpr const char* module_name = "ling.cpython";

const class_registration classes{
    cpython_language_class,      cpython_function_class,       cpython_module_class,
    cpython_object_class,        cpython_proxy_iterable_class, cpython_proxy_iterator_class,
    cpython_proxy_mapping_class, cpython_proxy_sequence_class, cpython_proxy_set_class,
};

Result<None> register_properties() {
  return register_property(module_name, "doc", Property::constant("Interface to Python language."));
}

Result<None> register_functions() {
  const I_Callable_Generic functions[] = {
      make_function("evaluate", "code, scope", "Evaluates Python code.", &evaluate, {None()}),
      make_function("evaluate_expr", "code, scope", "Evaluates Python expression.", &evaluate_expr, {None()}),
      make_function("compile", "code, names", "Compiles Python code that is to be run more than once.", &compile,
                    {None()}),
      make_function("importAllModules", "", "Imports all standard python modules.", &import_all_modules),
      make_function("cpython_add_sys_path", "path", "Adds a path to sys.path once.", &cpython_add_sys_path),
  };
  for (const I_Callable_Generic& function : functions) {
    TRY(register_function(module_name, function.name(), function));
  }
  return None();
}

// Static initialisers run when the module file is loaded; the host runs the handlers afterwards.
[[maybe_unused]] const bool queued = [] {
  // The classes are there by then; for most hosts this is what starts the interpreter.
  internal::init_handlers_unsafe().push_back({InitLevel::Services, &install_logging_bridge});
  internal::add_init_handler(InitLevel::Properties, &register_properties);
  internal::add_init_handler(InitLevel::Functions, &register_functions);
  internal::add_lock_release([](void (*wait)(void*), void* argument) {
    const lock_given_away meanwhile;
    wait(argument);
  });
  return true;
}();

}  // namespace

}  // namespace ling::cpython
