// Instances of generic classes: List<Integer> of List.
#include "ling/class.h"
#include "ling/detail/immortal.h"
#include "ling/spinlock.h"

#include <algorithm>
#include <mutex>

namespace ling {

namespace {

struct generic_instances {
  spinlock lock;
  std::vector<object_value_class*> made;  // a handful; looked at when a typed container is made
};
generic_instances& known_generic_instances() {
  static internal::immortal<generic_instances> known;
  return known.object;
}

object_value_class* find_generic_instance(const object_value_class& definition, std::span<const Type> arguments) {
  for (object_value_class* each : known_generic_instances().made) {
    if (each->generic_definition() == &definition && std::ranges::equal(each->type_arguments(), arguments)) {
      return each;
    }
  }
  return nullptr;
}

}  // namespace

Class_Generic generic_instance(const Class_Generic& definition, std::span<const Type> arguments) {
  generic_instances& known = known_generic_instances();
  {
    const std::lock_guard guard(known.lock);
    if (object_value_class* found = find_generic_instance(definition.object(), arguments)) {
      return *found;
    }
  }
  std::string name(definition.name().view());
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    name += i == 0 ? "<" : ", ";
    name += arguments[i].name().view();
  }
  name += ">";
  auto* made = new object_value_class(name);
  made->set_doc_unsafe(definition.doc());
  made->add_parent_unsafe(definition.object());
  made->set_generic_unsafe(definition.object(), std::vector<Type>(arguments.begin(), arguments.end()));
  const std::lock_guard guard(known.lock);
  if (object_value_class* found = find_generic_instance(definition.object(), arguments)) {
    return *found;  // another thread was first
  }
  known.made.push_back(made);
  return *made;
}

}  // namespace ling
