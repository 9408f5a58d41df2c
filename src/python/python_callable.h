// What all callables of Python are in the host, whatever class they have there.
#pragma once

#include "ling/callable.h"
#include "ling/signature.h"
#include "ling/spinlock.h"
#include "python/pyobject_ptr.h"

#include <atomic>

namespace ling::cpython {

// Keeps the callable. May be used, and die, on any thread; what needs Python takes the lock itself.
class object_value_python_callable : public object_value_callable {
 public:
  ObjectType type() const noexcept override { return ObjectType::Callable; }
  String doc() const override;
  // Asked of Python each time.
  Result<Signature> signature() const override;
  bool is_independent() const noexcept override { return independent_.load(std::memory_order_relaxed); }
  void set_independent(bool independent) noexcept override {
    independent_.store(independent, std::memory_order_relaxed);
  }
  Any declaring_context() const override;
  void set_declaring_context(const Any& context) override;

  // Borrowed; never null.
  PyObject* function() const noexcept { return function_.get(); }

 protected:
  object_value_python_callable(PyObjectPtr function, bool independent) noexcept
      : function_(std::move(function)), independent_(independent) {}

  mutable spinlock lock_;  // guards the context, and what derived classes keep

 private:
  const PyObjectPtr function_;
  std::atomic<bool> independent_;
  Any declaring_context_;
};

}  // namespace ling::cpython
