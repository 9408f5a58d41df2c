// Python types as classes of the runtime: name, documentation, bases, methods and attributes. Calling such a class
// calls the type. There is one class per type, made on first need; it lives, and keeps its type alive, for the life of
// the process.
#pragma once

#include "extension/pyobject_ptr.h"
#include "ling/class.h"

namespace ling::cpython {

class object_value_python_type final : public object_value_class {
 public:
  // The members are read now, the values of attributes whenever they are asked for. The lock must be held.
  object_value_python_type(String name, PyObjectPtr_Borrowed type);

  // Makes an instance as Python does.
  Any call(std::span<const Any> arguments) const override;
  Any call_named(std::span<const Any> positional, std::span<const named_argument> named) const override;
  Result<Signature> signature() const override;

  // Borrowed; never null.
  PyObject* python_type() const noexcept { return type_; }

 private:
  PyObject* const type_;  // a reference that is never released
};

// The class for a type: the runtime's own for a built-in type that has one. The Error "Not a type." for every other
// object. The lock must be held.
Result<Class_Generic> class_of_python_type(PyObjectPtr_Borrowed type);
// The Python type behind a class; null for every class that is not one of these. Borrowed.
PyObject* python_type_behind(const object_value_class& of_class) noexcept;

}  // namespace ling::cpython
