// The class of a type, and the type of a class.
#include "lingobject/ling_object.h"
#include "proxies/cpython_object.h"
#include "proxies/python_type.h"
#include "python/convert.h"
#include "python/pending_exception.h"
#include "python/type_table.h"

namespace ling::cpython {

namespace {

PyObjectPtr shared(PyTypeObject* type) noexcept { return PyObjectPtr::share(reinterpret_cast<PyObject*>(type)); }

// An interface has no values of its own, those who conform arrive as all sorts of objects; and a CPythonObject becomes
// whatever it stands for.
bool has_many_types(const Class_Generic& of_class) {
  return of_class.object().has_flag(class_flags::interface) || of_class == CPythonObject::getClass();
}

}  // namespace

Union<Class_Generic, None> builtin_class_of(PyObjectPtr_Borrowed type) {
  for (const type_row& row : type_rows()) {
    const bool answers = row.answers == direction::both || row.answers == direction::class_of_type;
    if (answers && type && type_of_row(row) == type.get()) {
      return row.get_class();
    }
  }
  return None();
}

PyObjectPtr python_type_of(const Type& type) {
  const auto of_class = type.toClass();
  if (!of_class || has_many_types(of_class.value())) {
    return shared(&PyBaseObject_Type);
  }
  for (const type_row& row : type_rows()) {
    const bool answers = row.answers == direction::both || row.answers == direction::type_of_class;
    PyObject* const found = answers && row.get_class() == of_class.value() ? type_of_row(row) : nullptr;
    if (found != nullptr) {
      return PyObjectPtr::share(found);
    }
  }
  if (PyObject* const presented = python_type_behind(of_class->object())) {
    return PyObjectPtr::share(presented);
  }
  if (PyTypeObject* wrapper_type = wrapper_type_of(of_class.value())) {
    return shared(wrapper_type);
  }
  tolerate_exception();
  return shared(&PyBaseObject_Type);
}

}  // namespace ling::cpython
