// Looking up an attribute of a Python module.
#include "python/module_attribute.h"

#include "python/pending_exception.h"

namespace ling::cpython {

PyObject* module_attribute::look_up() const {
  const PyObjectPtr module(PyImport_ImportModule(module_));
  PyObjectPtr attribute(module ? PyObject_GetAttrString(module.get(), name_) : nullptr);
  if (!attribute) {
    tolerate_exception();
    return nullptr;
  }
  PyObject* kept = nullptr;
  if (!found_.compare_exchange_strong(kept, attribute.get(), std::memory_order_acq_rel)) {
    return kept;
  }
  return attribute.release();
}

}  // namespace ling::cpython
