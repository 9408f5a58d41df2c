// Iterating over a wrapped value.
#include "ling/interfaces.h"
#include "ling/reflection.h"
#include "lingobject/slot_bodies.h"

namespace ling::cpython {

slot_result iterate(const Any& value, PyObject* wrapper) {
  if (value.has(object_traits::lazy)) [[unlikely]] {
    return iterate(internal::unwrap(value), wrapper);
  }
  if (I_Iterable_Generic::matches(value.get())) {
    // At once: an external iterator would be loaded anew for every item.
    return internal::unwrap(borrowed<I_Iterable_Generic>(value)->iter());
  }
  // Python iterates over an iterator by asking it for one.
  if (I_Iterator_Generic::matches(value.get())) {
    return PyObjectPtr::share(wrapper);
  }
  return slot_result(slot_exception::type_error,
                     String("'{}' object is not iterable.").arg(display_text(class_of(value))));
}

slot_result next_item(const Any& value) {
  if (value.has(object_traits::lazy)) [[unlikely]] {
    return next_item(internal::unwrap(value));
  }
  if (!I_Iterator_Generic::matches(value.get())) {
    return slot_result(slot_exception::type_error,
                       String("'{}' object is not an iterator.").arg(display_text(class_of(value))));
  }
  Any item = borrowed<I_Iterator_Generic>(value)->next();
  if (item.has(object_traits::lazy)) [[unlikely]] {
    item = internal::unwrap(item);
  }
  if (!is_error_result(item)) [[likely]] {
    return item;
  }
  if (StopIteration::matches(item.get())) {
    return slot_result::absent();
  }
  return runtime_error(Error::unchecked(std::move(item)));
}

}  // namespace ling::cpython
