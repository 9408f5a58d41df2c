// Making modules of Python modules.
#include "proxies/python_module.h"

#include "ling/detail/try.h"
#include "proxies/public_members.h"
#include "proxies/python_type.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/python_modules.h"
#include "python/python_text.h"
#include "python/silent_warnings.h"

#include <typeinfo>

namespace ling::cpython {

constinit const class_definition<CPythonModule> cpython_module_class(
    "CPythonModule", [](class_builder<CPythonModule>& c) {
      c.module("ling.cpython").doc("Class to export a python module.").parent(Module::getClass());
    });

object_value_python_module::object_value_python_module(const String& name, PyObjectPtr_Borrowed module)
    : object_value_module(cpython_module_class.required(), name), module_(PyObjectPtr::share(module).release()) {}

bool CPythonModule::matches(const object_value* object) noexcept {
  return object != nullptr && object->type() == ObjectType::Instance &&
         typeid(*object) == typeid(object_value_python_module);
}
Type CPythonModule::getType() { return Type::of(getClass()); }
Class_Generic CPythonModule::getClass() { return cpython_module_class.required(); }

namespace {

// Fills a module whose table nobody else sees yet.
class host_module_filler {
 public:
  host_module_filler(const CPythonModule& module, const String& python_name)
      : module_(module), python_name_(python_name) {}

  void add(const String& name, PyObject* object) {
    const Any value = from_python_locked(object);
    internal::tolerate_error(value);
    if (Class_Generic::matches(value.get())) {
      add_class(name, Class_Generic::unchecked(value));
    } else if (PyCallable_Check(object) != 0 && I_Callable_Generic::matches(value.get())) {
      module_.addCallable(name, I_Callable_Generic::unchecked(value));
    } else {
      module_.object().object_class().add_class_property_unsafe(name, Property::constant(value));
    }
  }

 private:
  // Not `addClass`: a Python module may hold a class under any name, and under several.
  void add_class(const String& name, const Class_Generic& of_class) const {
    if (is_none(of_class.declaringContext()) || is_defined_here(of_class)) {
      of_class.object().set_declaring_context(module_);
    }
    module_.object().classes().set(name, of_class);
    module_.object().object_class().add_class_property_unsafe(name, Property::constant(of_class, of_class.doc()));
  }
  // A module that imported the class may have been exported before.
  bool is_defined_here(const Class_Generic& of_class) const {
    PyObject* const type = python_type_behind(of_class.object());
    return type != nullptr && text_attribute(type, "__module__") == python_name_;
  }

  const CPythonModule& module_;
  const String& python_name_;
};

Result<CPythonModule> make_python_module(const String& name, const String& python_name, PyObjectPtr_Borrowed object) {
  const auto module = CPythonModule::unchecked(make<object_value_python_module>(name, object));
  module.setDoc(text_attribute(object.get(), "__doc__"));
  host_module_filler filler(module, python_name);
  for_each_public_member(object.get(), [&](const String& member, PyObject* value) { filler.add(member, value); });
  return module;
}

Result<Module> export_guarded(const String& name, const String& python_name) {
  const silent_warnings silence;
  const PyObjectPtr text = to_python_locked(python_name);
  const PyObjectPtr object(text ? PyImport_Import(text.get()) : nullptr);
  if (!object) {
    return capture_error_or("Unable to import the module.");
  }
  if (auto known = find_module(name); CPythonModule::matches(known.get())) {
    return known.value();
  }
  const CPythonModule module = TRY(make_python_module(name, python_name, object.get()));
  // Another thread may have been quicker; then its module is the module.
  const Result<None> inserted = insert_module(module);
  auto present = find_module(name);
  return CPythonModule::matches(present.get()) ? Result<Module>(present.value()) : Result<Module>(inserted.error());
}

}  // namespace

Result<Module> export_python_module(const String& name, const String& python_name) {
  return internal::guarded([&] { return export_guarded(name, python_name); });
}

}  // namespace ling::cpython
