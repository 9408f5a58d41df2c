// Filling the dict that evaluated code has for its globals.
#include "language/global_namespace.h"

#include "ling/detail/try.h"
#include "ling/module.h"
#include "python/python_source.h"

#include <utility>
#include <vector>

namespace ling::cpython {

namespace {

using pairs = std::vector<std::pair<Any, Any>>;

void store_pairs(PyObject* dict, const pairs& entries) {
  for (const auto& [key, value] : entries) {
    if (const auto name = String::cast(key)) {
      store(dict, *name, value);
    }
  }
}

}  // namespace

Result<None> store_all(PyObject* dict, const Union<I_Map_Generic, None>& map) {
  if (map.has_value()) {
    pairs entries;
    TRY(map.value().pairs(entries));
    store_pairs(dict, entries);
  }
  return None();
}

void store_inlined_members(PyObject* dict) {
  for (const Module& module : modules()) {
    if (module.isInlined() && !is_hidden(module)) {
      store_pairs(dict, module.classes().copyPairs());
      store_pairs(dict, module.callables().copyPairs());
    }
  }
}

Result<None> store_globals(PyObject* dict, const Union<I_Map_Generic, None>& given) {
  if (given.has_value()) {
    return store_all(dict, given);
  }
  store_pairs(dict, globals().copyPairs());
  return None();
}

}  // namespace ling::cpython
