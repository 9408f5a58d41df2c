// Slices by the operations that every sequence has.
#include "lingobject/slices.h"

#include "ling/detail/try.h"
#include "ling/interfaces.h"
#include "lingobject/host_call.h"

#include <algorithm>
#include <vector>

namespace ling::cpython {

namespace {

struct selection {
  Py_ssize_t start = 0;
  Py_ssize_t stop = 0;
  Py_ssize_t step = 1;
  Py_ssize_t count = 0;

  // False with an exception set.
  bool unpack(PyObject* slice) noexcept { return PySlice_Unpack(slice, &start, &stop, &step) == 0; }
  // Clamps to the length that the sequence has now.
  Result<None> clamp(const I_Sequence_Generic& sequence) {
    const Integer length = TRY(sequence.length());
    count = PySlice_AdjustIndices(static_cast<Py_ssize_t>(length.value()), &start, &stop, step);
    return None();
  }
  std::int64_t at(Py_ssize_t i) const noexcept { return start + i * step; }
  bool has(Py_ssize_t index) const noexcept {
    const Py_ssize_t distance = index - start;
    return distance % step == 0 && distance / step >= 0 && distance / step < count;
  }
};

Any new_list(const I_Sequence_Generic& sequence, std::vector<Any> items) {
  const Type elements[] = {sequence.elementsType()};
  if (elements[0] == Type::untyped()) {
    return List_Generic(std::move(items));
  }
  return make<object_value_list>(&generic_instance(List_Generic::getClass(), elements).object(), std::move(items));
}

Any read(const I_Sequence_Generic& sequence, selection selected) {
  TRY(selected.clamp(sequence));
  if (selected.step == 1) {
    return internal::unwrap(sequence.sliced(selected.start, selected.stop));
  }
  std::vector<Any> items;
  items.reserve(static_cast<std::size_t>(selected.count));
  for (Py_ssize_t i = 0; i < selected.count; ++i) {
    items.push_back(TRY(sequence.at(selected.at(i))));
  }
  return new_list(sequence, std::move(items));
}

// What stays of the range in which the selected items are takes its place.
void remove_scattered(const List_Generic& list, const selection& selected) {
  const std::int64_t last = selected.at(selected.count - 1);
  const std::int64_t begin = std::min<std::int64_t>(selected.start, last);
  const std::int64_t end = std::max<std::int64_t>(selected.start, last) + 1;
  std::vector<Any> kept;
  {
    const item_row row = list.object().share_items();
    const std::span<const Any> items = row.items();
    for (std::int64_t i = begin; i < std::min<std::int64_t>(end, std::ssize(items)); ++i) {
      if (!selected.has(i)) {
        kept.push_back(items[static_cast<std::size_t>(i)]);
      }
    }
  }
  list.object().splice(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin), std::move(kept));
}

Result<None> remove(const I_MutableSequence_Generic& sequence, selection selected) {
  TRY(selected.clamp(sequence));
  if (selected.count == 0) {
    return None();
  }
  if (selected.step == 1) {
    return sequence.removeAt(selected.start, selected.count);
  }
  if (sequence.type() == ObjectType::List) {
    remove_scattered(List_Generic::unchecked(sequence), selected);
    return None();
  }
  // From the back, so that no removal moves an item that is still to be removed.
  for (Py_ssize_t i = 0; i < selected.count; ++i) {
    TRY(sequence.removeAt(selected.at(selected.step > 0 ? selected.count - 1 - i : i)));
  }
  return None();
}

// Replaces the first `count` of the selected items.
Result<None> set_items(const I_MutableSequence_Generic& sequence, const selection& selected,
                       std::span<const Any> items) {
  for (std::size_t i = 0; i < items.size(); ++i) {
    TRY(sequence.set(selected.at(static_cast<Py_ssize_t>(i)), items[i]));
  }
  return None();
}

Result<None> replace_adjacent(const I_MutableSequence_Generic& sequence, const selection& selected,
                              std::span<const Any> items) {
  if (sequence.type() == ObjectType::List) {
    const auto list = List_Generic::unchecked(sequence);
    list.object().splice(static_cast<std::size_t>(selected.start), static_cast<std::size_t>(selected.count),
                         std::vector<Any>(items.begin(), items.end()));
    return None();
  }
  const auto count = static_cast<Py_ssize_t>(items.size());
  const Py_ssize_t common = std::min(count, selected.count);
  TRY(set_items(sequence, selected, items.first(static_cast<std::size_t>(common))));
  for (Py_ssize_t i = common; i < count; ++i) {
    TRY(sequence.appendAt(selected.at(i), items[static_cast<std::size_t>(i)]));
  }
  return selected.count > common ? sequence.removeAt(selected.at(common), selected.count - common)
                                 : Result<None>(None());
}

Result<None> assign(const I_MutableSequence_Generic& sequence, selection selected, std::span<const Any> items) {
  // Before anything is changed, so that a wrong item leaves the sequence as it was.
  const Type type = sequence.elementsType();
  if (const auto wrong = std::ranges::find_if(items, [&](const Any& item) { return !type.matches(item); });
      wrong != items.end()) {
    return Result<None>::unchecked(internal::error_unexpected_type(*wrong, type));
  }
  TRY(selected.clamp(sequence));
  if (selected.step == 1) {
    return replace_adjacent(sequence, selected, items);
  }
  if (static_cast<Py_ssize_t>(items.size()) != selected.count) {
    return Error(String("{} items cannot take the place of {} in a slice with a step.")
                     .arg(static_cast<std::int64_t>(items.size()), static_cast<std::int64_t>(selected.count)));
  }
  return set_items(sequence, selected, items);
}

// What a Python iterable gives. A slot_result that is absent means success.
slot_result read_items(PyObject* iterable, std::vector<Any>& items) {
  const PyObjectPtr iterator(PyObject_GetIter(iterable));
  if (!iterator) {
    return slot_result::raised();
  }
  while (const PyObjectPtr item{PyIter_Next(iterator.get())}) {
    const operand value(item.get());
    if (value.failed()) {
      return runtime_error(value.error());
    }
    items.push_back(value.value());
  }
  return PyErr_Occurred() == nullptr ? slot_result::absent() : slot_result::raised();
}

}  // namespace

slot_result read_slice(const Any& sequence, PyObject* slice) {
  selection selected;
  return selected.unpack(slice) ? result_of(read(*borrowed<I_Sequence_Generic>(sequence), selected))
                                : slot_result::raised();
}

slot_result delete_slice(const Any& sequence, PyObject* slice) {
  selection selected;
  return selected.unpack(slice) ? result_of(remove(*borrowed<I_MutableSequence_Generic>(sequence), selected))
                                : slot_result::raised();
}

slot_result assign_slice(const Any& sequence, PyObject* slice, PyObject* iterable) {
  selection selected;
  if (!selected.unpack(slice)) {
    return slot_result::raised();
  }
  std::vector<Any> items;
  slot_result failure = read_items(iterable, items);
  return failure.is_absent() ? result_of(assign(*borrowed<I_MutableSequence_Generic>(sequence), selected, items))
                             : std::move(failure);
}

}  // namespace ling::cpython
