// Looking up an attribute of a Python module.
#include "python/module_attribute.h"

#include "python/pending_exception.h"

#include <algorithm>

namespace ling::cpython {

PyObject* module_attribute::look_up() const {
  const PyObjectPtr module(PyImport_ImportModule(module_));
  PyObjectPtr attribute(module ? PyObject_GetAttrString(module.get(), name_) : nullptr);
  if (!attribute) {
    tolerate_exception();
    attempts_left_.store(std::max(attempts_left_.load(std::memory_order_relaxed) - 1, 0), std::memory_order_relaxed);
    return nullptr;
  }
  return found_.publish(std::move(attribute));
}

}  // namespace ling::cpython
