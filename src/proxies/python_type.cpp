// Making classes of Python types, and the table of those that are made.
#include "proxies/python_type.h"

#include "ling/class_builder.h"
#include "ling/detail/immortal.h"
#include "ling/detail/try.h"
#include "ling/spinlock.h"
#include "proxies/public_members.h"
#include "proxies/python_method.h"
#include "python/call_python.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/interpreter.h"
#include "python/module_attribute.h"
#include "python/pending_exception.h"
#include "python/python_text.h"
#include "python/type_layout.h"

#include <memory>
#include <mutex>
#include <typeinfo>
#include <unordered_map>
#include <vector>

namespace ling::cpython {

namespace {

// --- members ---------------------------------------------------------------------------------------------------------

enum class member_kind { method, property, attribute };

constinit const module_attribute class_method("builtins", "classmethod");
constinit const module_attribute static_method("builtins", "staticmethod");

bool is_subtype(PyTypeObject* type, PyObject* wanted) noexcept {
  return wanted != nullptr && PyType_IsSubtype(type, reinterpret_cast<PyTypeObject*>(wanted)) != 0;
}

member_kind kind_of(PyObject* value) {
  if (PyType_IsSubtype(Py_TYPE(value), &PyProperty_Type) != 0) {
    return member_kind::property;
  }
  // A class in a class is a part of it, not something that it does. The two kinds of methods that are no functions
  // cannot be called in every version; what the type gives for them can.
  const bool is_wrapped_method =
      is_subtype(Py_TYPE(value), class_method.get()) || is_subtype(Py_TYPE(value), static_method.get());
  return !PyType_Check(value) && (is_wrapped_method || PyCallable_Check(value) != 0) ? member_kind::method
                                                                                     : member_kind::attribute;
}

Any read_type_attribute(PyObject* type, const String& name) {
  TRY(ensure_interpreter());
  const GilGuard gil;
  const PyObjectPtr python_name = to_python_locked(name);
  const PyObjectPtr value(python_name ? PyObject_GetAttr(type, python_name.get()) : nullptr);
  return value ? from_python_locked(value.get()) : Any(capture_error_or("Unable to read an attribute."));
}

// Read anew each time: the attribute may change, and may be the type itself. The getter may outlive the class.
Property attribute_property(PyObject* type, const String& name) {
  auto kept = std::make_shared<const PyObjectPtr>(PyObjectPtr::share(type));
  return Property(
      make_function(name, "", "", [kept = std::move(kept), name] { return read_type_attribute(kept->get(), name); }),
      String());
}

void add_member(object_value_class& of_class, PyObject* type, const String& name, PyObject* value) {
  switch (kind_of(value)) {
    case member_kind::method: {
      // As the type gives it: a class method is bound to the type, a function takes its object as the first argument.
      const PyObjectPtr python_name = to_python_locked(name);
      const PyObjectPtr method(python_name ? PyObject_GetAttr(type, python_name.get()) : nullptr);
      drop_exception();
      if (method && PyCallable_Check(method.get()) != 0) {
        of_class.add_class_method_unsafe(name, make_python_method(name, method.get(), receiver::none));
      }
      break;
    }
    case member_kind::property:
      if (const auto property = make_python_property(value, text_attribute(value, "__doc__"))) {
        of_class.add_property_unsafe(name, property.value());
      }
      break;
    case member_kind::attribute:
      of_class.add_class_property_unsafe(name, attribute_property(type, name));
      break;
  }
}

void add_members(object_value_class& of_class, PyObject* type) {
  for_each_public_member(type, [&](const String& name, PyObject* value) { add_member(of_class, type, name, value); });
}

// The tuples of the type itself, not its attributes `__bases__` and `__mro__`: a metaclass may answer for those with
// anything, even with a circle.
PyObjectPtr bases_of(PyObject* type) {
  return PyObjectPtr::share(layout_of(reinterpret_cast<PyTypeObject*>(type))->tp_bases);
}
PyObjectPtr resolution_order_of(PyObject* type) {
  return PyObjectPtr::share(layout_of(reinterpret_cast<PyTypeObject*>(type))->tp_mro);
}

void add_bases(object_value_class& of_class, PyObject* type) {
  const PyObjectPtr bases = bases_of(type);
  for (Py_ssize_t i = 0; i < PyTuple_Size(bases.get()); ++i) {
    if (const auto parent = Class_Generic::cast(from_python_locked(PyTuple_GetItem(bases.get(), i)))) {
      of_class.add_parent_unsafe(parent->object());
    }
  }
}

String class_name(PyObject* type) {
  const std::string_view full = name_of(reinterpret_cast<PyTypeObject*>(type));
  const std::size_t dot = full.rfind('.');
  return dot == std::string_view::npos ? full : full.substr(dot + 1);
}

// --- the table -------------------------------------------------------------------------------------------------------

// From a type to its class, as long as there is one. The class keeps the type and leaves the table before it lets go of
// it, so an address never means another type.
class class_table {
 public:
  // Empty when the type has no class.
  Any find(PyObject* type) noexcept {
    const std::lock_guard guard(lock_);
    const auto found = classes_.find(type);
    return found == classes_.end() ? Any() : living(*found->second);
  }
  // The class that stays: the one given, or one that came before it.
  Any insert(PyObject* type, const Any& made) {
    const std::lock_guard guard(lock_);
    auto& place = classes_.try_emplace(type, class_in(made)).first->second;
    Any first = living(*place);
    if (first.empty()) {
      place = class_in(made);  // in place of one that is about to leave
      first = made;
    }
    return first;
  }
  void remove(PyObject* type, const object_value_python_type& leaving) noexcept {
    const std::lock_guard guard(lock_);
    if (const auto found = classes_.find(type); found != classes_.end() && found->second == &leaving) {
      classes_.erase(found);
    }
  }

