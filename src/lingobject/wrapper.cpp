// Making, recognising and ending wrappers.
#include "lingobject/wrapper.h"

#include "ling/reflection.h"
#include "lingobject/ling_object.h"
#include "python/interpreter.h"
#include "python/pending_exception.h"
#include "python/type_layout.h"

#include <memory>

namespace ling::cpython {

const char shared_type_name[] = ">LingObject";

namespace {

// The heap handles of wrappers that are gone, for those to come: wrappers are made and dropped with every method call.
// Guarded by the interpreter lock.
class handle_store {
 public:
  Any* put(Any value) {
    if (free_ == nullptr) {
      return new (new slot) Any(std::move(value));
    }
    slot* taken = std::exchange(free_, free_->next);
    --count_;
    return std::construct_at(&taken->value, std::move(value));
  }
  // Destroys the value last: its destructor may come back here.
  void take(Any* value) noexcept {
    const Any dying = std::move(*value);
    std::destroy_at(value);
    auto* freed = reinterpret_cast<slot*>(value);
    if (count_ == maximum) {
      delete freed;
      return;
    }
    freed->next = std::exchange(free_, freed);
    ++count_;
  }

 private:
  static constexpr int maximum = 1024;
  union slot {
    slot() noexcept : next(nullptr) {}
    ~slot() {}
    slot* next;
    Any value;
  };

  slot* free_ = nullptr;
  int count_ = 0;
};
constinit handle_store handles;

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
  if (type == nullptr) {
    return {};
  }
  auto* self = reinterpret_cast<wrapper_object*>(_PyObject_New(type));
  if (self == nullptr) {
    return {};
  }
  self->value = nullptr;
  PyObjectPtr wrapper(&self->ob_base);
  self->value = handles.put(std::move(value));
  return wrapper;
}

const Any* wrapped_value(PyObject* object) noexcept {
  const PyTypeObject* type = Py_TYPE(object);
  if (name_of(type) != shared_type_name) {
    const PyTypeObject* base = base_of(type);
    if (base == nullptr || name_of(base) != shared_type_name) {
      return nullptr;
    }
  }
  return reinterpret_cast<wrapper_object*>(object)->value;
}

void wrapper_dealloc(PyObject* self) noexcept {
  const gil_lock lock;
  Any* value = std::exchange(reinterpret_cast<wrapper_object*>(self)->value, nullptr);
  if (value != nullptr) {
    // A wrapper may die while an exception is on its way; what the host does when its value dies must not disturb that.
    if (PyErr_Occurred() == nullptr) [[likely]] {
      handles.take(value);
    } else {
      const pending_exception_aside aside;
      handles.take(value);
    }
  }
  PyObject_Free(self);
}

}  // namespace ling::cpython
