// Listing members.
#include "lingobject/dir_listing.h"

#include "ling/reflection.h"
#include "lingobject/slots.h"

namespace ling::cpython {

namespace {

void add_names(const std::vector<const class_member*>& members, std::vector<std::string>& names) {
  for (const class_member* member : members) {
    names.emplace_back(member->name->text);
  }
}

// Those that are attributes: Python keeps names that begin with "_" for itself.
std::vector<std::string> attribute_names(const Any& value) {
  std::vector<std::string> names = member_names(value);
  const auto of_class = Class_Generic::cast(value);
  if (of_class) {
    add_names(of_class->object().properties(), names);
    add_names(of_class->object().methods(), names);
  }
  std::erase_if(names, [](const std::string& name) { return name.starts_with('_'); });
  if (of_class) {
    for (const name_entry* expected : of_class->object().expected_members()) {
      names.emplace_back(expected->text);
    }
  }
  return names;
}

bool add_to_set(PyObject* set, std::string_view text) {
  const PyObjectPtr name(PyUnicode_FromStringAndSize(text.data(), static_cast<Py_ssize_t>(text.size())));
  return name && PySet_Add(set, name.get()) == 0;
}

}  // namespace

std::vector<std::string> member_names(const Any& value) {
  const object_value_class& of_class = class_of(value).object();
  std::vector<std::string> names;
  add_names(of_class.fields(), names);
  add_names(of_class.methods(), names);
  add_names(of_class.properties(), names);
  for (const HashMap_Generic& own : {own_methods_of(value), own_properties_of(value)}) {
    for (const auto& [name, member] : own.copyPairs()) {
      names.emplace_back(String::unchecked(name).view());
    }
  }
  return names;
}

PyObject* list_attributes(PyObject* self, PyObject*) noexcept {
  return guarded<PyObject*>(nullptr, [&]() -> PyObject* {
    const PyObjectPtr general(
        PyObject_CallMethod(reinterpret_cast<PyObject*>(&PyBaseObject_Type), "__dir__", "O", self));
    const PyObjectPtr names(general ? PySet_New(general.get()) : nullptr);
    if (!names) {
      return nullptr;
    }
    for (const std::string& name : attribute_names(value_in(self))) {
      if (!add_to_set(names.get(), name)) {
        return nullptr;
      }
    }
    return PySequence_List(names.get());
  });
}

}  // namespace ling::cpython
