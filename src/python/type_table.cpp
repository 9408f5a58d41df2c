// The table. A row is all there is to say of a type, but for how its values are converted.
#include "python/type_table.h"

#include "ling/boolean.h"
#include "ling/byte_array.h"
#include "ling/date_time.h"
#include "ling/decimal.h"
#include "ling/hash_map.h"
#include "ling/hash_set.h"
#include "ling/list.h"
#include "ling/none.h"
#include "ling/number.h"
#include "ling/tuple.h"
#include "python/module_attribute.h"

namespace ling::cpython {

namespace {

constinit const module_attribute date_type("datetime", "date");
constinit const module_attribute date_time_type("datetime", "datetime");
constinit const module_attribute time_type("datetime", "time");
constinit const module_attribute decimal_type("decimal", "Decimal");

const type_row rows[] = {
    {&Integer::getClass, &PyLong_Type, nullptr, direction::both, "int", {"int"}},
    {&String::getClass, &PyUnicode_Type, nullptr, direction::both, "str", {"str"}},
    {&Float::getClass, &PyFloat_Type, nullptr, direction::both, "float", {"float"}},
    {&Boolean::getClass, &PyBool_Type, nullptr, direction::both, "bool", {"bool"}},
    {&ByteArray::getClass, &PyBytes_Type, nullptr, direction::both, "bytes", {"bytes"}},
    {&ByteArray::getClass, &PyByteArray_Type, nullptr, direction::class_of_type, "", {"bytearray"}},
    {&ByteArray::getClass, &PyMemoryView_Type, nullptr, direction::class_of_type, "", {"memoryview"}},
    {&Class_Generic::getClass, &PyType_Type, nullptr, direction::class_of_type, ""},
    {&Tuple_Generic::getClass, &PyTuple_Type, nullptr, direction::type_of_class, "tuple", {"tuple"}},
    {&None::getClass, Py_TYPE(Py_None), nullptr, direction::type_of_class, "None", {"None", "NoneType"}},
    {&Undefined::getClass, Py_TYPE(Py_NotImplemented), nullptr, direction::type_of_class, ""},
    {&Date::getClass, nullptr, &date_type, direction::both, "date"},
    {&DateTime::getClass, nullptr, &date_time_type, direction::both, "datetime"},
    {&Time::getClass, nullptr, &time_type, direction::both, "time"},
    {&Decimal::getClass, nullptr, &decimal_type, direction::both, "Decimal"},
    {&HashMap_Generic::getClass, nullptr, nullptr, direction::names, "", {"dict", "Mapping", "MutableMapping"}},
    {&List_Generic::getClass, nullptr, nullptr, direction::names, "", {"list", "Sequence", "MutableSequence"}},
    {&HashSet_Generic::getClass, nullptr, nullptr, direction::names, "", {"set", "Set", "MutableSet"}},
    {&I_Callable_Generic::getClass, nullptr, nullptr, direction::names, "", {"Callable"}},
};

}  // namespace

std::span<const type_row> type_rows() noexcept { return rows; }

PyObject* type_of_row(const type_row& row) {
  return row.imported == nullptr ? reinterpret_cast<PyObject*>(row.built_in) : row.imported->get();
}

}  // namespace ling::cpython