 private:
  static object_value_python_type* class_in(const Any& made) noexcept {
    return static_cast<object_value_python_type*>(made.get());
  }
  static Any living(object_value_python_type& of_class) noexcept {
    return of_class.try_retain() ? Any::adopt(&of_class) : Any();
  }

  spinlock lock_;
  std::unordered_map<PyObject*, object_value_python_type*> classes_;
};

class_table& known_types() {
  static internal::immortal<class_table> table;  // outlives all static objects
  return table.object;
}

Class_Generic made_class_of(PyObject* type) {
  Any found = known_types().find(type);
  if (found.empty()) {
    found = known_types().insert(type, make<object_value_python_type>(class_name(type), type));
  }
  return Class_Generic::unchecked(std::move(found));
}

// Makes the classes of all ancestors first, the most general one to begin with, so that a long chain of bases is no
// deep recursion.
std::vector<Class_Generic> make_ancestors(PyObject* type) {
  const PyObjectPtr order = resolution_order_of(type);
  std::vector<Class_Generic> ancestors;
  for (Py_ssize_t i = PyTuple_Size(order.get()) - 1; i > 0; --i) {
    PyObject* const ancestor = PyTuple_GetItem(order.get(), i);
    if (!builtin_class_of(ancestor)) {
      ancestors.push_back(made_class_of(ancestor));
    }
  }
  return ancestors;
}

// The types of the interpreter itself are there for ever, and so are their classes.
class_lifetime lifetime_of(PyObject* type) noexcept {
  constexpr unsigned long heap_type = 1ul << 9;
  return (flags_of(reinterpret_cast<PyTypeObject*>(type)) & heap_type) != 0 ? class_lifetime::counted
                                                                            : class_lifetime::process;
}

}  // namespace

object_value_python_type::object_value_python_type(String name, PyObjectPtr_Borrowed type)
    : object_value_class(std::move(name), lifetime_of(type.get())), type_(PyObjectPtr::share(type)) {
  add_bases(*this, python_type());
  // An object of the host's is no instance of this class, whatever its bases are.
  set_allocator_unsafe([](object_value_class& of_class) -> Any { return of_class.call({}); }, nullptr);
  set_doc_unsafe(text_attribute(python_type(), "__doc__"));
  add_members(*this, python_type());
}

object_value_python_type::~object_value_python_type() { known_types().remove(python_type(), *this); }

Any object_value_python_type::do_call(std::span<const Any> arguments) const { return do_call_named(arguments, {}); }

Any object_value_python_type::do_call_named(std::span<const Any> positional,
                                            std::span<const named_argument> named) const {
  TRY(ensure_interpreter());
  const GilGuard gil;
  return call_python(python_type(), positional, named);
}

Result<Signature> object_value_python_type::signature() const {
  TRY(ensure_interpreter());
  const GilGuard gil;
  return signature_of_python(python_type());
}

Result<Class_Generic> class_of_python_type(PyObjectPtr_Borrowed type) {
  if (!type || !PyType_Check(type.get())) {
    return Error("Not a type.");
  }
  if (const auto builtin = builtin_class_of(type)) {
    return builtin.value();
  }
  if (Any known = known_types().find(type.get()); !known.empty()) {
    return Class_Generic::unchecked(std::move(known));
  }
  const std::vector<Class_Generic> kept_meanwhile = make_ancestors(type.get());
  return made_class_of(type.get());
}

PyObject* python_type_behind(const object_value_class& of_class) noexcept {
  return typeid(of_class) == typeid(object_value_python_type)
             ? static_cast<const object_value_python_type&>(of_class).python_type()
             : nullptr;
}

}  // namespace ling::cpython
