// The class Tuple.
#include "ling/detail/container_errors.h"
#include "ling/detail/definitions.h"
#include "ling/detail/iterator.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"

namespace ling {

namespace {

I_Sequence_Generic sequence(const Tuple_Generic& self) { return I_Sequence_Generic::unchecked(self); }

Any construct(const Class_Generic&, const Any& iterable) {
  std::vector<Any> items;
  if (!is_none(iterable)) {
    TRY(internal::collect(iterable, items));
  }
  return Tuple_Generic(std::move(items));
}

Any concat(const Tuple_Generic& self, const Any& iterable) {
  std::vector<Any> items(self.items().begin(), self.items().end());
  TRY(internal::collect(iterable, items));
  return Tuple_Generic(std::move(items));
}

Any repeat(const Tuple_Generic& self, std::int64_t count) {
  const std::size_t times = count <= 0 ? 0 : static_cast<std::size_t>(count);
  if (times != 0 && internal::is_repetition_too_long(self.length(), count)) {
    return internal::error_too_long(self.length(), count);
  }
  const std::size_t length = self.length() * times;
  std::vector<Any> items;
  items.reserve(length);
  for (std::size_t i = 0; i < length; ++i) {
    items.push_back(self.at(i % self.length()));
  }
  return Tuple_Generic(std::move(items));
}

}  // namespace

constinit const class_definition<Tuple_Generic> internal::tuple_class("Tuple", [](class_builder<Tuple_Generic>& c) {
  c.module("ling")
      .doc("An immutable row of values.")
      .parent(I_Tuple_Generic::getClass())
      .parent(I_Immutable::getClass())
      .constructor("iterable", "A tuple of the items of an iterable, or an empty one.", &construct, {None()})
      .property("__length__", "The number of items.", &Tuple_Generic::length)
      .property("elementsType", "What the items are: any.", [](const Tuple_Generic&) { return Type::untyped(); })
      .method("at", "index", "The item; negative indices count from the end.",
              [](const Tuple_Generic& self, std::int64_t index) { return self.object().at_checked(index); })
      .method("atOr", "index, default", "The item, or the default when there is none.",
              [](const Tuple_Generic& self, std::int64_t index, const Any& otherwise) {
                return self.object().at_or(index, otherwise);
              },
              {None()})
      .method("contains", "value", "Whether an item is equal.",
              [](const Tuple_Generic& self, const Any& value) { return sequence(self).contains(value); })
      .method("indexOf", "value, from", "The position of the first equal item from there on, -1 when there is none.",
              [](const Tuple_Generic& self, const Any& value, std::int64_t from) {
                return self.object().index_of(value, from);
              },
              {0})
      .method("sliced", "start, stop", "The items from one position up to another, as a new tuple.",
              [](const Tuple_Generic& self, std::int64_t start, std::optional<std::int64_t> stop) {
                return self.object().slice(start, stop.value_or(INT64_MAX));
              },
              {None()})
      .method("concat", "values", "A new tuple of these items and those.", &concat)
      .method("repeat", "count", "A new tuple of these items several times in a row.", &repeat)
      .method("iter", "", "Goes through the items.", [](const Tuple_Generic& self) { return sequence(self).iter(); });
});

Class_Generic Tuple_Generic::getClass() { return internal::tuple_class.required(); }
Type Tuple_Generic::getType() { return Type::of(getClass()); }
object_value_class& object_value_tuple::object_class() const { return internal::tuple_class.required(); }

}  // namespace ling
