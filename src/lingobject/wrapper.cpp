// Making, recognising and ending wrappers.
#include "lingobject/wrapper.h"

#include "ling/reflection.h"
#include "lingobject/ling_object.h"
#include "lingobject/slot_bodies.h"
#include "python/interpreter.h"
#include "python/pending_exception.h"

#include <cassert>
#include <memory>
#include <new>

namespace ling::cpython {

const char shared_type_name[] = ">LingObject";

namespace {

// Memory of things of one size that are gone, for those to come: wrappers are made and dropped all the time, and
// methods with every call. Guarded by the interpreter lock.
class spare_memory {
 public:
  // Null when there is none.
  void* take() noexcept {
    if (first_ == nullptr) {
      return nullptr;
    }
    --count_;
    return std::exchange(first_, first_->next);
  }
  // False when there is enough: the memory is still the caller's.
  bool keep(void* memory) noexcept {
    if (count_ == maximum) {
      return false;
    }
    first_ = new (memory) spare{first_};
    ++count_;
    return true;
  }

 private:
  static constexpr int maximum = 1024;
  struct spare {
    spare* next;
  };

  spare* first_ = nullptr;
  int count_ = 0;
};

constinit spare_memory spare_handles;
constinit spare_memory spare_callables;

Any* new_handle(Any value) {
  void* const spare = spare_handles.take();
  return new (spare != nullptr ? spare : ::operator new(sizeof(Any))) Any(std::move(value));
}

// Destroys the value last: its destructor may come back here.
void delete_handle(Any* handle) noexcept {
  const Any dying = std::move(*handle);
  std::destroy_at(handle);
  if (!spare_handles.keep(handle)) {
    ::operator delete(handle);
  }
}

bool is_callable_type(const PyTypeObject* type) noexcept { return (flags_of(type) & has_vectorcall) != 0; }

callable_wrapper_object& callable_wrapper(PyObject* object) noexcept {
  return *reinterpret_cast<callable_wrapper_object*>(object);
}

// Without a value; null with an exception set when there is no memory.
PyObject* new_callable_wrapper(PyTypeObject* type) noexcept {
  void* const spare = spare_callables.take();
  void* const memory = spare != nullptr ? spare : PyObject_Malloc(sizeof(callable_wrapper_object));
  PyObject* const self = PyObject_Init(static_cast<PyObject*>(memory), type);
  if (self != nullptr) {
    callable_wrapper_object& wrapper = callable_wrapper(self);
    wrapper.wrapper.value = nullptr;
    wrapper.vectorcall = call_by_vector;
    wrapper.method = nullptr;
    wrapper.receiver = nullptr;
  }
  return self;
}

PyObject* new_wrapper(PyTypeObject* type) noexcept {
  if (is_callable_type(type)) {
    return new_callable_wrapper(type);
  }
  PyObject* const self = _PyObject_New(type);
  if (self != nullptr) {
    reinterpret_cast<wrapper_object*>(self)->value = nullptr;
  }
  return self;
}

// The interpreter holds the lock when it lets an object die.
void drop_value(PyObject* self) noexcept {
  Any* value = std::exchange(reinterpret_cast<wrapper_object*>(self)->value, nullptr);
  if (value == nullptr) {
    return;
  }
  // A wrapper may die while an exception is on its way; what the host does when its value dies must not disturb that.
  if (PyErr_Occurred() == nullptr) [[likely]] {
    delete_handle(value);
  } else {
    const pending_exception_aside aside;
    delete_handle(value);
  }
}

}  // namespace

PyObjectPtr wrap(const Any& value) {
  if (ensure_interpreter().is_error()) {
    return {};
  }
  const gil_lock lock;
  return wrap_locked(value);
}

PyObjectPtr wrap_locked(Any value) {
  PyTypeObject* type = wrapper_type_of(class_of(value));
  PyObjectPtr wrapper(type == nullptr ? nullptr : new_wrapper(type));
  if (wrapper) {
    reinterpret_cast<wrapper_object*>(wrapper.get())->value = new_handle(std::move(value));
  }
  return wrapper;
}

PyObjectPtr wrap_bound(const Any& method, PyObject* receiver) {
  // The class of all methods that have their receiver; the first one tells.
  static constinit object_value_class* bound_class = nullptr;
  if (bound_class == nullptr || method.type() == ObjectType::Multimethod) [[unlikely]] {
    const Any bound = borrowed<I_Callable_Generic>(method)->bindInstance(value_in(receiver));
    bound_class = &bound.get()->object_class();
    return wrap_locked(bound);
  }
  PyTypeObject* const type = wrapper_type_of(*bound_class);
  assert(type == nullptr || is_callable_type(type));
  PyObjectPtr wrapper(type == nullptr ? nullptr : new_callable_wrapper(type));
  if (wrapper) {
    callable_wrapper_object& self = callable_wrapper(wrapper.get());
    self.method = static_cast<const object_value_callable*>(method.get());
    Py_INCREF(receiver);
    self.receiver = receiver;
  }
  return wrapper;
}

const Any& make_bound_value(PyObject* method) {
  callable_wrapper_object& self = callable_wrapper(method);
  const auto callable = I_Callable_Generic::unchecked(Any::share(self.method));
  Any* const value = new_handle(callable.bindInstance(value_in(self.receiver)));
  self.wrapper.value = value;
  self.method = nullptr;
  const PyObjectPtr receiver(std::exchange(self.receiver, nullptr));
  return *value;
}

const Any* wrapped_value(PyObject* object) {
  const PyTypeObject* type = Py_TYPE(object);
  if (name_of(type) != shared_type_name) {
    const PyTypeObject* base = base_of(type);
    if (base == nullptr || name_of(base) != shared_type_name) {
      return nullptr;
    }
  }
  const Any* value = reinterpret_cast<wrapper_object*>(object)->value;
  if (value == nullptr && is_callable_type(type) && callable_wrapper(object).method != nullptr) {
    value = &make_bound_value(object);
  }
  return value;
}

void wrapper_dealloc(PyObject* self) noexcept {
  drop_value(self);
  PyObject_Free(self);
}

void callable_wrapper_dealloc(PyObject* self) noexcept {
  drop_value(self);
  PyObject* const receiver = callable_wrapper(self).receiver;
  if (!spare_callables.keep(self)) {
    PyObject_Free(self);
  }
  Py_XDECREF(receiver);  // last: its end may come back here
}

}  // namespace ling::cpython
