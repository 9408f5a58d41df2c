// Which class of the runtime and which built-in type of Python stand for each other.
#include "ling/boolean.h"
#include "ling/byte_array.h"
#include "ling/class.h"
#include "ling/date_time.h"
#include "ling/decimal.h"
#include "ling/none.h"
#include "ling/number.h"
#include "ling/tuple.h"
#include "lingobject/ling_object.h"
#include "proxies/cpython_object.h"
#include "proxies/python_type.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/module_attribute.h"
#include "python/pending_exception.h"

namespace ling::cpython {

namespace {

// Whether a row answers for the class of a type, the type of a class, or both.
enum class direction { class_of_type, type_of_class, both };

struct builtin_row {
  PyTypeObject* type;
  Class_Generic (*get_class)();
  direction answers;
};

Class_Generic python_object_class() { return cpython_object_class.required(); }

const builtin_row builtin_rows[] = {
    {&PyLong_Type,               &Integer::getClass,       direction::both         },
    {&PyUnicode_Type,            &String::getClass,        direction::both         },
    {&PyFloat_Type,              &Float::getClass,         direction::both         },
    {&PyBool_Type,               &Boolean::getClass,       direction::both         },
    {&PyBytes_Type,              &ByteArray::getClass,     direction::both         },
    {&PyByteArray_Type,          &ByteArray::getClass,     direction::class_of_type},
    {&PyMemoryView_Type,         &ByteArray::getClass,     direction::class_of_type},
    {&PyType_Type,               &Class_Generic::getClass, direction::class_of_type},
    {&PyTuple_Type,              &Tuple_Generic::getClass, direction::type_of_class},
    {Py_TYPE(Py_None),           &None::getClass,          direction::type_of_class},
    {Py_TYPE(Py_NotImplemented), &Undefined::getClass,     direction::type_of_class},
 // A CPythonObject becomes whatever it stands for.
    {&PyBaseObject_Type,         &python_object_class,     direction::type_of_class},
};

// Types that modules define; each row answers both ways. A type that cannot be imported has no row.
struct imported_row {
  module_attribute type;
  Class_Generic (*get_class)();
};
constinit const imported_row imported_rows[] = {
    {{"datetime", "date"},     &Date::getClass    },
    {{"datetime", "datetime"}, &DateTime::getClass},
    {{"datetime", "time"},     &Time::getClass    },
    {{"decimal", "Decimal"},   &Decimal::getClass },
};

PyObject* as_object(PyTypeObject* type) noexcept { return reinterpret_cast<PyObject*>(type); }
PyObjectPtr shared(PyTypeObject* type) noexcept { return PyObjectPtr::share(as_object(type)); }

}  // namespace

Union<Class_Generic, None> builtin_class_of(PyObjectPtr_Borrowed type) {
  for (const builtin_row& row : builtin_rows) {
    if (as_object(row.type) == type.get() && row.answers != direction::type_of_class) {
      return row.get_class();
    }
  }
  for (const imported_row& row : imported_rows) {
    if (type && row.type.get() == type.get()) {
      return row.get_class();
    }
  }
  return None();
}

PyObjectPtr python_type_of(const Type& type) {
  const auto of_class = type.toClass();
  // An interface has no values of its own: those who conform arrive as all sorts of objects.
  if (!of_class || of_class->object().has_flag(class_flags::interface)) {
    return shared(&PyBaseObject_Type);
  }
  for (const builtin_row& row : builtin_rows) {
    if (row.answers != direction::class_of_type && row.get_class() == of_class.value()) {
      return shared(row.type);
    }
  }
  for (const imported_row& row : imported_rows) {
    PyObject* const imported = row.get_class() == of_class.value() ? row.type.get() : nullptr;
    if (imported != nullptr) {
      return PyObjectPtr::share(imported);
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
