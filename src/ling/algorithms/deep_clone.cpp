// Copying values with all they hold.
#include "ling/algorithms/deep_clone.h"

#include "ling/detail/nesting.h"
#include "ling/error.h"
#include "ling/hash_map.h"
#include "ling/hash_set.h"
#include "ling/interfaces.h"
#include "ling/reflection.h"
#include "ling/tuple.h"

#include <unordered_map>

namespace ling::internal {

namespace {

class deep_cloner {
 public:
  Any clone(const Any& value) {
    switch (value.type()) {
      case ObjectType::List:
      case ObjectType::HashMap:
      case ObjectType::HashSet:
      case ObjectType::Tuple:
        return clone_container(value);
      default:
        return I_Cloneable::matches(value.get()) ? I_Cloneable::unchecked(value).deepClone() : value;
    }
  }

 private:
  Any clone_container(const Any& container) {
    if (const auto known = copies_.find(container.get()); known != copies_.end()) {
      return known->second.copy;
    }
    const nesting level;
    if (level.too_deep()) {
      return Error(String("A {} is nested too deeply to be cloned: more than {} levels.")
                       .arg(raw_class_of(container).name(), nesting::limit));
    }
    switch (container.type()) {
      case ObjectType::List:
        return clone_list(List_Generic::unchecked(container));
      case ObjectType::HashMap:
        return clone_map(HashMap_Generic::unchecked(container));
      case ObjectType::HashSet:
        return remember(container, static_cast<const object_value_hash_set*>(container.get())->clone());
      default:
        return clone_tuple(Tuple_Generic::unchecked(container));
    }
  }

  // The copies of a list and a map are known before they are filled: what they hold may lead back to them.
  Any clone_list(const List_Generic& list) {
    auto copy = List_Generic::unchecked(
        remember(list, make<object_value_list>(&list.object().object_class(), std::vector<Any>())));
    std::vector<Any> items = list.copyItems();
    for (Any& item : items) {
      Any item_copy = clone(item);
      if (failed(item, item_copy)) {
        return item_copy;
      }
      item = std::move(item_copy);
    }
    copy.object().replace_all(std::move(items));
    return copy;
  }

  Any clone_map(const HashMap_Generic& map) {
    auto copy = HashMap_Generic::unchecked(remember(map, make<object_value_hash_map>(&map.object().object_class())));
    for (const auto& [key, value] : map.copyPairs()) {
      Any value_copy = clone(value);
      if (failed(value, value_copy)) {
        return value_copy;
      }
      if (Any stored = copy.object().set(key, std::move(value_copy)); is_error_result(stored)) {
        return stored;
      }
    }
    return copy;
  }

  // A tuple that holds nothing to be copied is its own copy.
  Any clone_tuple(const Tuple_Generic& tuple) {
    std::vector<Any> items;
    items.reserve(tuple.length());
    bool changed = false;
    for (const Any& item : tuple.items()) {
      items.push_back(clone(item));
      if (failed(item, items.back())) {
        return items.back();
      }
      changed = changed || !items.back().is_same(item);
    }
    // A list in the tuple that leads back to the tuple has met it in the meantime: then there is a copy already.
    if (const auto known = copies_.find(tuple.get()); known != copies_.end()) {
      return known->second.copy;
    }
    return remember(tuple, changed ? Any(Tuple_Generic(std::move(items))) : Any(tuple));
  }

  // Errors are values that a container may hold, too: those are shared.
  static bool failed(const Any& original, const Any& copy) { return is_error_result(copy) && !copy.is_same(original); }

  Any remember(const Any& original, Any copy) {
    copies_.insert_or_assign(original.get(), entry{original, copy});
    return copy;
  }

  // The original is kept alive with its copy, or its address might become another object's.
  struct entry {
    Any original;
    Any copy;
  };
  std::unordered_map<const object_value*, entry> copies_;
};

}  // namespace

Any deep_clone(const Any& value) { return deep_cloner().clone(value); }

}  // namespace ling::internal
