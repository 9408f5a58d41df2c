// The wrapper types made for one class each, the table of them, and the choice of a type for a class.
#include "ling/detail/immortal.h"
#include "ling/module.h"
#include "ling/reflection.h"
#include "ling/spinlock.h"
#include "lingobject/ling_object.h"
#include "lingobject/python_signature.h"
#include "lingobject/slot_bodies.h"
#include "lingobject/slots.h"
#include "lingobject/type_objects.h"
#include "python/pending_exception.h"

#include <array>
#include <bit>
#include <mutex>
#include <span>
#include <unordered_map>
#include <vector>

namespace ling::cpython {

namespace {

// --- making ----------------------------------------------------------------------------------------------------------

// Text for a type object, which keeps it for ever.
const char* kept_text(std::string_view text) {
  char* kept = new char[text.size() + 1];
  kept[text.copy(kept, text.size())] = '\0';
  return kept;
}

bool is_exported(const class_member& member) {
  const std::string_view name = member.name->text;
  return !name.empty() && !name.starts_with('_');
}

// What Python shows of a method is for reading only: calls go through the attribute of the instance.
PyObject* refuse_call(PyObject*, PyObject*) noexcept {
  PyErr_SetString(PyExc_TypeError, "Methods of Ling objects are called on the object.");
  return nullptr;
}

std::vector<const class_member*> exported(std::vector<const class_member*> members) {
  std::erase_if(members, [](const class_member* each) { return !is_exported(*each); });
  return members;
}

PyMethodDef* make_methods(std::span<const class_member* const> methods) {
  auto* rows = new PyMethodDef[methods.size() + 1]();
  for (std::size_t i = 0; i < methods.size(); ++i) {
    rows[i] = {methods[i]->name->text.data(), refuse_call, METH_VARARGS, nullptr};
  }
  return rows;
}

PyGetSetDef* make_properties(const object_value_class& of_class) {
  std::vector<PyGetSetDef> rows;
  for (const class_member* member : exported(of_class.properties())) {
    const auto property = Property::unchecked(member->property);
    rows.push_back({member->name->text.data(), getter_slot<get_property>,
                    property.hasSetter() ? setter_slot<set_property> : nullptr, kept_text(property.doc().view()),
                    const_cast<name_entry*>(member->name)});
  }
  rows.push_back({});
  return std::copy(rows.begin(), rows.end(), new PyGetSetDef[rows.size()]) - rows.size();
}

// Runs no code of the host's and none of Python's. Null with an exception set.
PyTypeObject* make_class_type(object_value_class& of_class, std::span<const class_member* const> methods) {
  PyTypeObject* base = shared_callable_type();
  if (base == nullptr) {
    return nullptr;
  }
  auto* type = new type_object{};
  fill_common_slots(*type);
  fill_slots_of_class(*type, of_class);
  // Python takes what stands before the last dot for the name of a module.
  const String name = qualname(Class_Generic(of_class)).replaced(".", "`");
  type->tp_name = kept_text(String("ling~{}").arg(name).view());
  type->tp_base = base;
  type->tp_methods = make_methods(methods);
  type->tp_getset = make_properties(of_class);
  return PyType_Ready(type_of_layout(*type)) == 0 ? type_of_layout(*type) : nullptr;
}

// The texts of a type that is in use already. Making them runs code of the host and of Python, which may wrap instances
// of this very class: a default value that is shown, a doc that is computed.
void describe_class_type(type_object& type, const object_value_class& of_class,
                         std::span<const class_member* const> methods) {
  type.tp_doc = kept_text(of_class.doc().view());
  const PyObjectPtr doc(PyUnicode_FromString(type.tp_doc));
  if (!doc || PyDict_SetItemString(type.tp_dict, "__doc__", doc.get()) != 0) {
    drop_exception();
  }
  PyType_Modified(type_of_layout(type));
  for (std::size_t i = 0; i < methods.size(); ++i) {
    const String signature = signature_text(I_Callable_Generic::unchecked(methods[i]->method));
    type.tp_methods[i].ml_doc = kept_text(String("{}\n\n-").arg(signature).view());
  }
}

// --- the table -------------------------------------------------------------------------------------------------------

struct fnv1a_hash {
  std::size_t operator()(const object_value_class* of_class) const noexcept {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const unsigned char byte : std::bit_cast<std::array<unsigned char, 8>>(of_class)) {
      hash = (hash ^ byte) * 0x100000001b3;
    }
    return hash;
  }
};

// From a class to its type. Nothing is ever removed. Outlives all static objects, since wrappers are made until the
// process ends.
struct wrapper_types {
  spinlock lock;
  std::unordered_map<const object_value_class*, PyTypeObject*, fnv1a_hash> types{8};
};
wrapper_types& class_types() {
  static internal::immortal<wrapper_types> table;
  return table.object;
}

PyTypeObject* known_type_of(const object_value_class& of_class) {
  const std::lock_guard guard(class_types().lock);
  const auto found = class_types().types.find(&of_class);
  return found == class_types().types.end() ? nullptr : found->second;
}
// The type that stays: the one given, or one that came before it.
PyTypeObject* keep_type(const object_value_class& of_class, PyTypeObject* type) {
  const std::lock_guard guard(class_types().lock);
  return class_types().types.try_emplace(&of_class, type).first->second;
}

PyTypeObject* class_type_of(object_value_class& of_class) {
  if (PyTypeObject* made = known_type_of(of_class)) {
    return made;
  }
  // Made outside the lock; whoever is first decides.
  const std::vector<const class_member*> methods = exported(of_class.methods());
  PyTypeObject* const made = make_class_type(of_class, methods);
  PyTypeObject* const type = made == nullptr ? nullptr : keep_type(of_class, made);
  if (type != nullptr && type == made) {
    describe_class_type(*layout_of(type), of_class, methods);
  }
  return type;
}

// --- the choice ------------------------------------------------------------------------------------------------------

bool has_type_of_its_own(const object_value_class& of_class) {
  static const object_value_class& module_class = Module::getClass().object();
  const object_value_class* definition = of_class.generic_definition();
  return of_class.has_flag(class_flags::declared) ||
         (definition != nullptr && definition->has_flag(class_flags::declared)) || of_class.is_ancestor(module_class);
}

// The last choices, so that most wrappers are made without looking anything up. A class may come to be declared, or
// gain other flags, later. Guarded by the interpreter lock.
struct choice {
  const object_value_class* of_class = nullptr;
  std::uint64_t flags = 0;
  PyTypeObject* type = nullptr;
};
constinit std::array<choice, 256> recent_choices{};

choice& recent_choice_of(const object_value_class& of_class) noexcept {
  return recent_choices[(std::bit_cast<std::uintptr_t>(&of_class) >> 5) % recent_choices.size()];
}

}  // namespace

PyTypeObject* wrapper_type_of(const Class_Generic& of) {
  object_value_class& of_class = of.object();
  choice& recent = recent_choice_of(of_class);
  const std::uint64_t flags = of_class.flags();
  if (recent.of_class == &of_class && recent.flags == flags) [[likely]] {
    return recent.type;
  }
  PyTypeObject* type = has_type_of_its_own(of_class) ? class_type_of(of_class) : shared_type_of(flags);
  if (type != nullptr) {
    recent_choice_of(of_class) = {&of_class, flags, type};
  }
  return type;
}

}  // namespace ling::cpython
