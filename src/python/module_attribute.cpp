// Looking up an attribute of a Python module.
#include "python/module_attribute.h"

#include "python/pending_exception.h"

namespace ling::cpython {

PyObject* module_attribute::look_up() const {
  const PyObjectPtr module(PyImport_ImportModule(module_));
  PyObjectPtr attribute(module ? PyObject_GetAttrString(module.get(), name_) : nullptr);
  if (!attribute || attribute.get() == Py_None) {  // None is what programs put where something must not be used
    tolerate_exception();
    --attempts_left_;
    return nullptr;
  }
  return found_.publish(std::move(attribute));
}

}  // namespace ling::cpython
