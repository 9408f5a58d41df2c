// Python types as classes of the runtime: name, documentation, bases, methods and attributes. Calling such a class
// calls the type. A type has one class at a time, made on first need. It keeps its type alive, and ends with its last
// handle: a type that is asked for again then gets a class like it.
#pragma once

#include "ling/class.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

class object_value_python_type final : public object_value_class {
 public:
  // The members are read now, the values of attributes whenever they are asked for. The lock must be held.
  object_value_python_type(String name, PyObjectPtr_Borrowed type);
  ~object_value_python_type() override;

  // Makes an instance as Python does.
  Any do_call(std::span<const Any> arguments) const override;
  Any do_call_named(std::span<const Any> positional, std::span<const named_argument> named) const override;
  Result<Signature> signature() const override;

  std::uintptr_t identity() const noexcept override { return reinterpret_cast<std::uintptr_t>(type_.get()); }

  // Borrowed; never null.
  PyObject* python_type() const noexcept { return type_.get(); }

 private:
  const PyObjectPtr type_;
};

// The class for a type: the runtime's own for a built-in type that has one. The Error "Not a type." for every other
// object. The lock must be held.
Result<Class_Generic> class_of_python_type(PyObjectPtr_Borrowed type);
// The Python type behind a class; null for every class that is not one of these. Borrowed.
PyObject* python_type_behind(const object_value_class& of_class) noexcept;

}  // namespace ling::cpython
