// Filling the dict that evaluated code has for its globals.
#include "language/global_namespace.h"

#include "bridge/convert.h"
#include "ling/detail/try.h"
#include "ling/module.h"
#include "ling/reflection.h"

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

bool is_hidden(const Module& module) {
  return compare_objects_value(module.importance(), Any(10)) == ordering_value::Equal;
}

}  // namespace

void store(PyObject* dict, const String& name, const Any& value) {
  // Not PyDict_SetItemString, which would end the name at a zero byte.
  const PyObjectPtr key(PyUnicode_FromStringAndSize(name.c_str(), static_cast<Py_ssize_t>(name.size())));
  const PyObjectPtr object = key ? to_python_locked(value) : PyObjectPtr();
  if (!object || PyDict_SetItem(dict, key.get(), object.get()) != 0) {
    PyErr_Clear();
  }
}

Result<None> store_all(PyObject* dict, const Union<I_Map_Generic, None>& map) {
  if (map.has_value()) {
    pairs entries;
    TRY(map.value().pairs(entries));
    store_pairs(dict, entries);
  }
  return None();
}

void store_modules(PyObject* dict) {
  for (const Module& module : modules()) {
    if (is_hidden(module)) {
      continue;
    }
    if (!module.name().contains(".")) {
      store(dict, module.name(), module);
    }
    if (module.isInlined()) {
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
