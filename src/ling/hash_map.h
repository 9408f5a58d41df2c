// HashMap: a mapping that keeps the order in which keys were first inserted.
//
// Keys are immutable values (`I_Immutable`): numbers, texts, byte arrays, tuples of those, classes, and instances whose
// class says so. Equality is that of equal_objects, so 1 and 1.0 are one key.
//
// Errors: a key that cannot be one counts as missing where no result can say so; exhausted memory and interruptions are
// thrown. Threads: every operation is atomic. Iteration works on a snapshot taken when it starts.
#pragma once

#include "ling/class.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace ling {

class Boolean;
class I_Map_Generic;
class None;

namespace internal {
class key_table;
class plain_key;

// What there is under a key.
struct key_lookup {
  Any error = {};  // when the key is not immutable or cannot be compared
  bool found = false;
  Any value = {};
};
}  // namespace internal

class LING_API object_value_hash_map final : public object_value {
 public:
  // A typed map; null means untyped.
  explicit object_value_hash_map(object_value_class* typed_class = nullptr);
  ~object_value_hash_map() override;

  ObjectType type() const noexcept override { return ObjectType::HashMap; }
  object_value_class& object_class() const override;

  // A number that changes with every change of the map.
  std::uint64_t version() const noexcept;
  std::size_t length() const noexcept;
  internal::key_lookup find(const Any& key) const;
  Result<Boolean> contains(const Any& key) const;
  // The same without a value of the key. Empty when a key that decides itself what it equals must be asked before.
  std::optional<internal::key_lookup> find(const internal::plain_key& key) const;
  std::optional<bool> contains(const internal::plain_key& key) const;
  Result<None> set(const Any& key, Any value);
  // The same; an Error, too, when the key or the value is not of the map's type.
  Result<None> set_checked(const Any& key, const Any& value);
  Result<None> set_checked(const internal::plain_key& key, const Any& value);
  // Whether the method `set` of the map does what set_checked does: no descendant, and nobody else, has put another in
  // its place.
  bool has_described_set() const noexcept;
  internal::key_lookup remove(const Any& key);
  void clear() noexcept;
  std::vector<std::pair<Any, Any>> copy_pairs() const;
  std::vector<Any> copy_keys() const;
  std::vector<Any> copy_values() const;
  Any clone() const;  // a map of the same class
  // The pairs of any map; checks the types. An Error leaves the pairs before it set.
  Result<None> extend(const I_Map_Generic& map);

 private:
  object_value_class* const class_;
  const std::unique_ptr<internal::key_table> table_;
};

class LING_API HashMap_Generic : public Handle<HashMap_Generic, object_value_hash_map> {
  LING_HANDLE(HashMap_Generic, object_value_hash_map)
  HashMap_Generic() : Handle(new object_value_hash_map()) {}

  std::size_t length() const noexcept { return object().length(); }
  // A snapshot, in order.
  std::vector<std::pair<Any, Any>> copyPairs() const { return object().copy_pairs(); }
  bool contains(const Any& key) const;  // false for a key that is not immutable
  // The value, or `otherwise` when the key is not there.
  Any get(const Any& key, const Any& otherwise = {}) const;
  // The key must be immutable: anything else is a fault of the caller, which only an assertion tells.
  void set(const Any& key, const Any& value) const;
  // None, or an Error when the key is not immutable or the key or value is not of the map's type.
  Any setChecked(const Any& key, const Any& value) const { return object().set_checked(key, value); }
  bool remove(const Any& key) const;
  Type keysType() const;
  Type valuesType() const;

  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::HashMap;
  }
  static Type getType();
  static Class_Generic getClass();
};

template <class K, class V>
class HashMap : public Handle<HashMap<K, V>, object_value_hash_map, HashMap_Generic> {
  using Handle = ling::Handle<HashMap<K, V>, object_value_hash_map, HashMap_Generic>;
  LING_HANDLE(HashMap, object_value_hash_map)
  HashMap() : Handle(new object_value_hash_map(&getClass().object())) {}
  void set(const K& key, const V& value) const { HashMap_Generic::set(key, value); }
  static bool matches(const object_value* object) {
    return HashMap_Generic::matches(object) && object->object_class().is_ancestor(getClass().object());
  }
  static Type getType() { return Type::of(getClass()); }
  static Class_Generic getClass() {
    const Type arguments[] = {K::getType(), V::getType()};
    return generic_instance(HashMap_Generic::getClass(), arguments);
  }
};

}  // namespace ling
