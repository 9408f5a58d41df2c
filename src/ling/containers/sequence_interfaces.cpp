// The interfaces of iteration and of sequences: the runtime's containers directly, other values through their members.
#include "ling/algorithms/equality.h"
#include "ling/detail/container_errors.h"
#include "ling/detail/interface_call.h"
#include "ling/detail/iterator.h"
#include "ling/detail/try.h"
#include "ling/hash_set.h"
#include "ling/tuple.h"

namespace ling {

using internal::call_member;
using internal::done;
using internal::promised;

namespace {

object_value_list* as_list(const Any& value) noexcept {
  return value.type() == ObjectType::List ? static_cast<object_value_list*>(value.get()) : nullptr;
}
const object_value_tuple* as_tuple(const Any& value) noexcept {
  return value.type() == ObjectType::Tuple ? static_cast<const object_value_tuple*>(value.get()) : nullptr;
}

bool is_container(ObjectType kind) noexcept {
  return kind == ObjectType::List || kind == ObjectType::Tuple || kind == ObjectType::HashMap ||
         kind == ObjectType::HashSet;
}

Result<Boolean> found(const Result<Integer>& index) {
  const Integer position = TRY(index);
  return Boolean(position.value() >= 0);
}

// For classes that do not say what they contain.
Result<Boolean> contains_by_iteration(const I_Iterable_Generic& iterable, const Any& value) {
  const I_Iterator_Generic iterator = TRY(iterable.iter());
  for (;;) {
    const Any item = internal::unwrap(iterator.next());
    if (StopIteration::matches(item.get())) {
      return Boolean(false);
    }
    if (is_error_result(item)) {
      return Error::unchecked(item);
    }
    const Boolean equal = TRY(internal::are_equal(item, value));
    if (equal.value()) {
      return equal;
    }
  }
}

}  // namespace

// --- iteration -------------------------------------------------------------------------------------------------------

Any I_Iterator_Generic::next() const {
  if (auto* iterator = internal::snapshot_iterator_in(*this)) {
    return iterator->next();
  }
  return call_member(*this, members::next);
}

Result<I_Iterator_Generic> I_Iterable_Generic::iter() const {
  if (!is_container(type())) {
    return promised<I_Iterator_Generic>(call_member(*this, members::iter));
  }
  if (const auto* list = as_list(*this)) {
    return internal::make_iterator(list->share_items());
  }
  std::vector<Any> items;
  TRY(internal::collect(*this, items));
  return internal::make_iterator(std::move(items));
}

Result<Boolean> I_Iterable_Generic::contains(const Any& value) const {
  switch (type()) {
    case ObjectType::List:
      return found(as_list(*this)->index_of(value, 0));
    case ObjectType::Tuple:
      return found(as_tuple(*this)->index_of(value, 0));
    case ObjectType::HashMap:
      return static_cast<const object_value_hash_map*>(get())->contains(value);
    case ObjectType::HashSet:
      return static_cast<const object_value_hash_set*>(get())->contains(value);
    default:
      break;
  }
  if (!method_of(*this, members::contains)) {
    return contains_by_iteration(*this, value);
  }
  return promised<Boolean>(call_member(*this, members::contains, value));
}

Result<List_Generic> I_Iterable_Generic::toList() const {
  std::vector<Any> items;
  TRY(internal::collect(*this, items));
  return List_Generic(std::move(items));
}

// --- sequences -------------------------------------------------------------------------------------------------------

Result<Integer> I_Sequence_Generic::length() const {
  if (const auto* list = as_list(*this)) {
    return Integer(list->length());
  }
  if (const auto* tuple = as_tuple(*this)) {
    return Integer(tuple->length());
  }
  return promised<Integer>(propertyValue(members::property::__length__));
}

Result<Any> I_Sequence_Generic::at(std::int64_t index) const {
  if (const auto* list = as_list(*this)) {
    return promised<Any>(list->at(index));
  }
  if (const auto* tuple = as_tuple(*this)) {
    return promised<Any>(tuple->at_checked(index));
  }
  return promised<Any>(call_member(*this, members::at, index));
}

Any I_Sequence_Generic::atOr(std::int64_t index, const Any& otherwise) const {
  if (const auto* list = as_list(*this)) {
    return list->at_or(index, otherwise);
  }
  if (const auto* tuple = as_tuple(*this)) {
    return tuple->at_or(index, otherwise);
  }
  return call_member(*this, members::atOr, index, otherwise);
}

Result<Integer> I_Sequence_Generic::indexOf(const Any& value, std::int32_t from) const {
  if (const auto* list = as_list(*this)) {
    return list->index_of(value, from);
  }
  if (const auto* tuple = as_tuple(*this)) {
    return tuple->index_of(value, from);
  }
  return promised<Integer>(call_member(*this, members::indexOf, value, from));
}

Result<Any> I_Sequence_Generic::sliced(std::int64_t start, std::int64_t stop) const {
  if (const auto* list = as_list(*this)) {
    return promised<Any>(list->slice(start, stop));
  }
  if (const auto* tuple = as_tuple(*this)) {
    return promised<Any>(tuple->slice(start, stop));
  }
  return promised<Any>(call_member(*this, members::sliced, start, stop));
}

Type I_Sequence_Generic::elementsType() const {
  if (const auto* list = as_list(*this)) {
    return internal::type_or_untyped(list->object_class(), 0);
  }
  return as_tuple(*this) != nullptr ? Type::untyped() : internal::type_property(*this, members::property::elementsType);
}

// --- mutable sequences -----------------------------------------------------------------------------------------------

Result<None> I_MutableSequence_Generic::set(std::int64_t index, const Any& value) const {
  if (as_list(*this) != nullptr) {
    return done(List_Generic::unchecked(*this).set(index, value));
  }
  return done(call_member(*this, members::set, index, value));
}

Result<None> I_MutableSequence_Generic::append(const Any& value) const {
  if (as_list(*this) != nullptr) {
    return done(List_Generic::unchecked(*this).appendChecked(value));
  }
  return done(call_member(*this, members::append, value));
}

Result<None> I_MutableSequence_Generic::appendAt(std::int64_t index, const Any& value) const {
  if (auto* list = as_list(*this)) {
    return list->insert(index, value);
  }
  return done(call_member(*this, members::appendAt, index, value));
}

Result<None> I_MutableSequence_Generic::extend(const I_Iterable_Generic& values) const {
  if (auto* list = as_list(*this)) {
    return list->extend(values);
  }
  return done(call_member(*this, members::extend, values));
}

Result<None> I_MutableSequence_Generic::removeAt(std::int64_t index, std::int64_t count) const {
  if (auto* list = as_list(*this)) {
    return done(list->remove_at(index, count));
  }
  return done(call_member(*this, members::removeAt, index, count));
}

Result<Boolean> I_MutableSequence_Generic::removeOne(const Any& value) const {
  if (auto* list = as_list(*this)) {
    return list->remove_one(value);
  }
  return promised<Boolean>(call_member(*this, members::removeOne, value));
}

Result<Any> I_MutableSequence_Generic::pop(std::int64_t index) const {
  if (auto* list = as_list(*this)) {
    return promised<Any>(list->pop(index));
  }
  return promised<Any>(call_member(*this, members::pop, index));
}

Result<None> I_MutableSequence_Generic::clear() const {
  if (auto* list = as_list(*this)) {
    list->clear();
    return None();
  }
  return done(call_member(*this, members::clear));
}

}  // namespace ling
