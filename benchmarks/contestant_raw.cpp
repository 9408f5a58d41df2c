// The limit: a type written by hand against the full C API.
#define PY_SSIZE_T_CLEAN
#include "contestants.h"

#include <Python.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>

namespace benchmarks {
namespace {

struct counter {
  std::int64_t value = large_number;
  std::shared_ptr<counter> child;
};

struct counter_object {
  PyObject_HEAD std::shared_ptr<counter> data;
};

counter& counter_of(PyObject* self) { return *reinterpret_cast<counter_object*>(self)->data; }

// --- counter ---------------------------------------------------------------------------------------------------------
PyObject* wrap(std::shared_ptr<counter> data);

void drop_counter(PyObject* self) {
  std::destroy_at(&reinterpret_cast<counter_object*>(self)->data);
  Py_TYPE(self)->tp_free(self);
}

PyObject* get_value(PyObject* self, void*) { return PyLong_FromLongLong(counter_of(self).value); }

int set_value(PyObject* self, PyObject* value, void*) {
  const long long number = PyLong_AsLongLong(value);
  if (number == -1 && PyErr_Occurred() != nullptr) {
    return -1;
  }
  counter_of(self).value = number;
  return 0;
}

PyObject* get_child(PyObject* self, void*) { return wrap(counter_of(self).child); }

PyObject* add(PyObject* self, PyObject* argument) {
  const long long number = PyLong_AsLongLong(argument);
  if (number == -1 && PyErr_Occurred() != nullptr) {
    return nullptr;
  }
  return PyLong_FromLongLong(counter_of(self).value + number);
}

// The argument may be given by its name.
PyObject* sum(PyObject* self, PyObject* const* arguments, Py_ssize_t count, PyObject* names) {
  const Py_ssize_t named = names != nullptr ? PyTuple_GET_SIZE(names) : 0;
  if (count + named != 1 ||
      (named == 1 && PyUnicode_CompareWithASCIIString(PyTuple_GET_ITEM(names, 0), "number") != 0)) {
    PyErr_SetString(PyExc_TypeError, "sum() takes one argument, number");
    return nullptr;
  }
  return add(self, arguments[0]);
}

PyObject* measure(PyObject* self, PyObject* argument) {
  Py_ssize_t length = 0;
  if (PyUnicode_AsUTF8AndSize(argument, &length) == nullptr) {
    return nullptr;
  }
  return PyLong_FromLongLong(counter_of(self).value + length);
}

PyObject* make_counter(PyTypeObject*, PyObject*, PyObject*) { return wrap(std::make_shared<counter>()); }

PyGetSetDef counter_properties[] = {
    {"value", get_value, set_value, nullptr, nullptr},
    {"child", get_child, nullptr,   nullptr, nullptr},
    {nullptr, nullptr,   nullptr,   nullptr, nullptr},
};
PyMethodDef counter_methods[] = {
    {"add",     add,                                                              METH_O,                        nullptr},
    {"sum",     reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(sum)), METH_FASTCALL | METH_KEYWORDS, nullptr},
    {"measure", measure,                                                          METH_O,                        nullptr},
    {nullptr,   nullptr,                                                          0,                             nullptr},
};

PyTypeObject make_type(const char* name, Py_ssize_t size, destructor drop) {
  PyTypeObject type = {};
  Py_SET_REFCNT(reinterpret_cast<PyObject*>(&type), 1);
  type.tp_name = name;
  type.tp_basicsize = size;
  type.tp_flags = Py_TPFLAGS_DEFAULT;
  type.tp_dealloc = drop;
  return type;
}

PyTypeObject counter_type = make_type("contestant_raw.Counter", sizeof(counter_object), drop_counter);

PyObject* wrap(std::shared_ptr<counter> data) {
  PyObject* self = counter_type.tp_alloc(&counter_type, 0);
  if (self != nullptr) {
    new (&reinterpret_cast<counter_object*>(self)->data) std::shared_ptr<counter>(std::move(data));
  }
  return self;
}

// --- numbers ---------------------------------------------------------------------------------------------------------
struct numbers_object {
  PyObject_HEAD std::shared_ptr<const std::vector<std::int64_t>> items;
  std::size_t next;  // for iterators
};

PyTypeObject numbers_type = make_type("contestant_raw.Numbers", sizeof(numbers_object), nullptr);
PyTypeObject iterator_type = make_type("contestant_raw.Iterator", sizeof(numbers_object), nullptr);

numbers_object& numbers_of(PyObject* self) { return *reinterpret_cast<numbers_object*>(self); }

void drop_numbers(PyObject* self) {
  std::destroy_at(&numbers_of(self).items);
  Py_TYPE(self)->tp_free(self);
}

PyObject* make_numbers(PyTypeObject& type, std::shared_ptr<const std::vector<std::int64_t>> items) {
  PyObject* self = type.tp_alloc(&type, 0);
  if (self != nullptr) {
    new (&numbers_of(self).items) std::shared_ptr<const std::vector<std::int64_t>>(std::move(items));
  }
  return self;
}

Py_ssize_t length(PyObject* self) { return static_cast<Py_ssize_t>(numbers_of(self).items->size()); }

PyObject* item(PyObject* self, Py_ssize_t index) {
  if (index < 0 || index >= length(self)) {
    PyErr_SetString(PyExc_IndexError, "index out of range");
    return nullptr;
  }
  return PyLong_FromLongLong((*numbers_of(self).items)[static_cast<std::size_t>(index)]);
}

PyObject* iterate(PyObject* self) { return make_numbers(iterator_type, numbers_of(self).items); }

PyObject* next(PyObject* self) {
  numbers_object& iterator = numbers_of(self);
  if (iterator.next == iterator.items->size()) {
    return nullptr;
  }
  return PyLong_FromLongLong((*iterator.items)[iterator.next++]);
}

PySequenceMethods numbers_sequence = {};

// --- the module ------------------------------------------------------------------------------------------------------
PyObject* function(PyObject*, PyObject* argument) {
  const long long number = PyLong_AsLongLong(argument);
  if (number == -1 && PyErr_Occurred() != nullptr) {
    return nullptr;
  }
  return PyLong_FromLongLong(number + 1);
}

PyMethodDef module_functions[] = {
    {"function", function, METH_O, nullptr},
    {nullptr,    nullptr,  0,      nullptr},
};
PyModuleDef module_definition = {PyModuleDef_HEAD_INIT,
                                 module_of(contestant::raw),
                                 nullptr,
                                 -1,
                                 module_functions,
                                 nullptr,
                                 nullptr,
                                 nullptr,
                                 nullptr};

PyObject* create_module() {
  counter_type.tp_getset = counter_properties;
  counter_type.tp_methods = counter_methods;
  counter_type.tp_new = make_counter;
  numbers_sequence.sq_length = length;
  numbers_sequence.sq_item = item;
  numbers_type.tp_as_sequence = &numbers_sequence;
  numbers_type.tp_iter = iterate;
  iterator_type.tp_iter = PyObject_SelfIter;
  iterator_type.tp_iternext = next;
  numbers_type.tp_dealloc = iterator_type.tp_dealloc = drop_numbers;
  if (PyType_Ready(&counter_type) < 0 || PyType_Ready(&numbers_type) < 0 || PyType_Ready(&iterator_type) < 0) {
    return nullptr;
  }
  PyObject* module = PyModule_Create(&module_definition);
  auto subject = std::make_shared<counter>();
  subject->child = std::make_shared<counter>();
  auto items = std::make_shared<const std::vector<std::int64_t>>(large_numbers());
  if (module == nullptr || PyModule_AddObject(module, "subject", wrap(std::move(subject))) < 0 ||
      PyModule_AddObject(module, "kind", Py_NewRef(reinterpret_cast<PyObject*>(&counter_type))) < 0 ||
      PyModule_AddObject(module, "numbers", make_numbers(numbers_type, std::move(items))) < 0) {
    return nullptr;
  }
  return module;
}

}  // namespace

void register_raw_module() {
  if (PyImport_AppendInittab(module_of(contestant::raw), create_module) < 0) {
    std::fprintf(stderr, "no memory for the module %s\n", module_of(contestant::raw));
    std::exit(1);
  }
}

}  // namespace benchmarks
