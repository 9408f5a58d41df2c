// Host modules as Python modules.
#include "lingobject/module_export.h"

#include "ling/detail/immortal.h"
#include "ling/interfaces.h"
#include "ling/module.h"
#include "ling/reflection.h"
#include "lingobject/attribute_name.h"
#include "lingobject/slots.h"
#include "python/convert.h"
#include "python/pending_exception.h"

#include <algorithm>
#include <deque>
#include <string_view>

namespace ling::cpython {

namespace {

constexpr std::string_view root_module = "ling";

bool is_claimed(std::string_view name) noexcept {
  return name.starts_with(root_module) && (name.size() == root_module.size() || name[root_module.size()] == '.');
}

// A property of that name says more than the text that every module has.
String doc_of(const Module& module) {
  const Result<String> doc = result_unwrap_lazy(I_HasDoc::unchecked(module).doc());
  return doc ? doc.value() : module.doc();
}

// Definitions live for ever, as their modules may, and with them the texts that they point to. A module that is
// imported again has the one that it had, unless its texts have changed.
struct kept_definition {
  String name;
  String doc;
  PyModuleDef definition;
};
PyModuleDef& definition_of(const Module& module) {
  static internal::immortal<std::deque<kept_definition>> definitions;
  auto& all = definitions.object;
  const String name = module.name();
  const String doc = doc_of(module);
  const auto known = std::find_if(all.begin(), all.end(),
                                  [&](const kept_definition& each) { return each.name == name && each.doc == doc; });
  if (known != all.end()) {
    return known->definition;
  }
  kept_definition& made = all.emplace_back(kept_definition{name, doc, {}});
  made.definition.m_name = made.name.c_str();
  made.definition.m_doc = made.doc.c_str();
  made.definition.m_size = -1;
  return made.definition;
}

PyObjectPtr make_module(const Module& module) {
  // Python 3.12 and later take objects with a count this large for immortal, earlier ones never get down to zero.
  constexpr Py_ssize_t immortal_count = 0xFFFFFFFF;
  constexpr int api_version = 1013;
  PyModuleDef& definition = definition_of(module);
  Py_SET_REFCNT(reinterpret_cast<PyObject*>(&definition), immortal_count);
  return PyObjectPtr(PyModule_Create2(&definition, api_version));
}

// The pending exception as a warning that the member is missing. False when it is to be raised: it ends more than an
// import, memory has run out, or warnings are errors.
bool warn_left_out(const String& module, std::string_view member) {
  if (PyErr_ExceptionMatches(PyExc_Exception) == 0 || PyErr_ExceptionMatches(PyExc_MemoryError) != 0) {
    return false;
  }
  const auto exception = fetch_exception();
  return PyErr_WarnFormat(PyExc_RuntimeWarning, 1, "The member '%s' of the module '%s' is left out: %S",
                          String(member).c_str(), module.c_str(), exception->value.get()) == 0;
}

// Puts members into the module's dictionary under their names; later ones replace earlier ones.
class python_module_filler {
 public:
  python_module_filler(const Module& module, PyObject* dictionary) : module_(module), dictionary_(dictionary) {}

  bool add_all(const HashMap_Generic& members) {
    for (const auto& [name, member] : members.copyPairs()) {
      if (!add(String::unchecked(name).view(), member)) {
        return false;
      }
    }
    return true;
  }
  bool add_property(std::string_view name, const Any& property) {
    // Names with an at sign are notes that the host keeps for itself.
    if (name.empty() || name.front() == '@') {
      return true;
    }
    return add(name, Property::unchecked(property).read(module_));
  }

 private:
  bool add(std::string_view name, const Any& member) {
    const PyObjectPtr key = to_python_locked(Any(name));
    const PyObjectPtr value(key ? slot_result(member).to_object() : nullptr);
    if (!value) {
      return key && warn_left_out(module_.name(), name);
    }
    return PyDict_SetItem(dictionary_, key.get(), value.get()) == 0;
  }

  const Module& module_;
  PyObject* const dictionary_;
};

bool fill_module(const Module& module, PyObject* dictionary) {
  python_module_filler filler(module, dictionary);
  if (!filler.add_all(module.callables()) || !filler.add_all(module.classes())) {
    return false;
  }
  const object_value_class& every_module = Module::getClass().object();
  for (const class_member* member : class_of(module).definedProperties()) {
    const class_member* general = every_module.find_member(*member->name);
    const bool is_general = general != nullptr && !general->property.empty();
    if (!is_general && !filler.add_property(member->name->text, member->property)) {
      return false;
    }
  }
  for (const auto& [name, property] : own_properties_of(module).copyPairs()) {
    if (!filler.add_property(String::unchecked(name).view(), property)) {
      return false;
    }
  }
  return true;
}

}  // namespace

PyObjectPtr export_ling_module(const String& name) {
  const auto found = find_module(name);
  if (!found) {
    PyErr_SetString(PyExc_RuntimeError, "[export_ling_module] Unable to import the module.");
    return {};
  }
  PyObjectPtr module = make_module(found.value());
  if (!module || !fill_module(found.value(), PyModule_GetDict(module.get()))) {
    return {};
  }
  return module;
}

PyObject* has_ling_module(PyObject*, PyObject* name) {
  return guarded<PyObject*>(nullptr, [&]() -> PyObject* {
    if (!PyUnicode_Check(name)) {
      return PyBool_FromLong(0);
    }
    const utf8_text text(name);
    if (!text) {
      return nullptr;
    }
    return PyBool_FromLong(is_claimed(text.view()) && find_module(text.view()).has_value() ? 1 : 0);
  });
}

PyObject* create_ling_module(PyObject*, PyObject* name) {
  return guarded<PyObject*>(nullptr, [&]() -> PyObject* {
    if (!PyUnicode_Check(name)) {
      PyErr_SetString(PyExc_TypeError, "Ling module name must be a string.");
      return nullptr;
    }
    const utf8_text text(name);
    return text ? export_ling_module(text.view()).release() : nullptr;
  });
}

}  // namespace ling::cpython
