// The class List.
#include "ling/containers/described_method.h"
#include "ling/detail/container_errors.h"
#include "ling/detail/definitions.h"
#include "ling/detail/iterator.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"

namespace ling {

namespace {

I_MutableSequence_Generic sequence(const List_Generic& self) { return I_MutableSequence_Generic::unchecked(self); }

Any construct(const Class_Generic& of_class, const Any& iterable) {
  const auto list = List_Generic::unchecked(make<object_value_list>(&of_class.object(), std::vector<Any>()));
  if (!is_none(iterable)) {
    TRY(list.object().extend(iterable));
  }
  return list;
}

// A function of a type of its own, by which the method made of it is known again.
constexpr auto set_item = [](const List_Generic& self, std::int64_t index, const Any& value) {
  return self.object().set_checked(index, value);
};

// Of the same class when what is added fits it, else untyped.
Any concat(const List_Generic& self, const Any& iterable) {
  std::vector<Any> items = self.copyItems();
  TRY(internal::collect(iterable, items));
  object_value_class& of_class = self.object().object_class();
  if (const Type* expected = internal::type_argument(of_class, 0)) {
    for (const Any& item : items) {
      if (!expected->matches(item)) {
        return List_Generic(std::move(items));
      }
    }
  }
  return make<object_value_list>(&of_class, std::move(items));
}

Any repeat(const List_Generic& self, std::int64_t count) {
  const auto copy = List_Generic::unchecked(self.object().slice(0, INT64_MAX));
  TRY(copy.object().repeat(count));
  return copy;
}

Any repeat_in_place(const List_Generic& self, std::int64_t count) {
  TRY(self.object().repeat(count));
  return self;
}

Any extend_in_place(const List_Generic& self, const Any& iterable) {
  TRY(self.object().extend(iterable));
  return self;
}

void describe_reading(class_builder<List_Generic>& c) {
  c.property("__length__", "The number of items.", &List_Generic::length)
      .property("elementsType", "What the items are; the untyped type for any.", &List_Generic::elementsType)
      .method("at", "index", "The item; negative indices count from the end.", &List_Generic::at)
      .method("atOr", "index, default", "The item, or the default when there is none.",
              [](const List_Generic& self, std::int64_t index, const Any& otherwise) {
                return self.object().at_or(index, otherwise);
              },
              {None()})
      .method("contains", "value", "Whether an item is equal.",
              [](const List_Generic& self, const Any& value) { return sequence(self).contains(value); })
      .method("indexOf", "value, from", "The position of the first equal item from there on, -1 when there is none.",
              [](const List_Generic& self, const Any& value, std::int64_t from) {
                return self.object().index_of(value, from);
              },
              {0})
      .method("sliced", "start, stop", "The items from one position up to another, as a new list.",
              [](const List_Generic& self, std::int64_t start, std::optional<std::int64_t> stop) {
                return self.object().slice(start, stop.value_or(INT64_MAX));
              },
              {None()})
      .method("concat", "values", "A new list of these items and those.", &concat)
      .method("repeat", "count", "A new list of these items several times in a row.", &repeat)
      .method("iter", "", "Goes through the items of this moment.",
              [](const List_Generic& self) { return internal::make_iterator(self.object().share_items()); })
      .method("clone", "", "A new list of the same items.",
              [](const List_Generic& self) { return I_Cloneable::unchecked(self).clone(); })
      .method("deepClone", "", "A new list of copies of the items.",
              [](const List_Generic& self) { return I_Cloneable::unchecked(self).deepClone(); });
}

void describe_changing(class_builder<List_Generic>& c) {
  c.method("set", "index, value", "Replaces an item.", set_item)
      .method("append", "value", "Adds an item at the end.", &List_Generic::appendChecked)
      .method("appendAt", "index, value", "Adds an item before the one at that position.",
              [](const List_Generic& self, std::int64_t index, const Any& value) {
                return self.object().insert(index, value);
              })
      .method("extend", "values", "Adds the items of an iterable at the end.",
              [](const List_Generic& self, const Any& values) { return self.object().extend(values); })
      .method("removeAt", "index, count", "Removes that many items from that position on.",
              [](const List_Generic& self, std::int64_t index, std::int64_t count) {
                return self.object().remove_at(index, count);
              },
              {1})
      .method("removeOne", "value", "Removes the first equal item; whether there was one.",
              [](const List_Generic& self, const Any& value) { return self.object().remove_one(value); })
      .method("pop", "index", "Removes an item and answers it.",
              [](const List_Generic& self, std::int64_t index) { return self.object().pop(index); }, {-1})
      .method("clear", "", "Removes all items.", [](const List_Generic& self) { self.object().clear(); })
      .method("sort", "", "Puts the items in ascending order; equal ones stay as they are.",
              [](const List_Generic& self) { return self.object().sort(); })
      .method("reverse", "", "Puts the items in the opposite order.",
              [](const List_Generic& self) { self.object().reverse(); })
      .method(Any::__iadd__, "values", &extend_in_place)
      .method(Any::__imul__, "count", &repeat_in_place);
}

}  // namespace

constinit const class_definition<List_Generic> internal::list_class("List", [](class_builder<List_Generic>& c) {
  c.module("ling")
      .doc("A growable sequence. List<T> takes items of one type only.")
      .parent(I_MutableSequence_Generic::getClass())
      .parent(I_Cloneable::getClass())
      .constructor("iterable", "A list of the items of an iterable, or an empty one.", &construct, {None()});
  describe_reading(c);
  describe_changing(c);
});

Class_Generic List_Generic::getClass() { return internal::list_class.required(); }
Type List_Generic::getType() { return Type::of(getClass()); }
object_value_class& object_value_list::object_class() const {
  return class_ == nullptr ? internal::list_class.required() : *class_;
}
bool object_value_list::has_described_set() const noexcept {
  return internal::is_method_made_of<decltype(set_item)>(object_class(), members::set);
}

}  // namespace ling
