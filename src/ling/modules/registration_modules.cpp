// What registration puts into modules.
#include "ling/detail/try.h"
#include "ling/module.h"
#include "ling/none.h"
#include "ling/registration.h"

namespace ling {

Result<None> register_function(const String& module, const String& name, const I_Callable_Generic& callable) {
  const Module owner = TRY(get_module(module));
  owner.addCallable(name, callable);
  return None();
}

Result<None> register_property(const String& module, const String& name, const Property& property) {
  const Module owner = TRY(get_module(module));
  owner.addProperty(name, property);
  return None();
}

Result<None> register_class(const String& module, const Class_Generic& of_class) {
  const Module owner = TRY(get_module(module));
  owner.addClass(of_class);
  return None();
}

}  // namespace ling
