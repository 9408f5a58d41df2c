// The kept namespaces, and what makes them outdated.
#include "python/base_namespace.h"

#include "ling/detail/immortal.h"
#include "ling/module.h"
#include "ling/number.h"
#include "ling/reflection.h"
#include "python/python_source.h"

#include <algorithm>
#include <vector>

namespace ling::cpython {

namespace {

constexpr int hidden_importance = 10;

struct known_members {
  HashMap_Generic members;
  std::uint64_t version;
};

// A namespace as it was made, never handed out itself.
struct kept_namespace {
  PyObjectPtr dict;
  std::uint64_t modules_version = 0;
  std::vector<known_members> inlined;
  bool is_complete = true;  // nothing was left out that may be there the next time

  bool is_current() const noexcept {
    return dict && is_complete && modules_version == visible_modules_version() &&
           std::ranges::all_of(
               inlined, [](const known_members& each) { return each.members.object().version() == each.version; });
  }
};

void store_members(kept_namespace& into, const HashMap_Generic& members) {
  into.inlined.push_back({members, members.object().version()});
  for (const auto& [key, value] : members.copyPairs()) {
    if (const auto name = String::cast(key)) {
      into.is_complete = store(into.dict.get(), *name, value) && into.is_complete;
    }
  }
}

void store_module(kept_namespace& into, const Module& module, base_names names) {
  const bool is_named = !module.name().contains(".");
  const bool is_inlined = names == base_names::modules_and_inlined && module.isInlined();
  if (!is_named && !is_inlined) {
    return;  // as are most modules: Python's, below "python."
  }
  const Any importance = module.importance();
  // Any other value may say something else the next time.
  into.is_complete = into.is_complete && Integer::matches(importance.get());
  if (compare_objects_value(importance, Any(hidden_importance)) == ordering_value::Equal) {
    return;
  }
  if (is_named) {
    into.is_complete = store(into.dict.get(), module.name(), module) && into.is_complete;
  }
  if (is_inlined) {
    store_members(into, module.classes());
    store_members(into, module.callables());
  }
}

kept_namespace make_namespace(base_names names) {
  kept_namespace made;
  // Read first: what changes meanwhile makes it outdated.
  made.modules_version = visible_modules_version();
  made.dict = PyObjectPtr(PyDict_New());
  if (made.dict) {
    for (const Module& module : modules()) {
      store_module(made, module, names);
    }
  }
  return made;
}

}  // namespace

PyObjectPtr new_namespace(base_names names) {
  // Outlives all static objects. Guarded by the interpreter lock.
  static internal::immortal<kept_namespace[2]> all;
  kept_namespace& kept = all.object[static_cast<int>(names)];
  if (!kept.is_current()) {
    // Making one may run code of hosts, and of Python, that comes here. The former one dies when the new one stands.
    kept_namespace made = make_namespace(names);
    if (!made.dict) {
      return {};
    }
    std::swap(kept, made);
  }
  // Copying takes memory, at which objects may end whose finalisers come here and replace the kept one.
  const PyObjectPtr held = PyObjectPtr::share(kept.dict.get());
  return PyObjectPtr(PyDict_Copy(held.get()));
}

}  // namespace ling::cpython
