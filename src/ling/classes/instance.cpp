// Fields and own members of instances.
#include "ling/instance.h"

#include "ling/class.h"
#include "ling/hash_map.h"
#include "ling/property.h"
#include "ling/string.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace ling {

namespace {
// Names of own members may be any data of a script: they are not interned, and compared by their text.
struct own_member {
  String name;
  std::uint32_t hash;
  Any value;

  bool is_named(const name_entry& other) const noexcept { return hash == other.hash && name.view() == other.text; }
};
using own_member_row = std::vector<own_member>;  // few per object: a scan beats a table

Any find_in(const own_member_row& row, const name_entry& name) {
  for (const own_member& each : row) {
    if (each.is_named(name)) {
      return each.value;
    }
  }
  return {};
}

// Answers what was replaced, for the caller to let go of once the lock is given back.
Any store_in(own_member_row& row, const name_entry& name, Any value) {
  for (own_member& each : row) {
    if (each.is_named(name)) {
      return std::exchange(each.value, std::move(value));
    }
  }
  row.push_back({internal::name_string(name), name.hash, std::move(value)});
  return {};
}

Any take_from(own_member_row& row, const name_entry& name) {
  const auto found = std::find_if(row.begin(), row.end(), [&](const own_member& each) { return each.is_named(name); });
  if (found == row.end()) {
    return {};
  }
  Any taken = std::move(found->value);
  row.erase(found);
  return taken;
}

HashMap_Generic map_of(const own_member_row& row) {
  HashMap_Generic map;
  for (const own_member& each : row) {
    map.set(each.name, each.value);
  }
  return map;
}
}  // namespace

struct object_value_instance::own_members {
  own_member_row properties;
  own_member_row methods;
};

object_value_instance::object_value_instance(object_value_class& of_class, object_traits traits)
    : object_value(traits | object_traits::instance), class_(&of_class) {
  if (const std::size_t count = of_class.field_count(); count != 0) {
    fields_ = std::make_unique<Any[]>(count);
    for (std::size_t i = 0; i < count; ++i) {
      fields_[i] = of_class.field_default(i);
    }
  }
}

object_value_instance::~object_value_instance() { delete own(); }

Any object_value_instance::field(std::size_t index) const {
  const std::lock_guard guard(lock_);
  return fields_[index];
}

void object_value_instance::set_field(std::size_t index, Any value) {
  const std::lock_guard guard(lock_);
  fields_[index].swap(value);
  // The former value dies with the parameter, after the lock.
}

object_value_instance::own_members& object_value_instance::own_locked() {
  if (own() == nullptr) {
    own_.store(new own_members, std::memory_order_release);
  }
  return *own();
}

Any object_value_instance::own_property(const name_entry& name) const {
  if (own() == nullptr) [[likely]] {
    return {};
  }
  const std::lock_guard guard(lock_);
  return find_in(own()->properties, name);
}

Any object_value_instance::own_method(const name_entry& name) const {
  if (own() == nullptr) [[likely]] {
    return {};
  }
  const std::lock_guard guard(lock_);
  return find_in(own()->methods, name);
}

void object_value_instance::insert_own_property(const name_entry& name, const Property& property) {
  Any replaced;
  const std::lock_guard guard(lock_);
  replaced = store_in(own_locked().properties, name, property);
}

void object_value_instance::insert_own_method(const name_entry& name, const I_Callable_Generic& method) {
  Any replaced;
  const std::lock_guard guard(lock_);
  replaced = store_in(own_locked().methods, name, method);
}

bool object_value_instance::remove_own_property(const name_entry& name) {
  Any removed;
  const std::lock_guard guard(lock_);
  removed = own() == nullptr ? Any() : take_from(own()->properties, name);
  return !removed.empty();
}

bool object_value_instance::remove_own_method(const name_entry& name) {
  Any removed;
  const std::lock_guard guard(lock_);
  removed = own() == nullptr ? Any() : take_from(own()->methods, name);
  return !removed.empty();
}

HashMap_Generic object_value_instance::own_properties() const {
  own_member_row copy;
  {
    const std::lock_guard guard(lock_);
    copy = own() == nullptr ? own_member_row() : own()->properties;
  }
  return map_of(copy);
}

HashMap_Generic object_value_instance::own_methods() const {
  own_member_row copy;
  {
    const std::lock_guard guard(lock_);
    copy = own() == nullptr ? own_member_row() : own()->methods;
  }
  return map_of(copy);
}

void* internal::native_data(object_value* object, const std::type_info& type) noexcept {
  if (object == nullptr || !object->has(object_traits::instance)) {
    return nullptr;
  }
  auto& instance = static_cast<object_value_instance&>(*object);
  void* data = instance.native_data();
  return data == nullptr ? nullptr : instance.object_class().native_data(data, type);
}

}  // namespace ling
