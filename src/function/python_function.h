// CPythonFunction: a Python callable as a callable of the host. Calls, named arguments and signature are those of the
// Python callable; on the way back it becomes the very same object again.
#pragma once

#include "ling/class_builder.h"
#include "python/python_callable.h"

namespace ling::cpython {

class object_value_python_function final : public object_value_python_callable {
 public:
  explicit object_value_python_function(PyObjectPtr function) noexcept
      : object_value_python_callable(std::move(function), true) {}

  object_value_class& object_class() const override;
  std::uintptr_t identity() const noexcept override { return reinterpret_cast<std::uintptr_t>(function()); }
  Any do_call(std::span<const Any> arguments) const override;
  // The names go to Python as they are; Python checks them.
  Any do_call_named(std::span<const Any> positional, std::span<const named_argument> named) const override;
  // __qualname__, else __name__; empty for a callable without a name.
  String name() const override;
  // Asked of Python on first need, then kept; what failed is asked again.
  Result<Signature> signature() const override;
  // The signature, if it was asked for; empty otherwise.
  Any cached_signature() const noexcept;
  // For defaults that have changed.
  void forget_signature() noexcept;

 private:
  mutable Any signature_;
};

class CPythonFunction : public Handle<CPythonFunction, object_value_python_function, I_Callable_Generic> {
  LING_HANDLE(CPythonFunction, object_value_python_function)
  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::Callable &&
           typeid(*object) == typeid(object_value_python_function);
  }
  static Type getType();
  static Class_Generic getClass();
};

extern const class_definition<CPythonFunction> cpython_function_class;

// The host's view of a callable, which it shares. An Error for null and for what cannot be called. The lock must be
// held.
Result<CPythonFunction> make_python_function(PyObjectPtr_Borrowed callable);

// A function from source text: a lambda expression, a `def` statement, or statements, which become the body of a
// function that has its arguments in the tuple `args`. Takes the lock itself.
Result<CPythonFunction> compile_function(const String& source);

}  // namespace ling::cpython
