// The class HashMap.
#include "ling/containers/described_method.h"
#include "ling/detail/container_errors.h"
#include "ling/detail/definitions.h"
#include "ling/detail/iterator.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"

namespace ling {

namespace {

I_MutableMap_Generic map(const HashMap_Generic& self) { return I_MutableMap_Generic::unchecked(self); }

Any construct(const Class_Generic& of_class, const std::optional<I_Map_Generic>& mapping) {
  const auto made = HashMap_Generic::unchecked(make<object_value_hash_map>(&of_class.object()));
  if (mapping) {
    TRY(made.object().extend(*mapping));
  }
  return made;
}

// Undefined stands for a default that is not given.
Any get(const HashMap_Generic& self, const Any& key, const Any& otherwise) {
  internal::key_lookup outcome = self.object().find(key);
  return outcome.found                         ? std::move(outcome.value)
         : !outcome.error.empty()              ? std::move(outcome.error)
         : Undefined::matches(otherwise.get()) ? internal::error_key_not_found(key)
                                               : otherwise;
}

Any extend_in_place(const HashMap_Generic& self, const I_Map_Generic& other) {
  TRY(self.object().extend(other));
  return self;
}

// A function of a type of its own, by which the method made of it is known again.
constexpr auto set_value = [](const HashMap_Generic& self, const Any& key, const Any& value) -> Any {
  return self.object().set_checked(key, value);
};

std::vector<Any> pairs(const HashMap_Generic& self) {
  std::vector<Any> tuples;
  for (auto& [key, value] : self.copyPairs()) {
    tuples.push_back(Tuple_Generic({key, value}));
  }
  return tuples;
}

}  // namespace

constinit const class_definition<HashMap_Generic> internal::hash_map_class(
    "HashMap", [](class_builder<HashMap_Generic>& c) {
      const auto extend = [](const HashMap_Generic& self, const I_Map_Generic& other) {
        return self.object().extend(other);
      };
      c.module("ling")
          .doc("Values by key, in the order in which the keys were first set. Keys are immutable values.")
          .parent(I_MutableMap_Generic::getClass())
          .parent(I_Cloneable::getClass())
          .constructor("mapping", "A map of the pairs of another map, or an empty one.", &construct, {None()})
          .property("__length__", "The number of keys.", &HashMap_Generic::length)
          .property("keys", "The keys as a new list.", [](const HashMap_Generic& self) { return map(self).keys(); })
          .property("values", "The values as a new list, in the order of the keys.",
                    [](const HashMap_Generic& self) { return map(self).values(); })
          .property("keysType", "What the keys are; the untyped type for any.", &HashMap_Generic::keysType)
          .property("valuesType", "What the values are; the untyped type for any.", &HashMap_Generic::valuesType)
          .method("contains", "key", "Whether the key is there.",
                  [](const HashMap_Generic& self, const Any& key) { return self.object().contains(key); })
          .method("get", "key, default", "The value; without the key the default, or an Error when none is given.",
                  &get, {Undefined()})
          .method("set", "key, value", "Sets the value of a key.", set_value)
          .method("remove", "key", "Removes a key and answers its value; an Error when it is not there.",
                  [](const HashMap_Generic& self, const Any& key) { return map(self).remove(key); })
          .method("clear", "", "Removes all keys.", [](const HashMap_Generic& self) { self.object().clear(); })
          .method("extend", "mapping", "Sets the values of all keys of another map.", extend)
          .method("update", "mapping", "The same as extend.", extend)
          .method("iter", "", "Goes through the keys of this moment.",
                  [](const HashMap_Generic& self) { return internal::make_iterator(self.object().copy_keys()); })
          .method("pairs", "", "A new list of tuples of key and value.", &pairs)
          .method("clone", "", "A new map of the same keys and values.",
                  [](const HashMap_Generic& self) { return self.object().clone(); })
          .method("deepClone", "", "A new map of copies of the values.",
                  [](const HashMap_Generic& self) { return I_Cloneable::unchecked(self).deepClone(); })
          .method(Any::__iadd__, "mapping", &extend_in_place);
    });

Class_Generic HashMap_Generic::getClass() { return internal::hash_map_class.required(); }
Type HashMap_Generic::getType() { return Type::of(getClass()); }
object_value_class& object_value_hash_map::object_class() const {
  return class_ == nullptr ? internal::hash_map_class.required() : *class_;
}
bool object_value_hash_map::has_described_set() const noexcept {
  return internal::is_method_made_of<decltype(set_value)>(object_class(), members::set);
}

}  // namespace ling
