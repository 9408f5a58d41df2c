// The members of a Python object as the runtime asks for them. Each function takes the lock itself.
#pragma once

#include "ling/hash_map.h"
#include "ling/property.h"
#include "proxies/cpython_object.h"

namespace ling::cpython {

// Members that the class registers, and those that the runtime inserted into the proxy past the object
// (`raw_insert_property`), win over the attributes of the object.
Any object_property_value(const CPythonObject& self, const name_entry& name);
Any set_object_property(const CPythonObject& self, const name_entry& name, const Any& value);
// A `property` that is an attribute of the object, as one of a class is; None for every other attribute. Where the
// object could not be asked, because of an interruption say, the union holds the Error, here and below.
Union<Property, None> object_property(const CPythonObject& self, const name_entry& name);
// A callable attribute; None for every other attribute.
Union<I_Callable_Generic, None> object_method(const CPythonObject& self, const name_entry& name);

// An attribute with the value of a constant property. Other properties have no counterpart in the object.
Result<None> insert_object_property(const CPythonObject& self, const name_entry& name, const Property& property);
// An attribute that calls the method with the object as its receiver, if it takes one.
Result<None> insert_object_method(const CPythonObject& self, const name_entry& name, const I_Callable_Generic& method);
// Nothing is ever removed.
bool remove_object_member(const CPythonObject& self, const name_entry& name);

Result<String> display_object(const CPythonObject& self);

// The hooks of the class, for names that it does not register.
Any method_hook(const Any& instance, const name_entry& name);
Any getter_hook(const Any& instance, const name_entry& name);
Any setter_hook(const Any& instance, const name_entry& name, const Any& value);
// For exactly a Python iterator, whose items are taken under one lock. Defined in iteration_proxies.cpp.
Any drain_hook(const Any& iterator, std::vector<Any>& items);

}  // namespace ling::cpython
