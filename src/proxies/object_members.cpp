// Members: reading, writing, describing and inserting.
#include "proxies/object_members.h"

#include "ling/detail/try.h"
#include "ling/reflection.h"
#include "proxies/method_call.h"
#include "proxies/python_method.h"
#include "python/attribute_text.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/pending_exception.h"
#include "python/python_text.h"

namespace ling::cpython {

namespace {

// What the runtime has under the name for the proxy: as a member of its own, inserted past the Python object, or of its
// class.
Union<Property, None> registered_property(const CPythonObject& self, const name_entry& name) {
  return raw_property_of(self, meta_property_untyped(name));
}
Union<I_Callable_Generic, None> registered_method(const CPythonObject& self, const name_entry& name) {
  return raw_method_of(self, meta_method_untyped(name));
}

// The attribute; null with an exception set. The name is converted as a whole, zero bytes included.
PyObjectPtr get_attribute(PyObjectPtr_Borrowed object, const name_entry& name) {
  const PyObjectPtr python_name = attribute_text(name);
  return PyObjectPtr(python_name ? PyObject_GetAttr(object.get(), python_name.get()) : nullptr);
}

Any read_object_attribute(const CPythonObject& self, const name_entry& name) {
  return with_python_object(self, [&](PyObjectPtr_Borrowed object) -> Any {
    const PyObjectPtr value = get_attribute(object, name);
    return value ? from_python_locked(value.get()) : Any(capture_error_or("Unable to read an attribute."));
  });
}

Result<None> write_attribute(const CPythonObject& self, const name_entry& name, const Any& value) {
  return with_python_object(self, [&](PyObjectPtr_Borrowed object) -> Result<None> {
    const PyObjectPtr python_name = attribute_text(name);
    const PyObjectPtr python_value = python_name ? to_python_locked(value) : PyObjectPtr();
    if (!python_value || PyObject_SetAttr(object.get(), python_name.get(), python_value.get()) != 0) {
      return capture_error_or("Unable to set an attribute.");
    }
    return None();
  });
}

// The member, or None for anything else. What kept the object from being asked stays an Error.
template <class T>
Union<T, None> found(const Any& answer) {
  return ends_asking(answer) ? Union<T, None>::unchecked(answer) : T::cast(answer);
}

// A callable attribute; None for every other attribute.
Union<I_Callable_Generic, None> callable_attribute(const CPythonObject& self, const name_entry& name) {
  const Any attribute = with_python_object(self, [&](PyObjectPtr_Borrowed object) -> Any {
    const PyObjectPtr value = get_attribute(object, name);
    if (!value) {
      tolerate_exception();
      return {};
    }
    return from_python_locked(value.get());
  });
  return found<I_Callable_Generic>(attribute);
}

Any describe_property(PyObjectPtr_Borrowed object, const name_entry& name) {
  const PyObjectPtr attribute = get_attribute(object, name);
  if (!attribute) {
    tolerate_exception();
    return {};
  }
  if (PyType_IsSubtype(Py_TYPE(attribute.get()), &PyProperty_Type) == 0) {
    return {};
  }
  return make_python_property(attribute.get(), String());
}

}  // namespace

// --- values ----------------------------------------------------------------------------------------------------------

Any object_property_value(const CPythonObject& self, const name_entry& name) {
  if (const auto property = registered_property(self, name)) {
    return property->read(self);
  }
  return read_object_attribute(self, name);
}

Any set_object_property(const CPythonObject& self, const name_entry& name, const Any& value) {
  if (const auto property = registered_property(self, name)) {
    return property->hasSetter()
               ? property->write(self, value)
               : Any(Error(String("The property '{}' is read-only for '{}'.").arg(name.text, display_text(self))));
  }
  return write_attribute(self, name, value);
}

// --- descriptions ----------------------------------------------------------------------------------------------------

Union<Property, None> object_property(const CPythonObject& self, const name_entry& name) {
  if (auto property = registered_property(self, name)) {
    return property;
  }
  const Any described =
      with_python_object(self, [&](PyObjectPtr_Borrowed object) -> Any { return describe_property(object, name); });
  return found<Property>(described);
}

Union<I_Callable_Generic, None> object_method(const CPythonObject& self, const name_entry& name) {
  auto method = registered_method(self, name);
  return method ? method : callable_attribute(self, name);
}

// --- inserting -------------------------------------------------------------------------------------------------------

Result<None> insert_object_property(const CPythonObject& self, const name_entry& name, const Property& property) {
  const Any* value = property.constantValue();
  if (value == nullptr) {
    return Error("Unable to insert non-value property to a python object, use 'raw_insert_property' instead.");
  }
  return write_attribute(self, name, *value);
}

Result<None> insert_object_method(const CPythonObject& self, const name_entry& name, const I_Callable_Generic& method) {
  const bool takes_receiver = !method.isIndependent() && method.parameterCount() != 0;
  return write_attribute(self, name, takes_receiver ? method.bindInstance(self) : method);
}

bool remove_object_member(const CPythonObject&, const name_entry&) { return false; }

// --- text ------------------------------------------------------------------------------------------------------------

Result<String> display_object(const CPythonObject& self) {
  return with_python_object(self, [&](PyObjectPtr_Borrowed object) -> Result<String> {
    const PyObjectPtr text(PyObject_Str(object.get()));
    if (!text) {
      return capture_error_or("Unable to get the text of a Python object.");
    }
    return text_of(text.get(), surrogates::escape);
  });
}

// --- hooks: called by the runtime, into which nothing is thrown ------------------------------------------------------

Any method_hook(const Any& instance, const name_entry& name) {
  return internal::guarded([&]() -> Any {
    if (auto registered = raw_method_of(instance, meta_method_untyped(name))) {
      return registered;
    }
    auto method = callable_attribute(CPythonObject::unchecked(instance), name);
    if (method) {
      method->setIndependent();  // Python's bound method has its receiver already
    }
    return method;
  });
}

Any getter_hook(const Any& instance, const name_entry& name) {
  return internal::guarded([&] { return read_object_attribute(CPythonObject::unchecked(instance), name); });
}

Any setter_hook(const Any& instance, const name_entry& name, const Any& value) {
  return internal::guarded([&]() -> Any { return write_attribute(CPythonObject::unchecked(instance), name, value); });
}

}  // namespace ling::cpython
