// The class HashSet.
#include "ling/detail/definitions.h"
#include "ling/detail/iterator.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"

namespace ling {

namespace {

I_MutableSet_Generic set(const HashSet_Generic& self) { return I_MutableSet_Generic::unchecked(self); }

HashSet_Generic empty_like(const HashSet_Generic& self) {
  return HashSet_Generic::unchecked(make<object_value_hash_set>(&self.object().object_class()));
}

Any construct(const Class_Generic& of_class, const Any& iterable) {
  const auto made = HashSet_Generic::unchecked(make<object_value_hash_set>(&of_class.object()));
  if (!is_none(iterable)) {
    TRY(made.object().extend(iterable));
  }
  return made;
}

// Another set for the set operations: itself, or the items of an iterable.
Result<HashSet_Generic> as_set(const Any& iterable) {
  if (HashSet_Generic::matches(iterable.get())) {
    return HashSet_Generic::unchecked(iterable);
  }
  const HashSet_Generic made;
  TRY(made.object().extend(iterable));
  return made;
}

// The items that are, or are not, in the other set.
Any filtered(const HashSet_Generic& self, const HashSet_Generic& other, bool wanted) {
  const HashSet_Generic kept = empty_like(self);
  for (const Any& item : self.copyItems()) {
    const Boolean found = TRY(set(other).contains(item));
    if (found.value() == wanted) {
      TRY(set(kept).insert(item));
    }
  }
  return kept;
}

Any unite(const HashSet_Generic& self, const Any& iterable) {
  const auto all = HashSet_Generic::unchecked(self.object().clone());
  TRY(all.object().extend(iterable));
  return all;
}

Any intersect(const HashSet_Generic& self, const Any& iterable) {
  const HashSet_Generic other = TRY(as_set(iterable));
  return filtered(self, other, true);
}

Any subtract(const HashSet_Generic& self, const Any& iterable) {
  const HashSet_Generic other = TRY(as_set(iterable));
  return filtered(self, other, false);
}

Any difference_of_both(const HashSet_Generic& self, const Any& iterable) {
  const HashSet_Generic other = TRY(as_set(iterable));
  const Any mine = TRY(Result<Any>::unchecked(filtered(self, other, false)));
  const Any theirs = TRY(Result<Any>::unchecked(filtered(other, self, false)));
  return unite(HashSet_Generic::unchecked(mine), theirs);
}

Any extend_in_place(const HashSet_Generic& self, const Any& iterable) {
  TRY(self.object().extend(iterable));
  return self;
}

void describe_algebra(class_builder<HashSet_Generic>& c) {
  c.method("union", "values", "A new set of the items of both.", &unite)
      .method("intersection", "values", "A new set of the items that are in both.", &intersect)
      .method("difference", "values", "A new set of the items that are not in the other.", &subtract)
      .method("symmetricDifference", "values", "A new set of the items that are in one of both only.",
              &difference_of_both)
      .method(Any::__or__, "values", &unite)
      .method(Any::__and__, "values", &intersect)
      .method(Any::__sub__, "values", &subtract)
      .method(Any::__xor__, "values", &difference_of_both)
      .method(Any::__iadd__, "values", &extend_in_place);
}

}  // namespace

constinit const class_definition<HashSet_Generic> internal::hash_set_class(
    "HashSet", [](class_builder<HashSet_Generic>& c) {
      c.module("ling")
          .doc("Values without repetition, in the order in which they were inserted. The values are immutable.")
          .parent(I_MutableSet_Generic::getClass())
          .parent(I_Cloneable::getClass())
          .constructor("iterable", "A set of the items of an iterable, or an empty one.", &construct, {None()})
          .property("__length__", "The number of values.", &HashSet_Generic::length)
          .property("elementsType", "What the values are; the untyped type for any.", &HashSet_Generic::elementsType)
          .method("contains", "value", "Whether the value is there.",
                  [](const HashSet_Generic& self, const Any& value) { return self.object().contains(value); })
          .method("insert", "value", "Adds a value; whether it was not there before.", &HashSet_Generic::insert)
          .method("remove", "value", "Removes a value; whether it was there.",
                  [](const HashSet_Generic& self, const Any& value) { return set(self).remove(value); })
          .method("extend", "values", "Adds the items of an iterable.",
                  [](const HashSet_Generic& self, const Any& values) { return self.object().extend(values); })
          .method("clear", "", "Removes all values.", [](const HashSet_Generic& self) { self.object().clear(); })
          .method("iter", "", "Goes through the values of this moment.",
                  [](const HashSet_Generic& self) { return internal::make_iterator(self.copyItems()); })
          .method("clone", "", "A new set of the same values.",
                  [](const HashSet_Generic& self) { return self.object().clone(); })
          .method("deepClone", "", "The same as clone: the values are immutable.",
                  [](const HashSet_Generic& self) { return self.object().clone(); });
      describe_algebra(c);
    });

Class_Generic HashSet_Generic::getClass() { return internal::hash_set_class.required(); }
Type HashSet_Generic::getType() { return Type::of(getClass()); }
object_value_class& object_value_hash_set::object_class() const {
  return class_ == nullptr ? internal::hash_set_class.required() : *class_;
}

}  // namespace ling
