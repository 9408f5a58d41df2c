// What all callables of Python are in the host, whatever class they have there.
#pragma once

#include "ling/callable.h"
#include "ling/signature.h"
#include "ling/spinlock.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// Keeps the callable. May be used, and die, on any thread; what needs Python takes the lock itself.
class object_value_python_callable : public object_value_receiving_callable {
 public:
  String doc() const override;
  // Asked of Python each time.
  Result<Signature> signature() const override;
  Any declaring_context() const override;
  void set_declaring_context(const Any& context) override;

  // Borrowed; never null.
  PyObject* function() const noexcept { return function_.get(); }

 protected:
  object_value_python_callable(PyObjectPtr function, bool independent) noexcept
      : object_value_receiving_callable(independent), function_(std::move(function)) {}

  mutable spinlock lock_;  // guards the context, and what derived classes keep

 private:
  const PyObjectPtr function_;
  Any declaring_context_;
};

}  // namespace ling::cpython
