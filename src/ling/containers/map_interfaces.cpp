// The interfaces of maps and sets: the runtime's containers directly, other values through their members.
#include "ling/detail/container_errors.h"
#include "ling/detail/interface_call.h"
#include "ling/detail/try.h"
#include "ling/hash_set.h"

namespace ling {

using internal::call_member;
using internal::done;
using internal::promised;

namespace {

object_value_hash_map* as_hash_map(const Any& value) noexcept {
  return value.type() == ObjectType::HashMap ? static_cast<object_value_hash_map*>(value.get()) : nullptr;
}
object_value_hash_set* as_hash_set(const Any& value) noexcept {
  return value.type() == ObjectType::HashSet ? static_cast<object_value_hash_set*>(value.get()) : nullptr;
}

Result<Any> value_or_missing(const Any& key, internal::key_lookup outcome) {
  if (!outcome.error.empty()) {
    return Result<Any>::unchecked(std::move(outcome.error));
  }
  return outcome.found ? Result<Any>::unchecked(std::move(outcome.value)) : internal::error_key_not_found(key);
}

}  // namespace

// --- maps ------------------------------------------------------------------------------------------------------------

Result<Integer> I_Map_Generic::length() const {
  if (const auto* map = as_hash_map(*this)) {
    return Integer(map->length());
  }
  return promised<Integer>(propertyValue(members::property::__length__));
}

Result<List_Generic> I_Map_Generic::keys() const {
  if (const auto* map = as_hash_map(*this)) {
    return List_Generic(map->copy_keys());
  }
  return promised<List_Generic>(propertyValue(members::property::keys));
}

Result<List_Generic> I_Map_Generic::values() const {
  if (const auto* map = as_hash_map(*this)) {
    return List_Generic(map->copy_values());
  }
  return promised<List_Generic>(propertyValue(members::property::values));
}

Result<Any> I_Map_Generic::get(const Any& key) const {
  if (const auto* map = as_hash_map(*this)) {
    return value_or_missing(key, map->find(key));
  }
  // One call and no race between asking and getting: a default that no map holds.
  const Any value = TRY(get(key, Undefined()));
  return Undefined::matches(value.get()) ? internal::error_key_not_found(key) : Result<Any>(value);
}

Result<Any> I_Map_Generic::get(const Any& key, const Any& otherwise) const {
  const auto* map = as_hash_map(*this);
  if (map == nullptr) {
    return promised<Any>(call_member(*this, members::get, key, otherwise));
  }
  internal::key_lookup outcome = map->find(key);
  return Result<Any>::unchecked(outcome.found           ? std::move(outcome.value)
                                : outcome.error.empty() ? otherwise
                                                        : std::move(outcome.error));
}

Type I_Map_Generic::keysType() const {
  if (const auto* map = as_hash_map(*this)) {
    return internal::type_or_untyped(map->object_class(), 0);
  }
  return internal::type_property(*this, members::property::keysType);
}

Type I_Map_Generic::valuesType() const {
  if (const auto* map = as_hash_map(*this)) {
    return internal::type_or_untyped(map->object_class(), 1);
  }
  return internal::type_property(*this, members::property::valuesType);
}

Result<Any> I_Map_Generic::pairs(std::vector<std::pair<Any, Any>>& into) const {
  if (const auto* map = as_hash_map(*this)) {
    into = map->copy_pairs();
    return Any();
  }
  const List_Generic all_keys = TRY(keys());
  const List_Generic all_values = TRY(values());
  const std::vector<Any> key_row = all_keys.copyItems();
  const std::vector<Any> value_row = all_values.copyItems();
  if (key_row.size() != value_row.size()) {
    return Error(
        String("The map changed while it was read: {} keys, {} values.").arg(key_row.size(), value_row.size()));
  }
  into.clear();
  for (std::size_t i = 0; i < key_row.size(); ++i) {
    into.emplace_back(key_row[i], value_row[i]);
  }
  return Any();
}

Class_Generic I_Map_Generic::genericInstance(const Type& key, const Type& value) {
  const Type arguments[] = {key, value};
  return generic_instance(getClass(), arguments);
}

Any I_Map_Generic::createInstance(const Type& key, const Type& value) {
  if (key.is_untyped() && value.is_untyped()) {
    return HashMap_Generic();
  }
  const Type arguments[] = {key, value};
  return make<object_value_hash_map>(&generic_instance(HashMap_Generic::getClass(), arguments).object());
}

Result<None> I_MutableMap_Generic::set(const Any& key, const Any& value) const {
  if (auto* map = as_hash_map(*this)) {
    return map->set_checked(key, value);
  }
  return done(call_member(*this, members::set, key, value));
}

Result<Any> I_MutableMap_Generic::remove(const Any& key) const {
  if (auto* map = as_hash_map(*this)) {
    return value_or_missing(key, map->remove(key));
  }
  return promised<Any>(call_member(*this, members::remove, key));
}

Result<None> I_MutableMap_Generic::clear() const {
  if (auto* map = as_hash_map(*this)) {
    map->clear();
    return None();
  }
  return done(call_member(*this, members::clear));
}

// --- sets ------------------------------------------------------------------------------------------------------------

Result<Integer> I_Set_Generic::length() const {
  if (const auto* set = as_hash_set(*this)) {
    return Integer(set->length());
  }
  return promised<Integer>(propertyValue(members::property::__length__));
}

Class_Generic I_Set_Generic::genericInstance(const Type& element) {
  const Type arguments[] = {element};
  return generic_instance(getClass(), arguments);
}

Result<Boolean> I_MutableSet_Generic::insert(const Any& value) const {
  if (auto* set = as_hash_set(*this)) {
    return set->insert_checked(value);
  }
  return promised<Boolean>(call_member(*this, members::insert, value));
}

Result<Boolean> I_MutableSet_Generic::remove(const Any& value) const {
  if (auto* set = as_hash_set(*this)) {
    return set->remove(value);
  }
  return promised<Boolean>(call_member(*this, members::remove, value));
}

Result<None> I_MutableSet_Generic::extend(const I_Iterable_Generic& values) const {
  if (auto* set = as_hash_set(*this)) {
    return set->extend(values);
  }
  return done(call_member(*this, members::extend, values));
}

Result<None> I_MutableSet_Generic::clear() const {
  if (auto* set = as_hash_set(*this)) {
    set->clear();
    return None();
  }
  return done(call_member(*this, members::clear));
}

}  // namespace ling
