// Iterating over a wrapped value.
#include "ling/detail/iterator.h"
#include "ling/interfaces.h"
#include "ling/reflection.h"
#include "lingobject/slot_bodies.h"

namespace ling::cpython {

namespace {

// What an iterator has answered: an item, or that there is none.
slot_result outcome_of_next(Any item) {
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

}  // namespace

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
  // The iterators of the runtime's containers keep the items that they hand out.
  if (auto* iterator = internal::snapshot_iterator_in(value)) [[likely]] {
    const Any* item = iterator->advance();
    if (item == nullptr) {
      return slot_result::absent();
    }
    return item->has(object_traits::lazy | object_traits::error) ? outcome_of_next(*item)
                                                                 : slot_result(to_python_locked(*item));
  }
  if (value.has(object_traits::lazy)) [[unlikely]] {
    return next_item(internal::unwrap(value));
  }
  if (!I_Iterator_Generic::matches(value.get())) {
    return slot_result(slot_exception::type_error,
                       String("'{}' object is not an iterator.").arg(display_text(class_of(value))));
  }
  return outcome_of_next(borrowed<I_Iterator_Generic>(value)->next());
}

}  // namespace ling::cpython
