// Equality and hashes of Python objects.
#include "python/python_equality.h"

#include "function/python_function.h"
#include "ling/none.h"
#include "proxies/cpython_object.h"
#include "proxies/python_type.h"
#include "python/error_bridge.h"

namespace ling::cpython {

namespace {

// What comes home as the very Python object; null for every other value.
PyObjectPtr object_behind(const Any& value) noexcept {
  if (CPythonFunction::matches(value.get())) {
    return PyObjectPtr::share(static_cast<const object_value_python_function&>(*value.get()).function());
  }
  if (value.type() == ObjectType::Class) {
    return PyObjectPtr::share(python_type_behind(static_cast<const object_value_class&>(*value.get())));
  }
  return python_object_of(value);
}

}  // namespace

Any equals_python(PyObjectPtr_Borrowed object, const Any& other) {
  const PyObjectPtr other_object = object_behind(other);
  if (!other_object) {
    return Undefined();
  }
  const int equal = PyObject_RichCompareBool(object.get(), other_object.get(), Py_EQ);
  return equal < 0 ? Any(capture_error_or("Unable to compare Python objects.")) : Any(equal != 0);
}

Any hash_of_python(PyObjectPtr_Borrowed object) {
  const Py_hash_t hash = PyObject_Hash(object.get());
  return hash == -1 ? Any(capture_error_or("Unable to hash a Python object.")) : Any(std::int64_t{hash});
}

}  // namespace ling::cpython
