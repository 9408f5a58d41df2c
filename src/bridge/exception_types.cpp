// Python exception classes that mirror classes of errors.
#include "bridge/exception_types.h"

#include "ling/reflection.h"
#include "python/error_bridge.h"
#include "python/pending_exception.h"

#include <atomic>
#include <memory>

namespace ling::cpython {

namespace {

// One pair of classes. Pairs are never removed and few, so a list that grows at its head serves both directions without
// a lock.
struct class_pair {
  object_value_class* error_class;
  PyObject* exception_type;
  const class_pair* next;
};

constinit std::atomic<const class_pair*> pairs{nullptr};

const class_pair* find_pair(const class_pair* head, const object_value_class& error_class) noexcept {
  while (head != nullptr && head->error_class != &error_class) {
    head = head->next;
  }
  return head;
}

PyObjectPtr make_exception_type(const Class_Generic& error_class) {
  const PyObjectPtr members(PyDict_New());
  if (!members || PyDict_SetItemString(members.get(), "ling", Py_None) != 0) {
    return {};
  }
  const String name = String("ling.{}").arg(qualname(error_class));
  return PyObjectPtr(PyErr_NewException(name.c_str(), PyExc_RuntimeError, members.get()));
}

// Making a class may run a garbage collection and so give the lock away: another thread may have been faster. Its class
// is kept and this one released.
PyObject* keep(object_value_class& error_class, PyObjectPtr exception_type) {
  auto pair = std::make_unique<class_pair>(class_pair{&error_class, exception_type.get(), nullptr});
  const class_pair* head = pairs.load(std::memory_order_acquire);
  do {
    if (const class_pair* found = find_pair(head, error_class)) {
      return found->exception_type;
    }
    pair->next = head;
  } while (!pairs.compare_exchange_weak(head, pair.get(), std::memory_order_acq_rel));
  pair.release();  // NOLINT(bugprone-unused-return-value): the list owns it now
  return exception_type.release();
}

}  // namespace

PyObject* exception_type_of(const Class_Generic& error_class) {
  if (error_class == StopIteration::getClass()) {
    return PyExc_StopIteration;
  }
  if (error_class == Error::getClass()) {
    return PyExc_RuntimeError;
  }
  if (const class_pair* found = find_pair(pairs.load(std::memory_order_acquire), error_class.object())) {
    return found->exception_type;
  }
  PyObjectPtr made = make_exception_type(error_class);
  if (!made) {
    tolerate_exception();
    return PyExc_RuntimeError;
  }
  return keep(error_class.object(), std::move(made));
}

object_value_class* error_class_of(PyTypeObject* exception_type) noexcept {
  const class_pair* pair = pairs.load(std::memory_order_acquire);
  while (pair != nullptr && pair->exception_type != reinterpret_cast<PyObject*>(exception_type)) {
    pair = pair->next;
  }
  return pair == nullptr ? nullptr : pair->error_class;
}

}  // namespace ling::cpython
