// CPythonObject: the value that stands for a Python object. It holds the object and copies nothing out of it; what it
// is asked, it asks the object at that moment. On the way back it becomes the very same object again.
#pragma once

#include "ling/class_builder.h"
#include "ling/detail/try.h"
#include "python/interpreter.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// One strong reference, or null in an instance made without an object. Dies on any thread; the reference takes the
// interpreter lock to let go.
class object_value_python_object final : public object_value_instance {
 public:
  explicit object_value_python_object(object_value_class& of_class) : object_value_instance(of_class) {}
  object_value_python_object(object_value_class& of_class, PyObjectPtr object)
      : object_value_instance(of_class), object_(std::move(object)) {}

  // The object is one, whatever carries it.
  std::uintptr_t identity() const noexcept override {
    PyObject* const object = address();
    return object == nullptr ? object_value_instance::identity() : reinterpret_cast<std::uintptr_t>(object);
  }

  // A reference for the caller, null when there is no object. The lock must be held.
  PyObjectPtr object() const noexcept { return PyObjectPtr::share(address()); }
  // Only good for telling objects apart. No lock is needed.
  PyObject* address() const noexcept { return object_.get(); }

 private:
  const PyObjectPtr object_;  // never changes, so no spinlock
};

class CPythonObject : public Handle<CPythonObject, object_value_python_object> {
  LING_HANDLE(CPythonObject, object_value_python_object)

  // Null when there is no object. The lock must be held.
  PyObjectPtr python_object() const noexcept { return object().object(); }
  PyObject* address() const noexcept { return object().address(); }

  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::Instance &&
           typeid(*object) == typeid(object_value_python_object);
  }
  static Type getType();
  static Class_Generic getClass();
};

extern const class_definition<CPythonObject> cpython_object_class;

// A new instance of CPythonObject, or of a class derived from it, that shares the object. The lock must be held.
Any make_python_object(PyObjectPtr_Borrowed object);
Any make_python_object(const class_definition<CPythonObject>& of_class, PyObjectPtr_Borrowed object);
// The Python object of a CPythonObject; null for one without an object and for every other value. The lock must be
// held.
PyObjectPtr python_object_of(const Any& value) noexcept;

// For descriptions of classes derived from CPythonObject: instances made without an object.
Any allocate_python_object(object_value_class& of_class);

// Whether an answer is no answer but the end of asking: an interruption, or there is no memory or no interpreter any
// more.
bool ends_asking(const Any& answer);

// Runs what asks the Python object, under the lock. An Error when there is no object, or no interpreter any more.
Error error_null_object();
template <class F>
auto with_python_object(const CPythonObject& self, F&& ask) -> decltype(ask(PyObjectPtr_Borrowed(nullptr))) {
  // Looked at before the lock is taken: without an object the interpreter need not even have started.
  if (self.address() == nullptr) {
    return error_null_object();
  }
  TRY(ensure_interpreter());
  const GilGuard gil;
  return ask(PyObjectPtr_Borrowed(self.address()));  // whoever asks holds the proxy, and with it the object
}

}  // namespace ling::cpython
