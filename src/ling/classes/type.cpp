// Types, and the class Computed, which is only a place in a union.
#include "ling/type.h"

#include "ling/class_builder.h"
#include "ling/detail/definitions.h"
#include "ling/detail/hash_mix.h"
#include "ling/interfaces.h"
#include "ling/published.h"
#include "ling/reflection.h"

#include <algorithm>
#include <iterator>

namespace ling {

namespace {
std::int64_t hash(const Type& self) {
  std::uint64_t hash = 0;
  for (const object_value_class* each : self.object().alternatives()) {
    hash = internal::hash_mix(hash ^ each->identity());
  }
  return static_cast<std::int64_t>(hash);
}
}  // namespace

constinit const class_definition<Type> internal::type_class("Type", [](class_builder<Type>& c) {
  c.module("ling")
      .doc("What a parameter, a property or a container accepts.")
      .parent(I_Immutable::getClass())
      .parent(I_HasName::getClass())
      .property("name", "The names of the classes it accepts.", [](const Type& self) { return self.name(); })
      .method("conformsTo", "class", "Whether every value of this type is an instance of the class.",
              [](const Type& self, const Class_Generic& of_class) { return self.conformsTo(of_class); })
      .method("matches", "value", "Whether the value is of this type.",
              [](const Type& self, const Any& value) { return self.matches(value); })
      .method("toClass", "", "The class, when the type is that of one class, else none.",
              [](const Type& self) { return self.toClass(); })
      // The same classes, whoever made the type of them.
      .method(Any::__equals__, "other",
              [](const Type& self, const Any& other) {
                return Type::matches(other.get()) ? Any(self == Type::unchecked(other)) : Any(Undefined());
              })
      .method(Any::__hash__, "", &hash);
});

// The result wrapper Computed<T>: only its place in a union matters.
constinit const class_definition<Computed_Generic> internal::computed_class(
    "Computed", [](class_builder<Computed_Generic>& c) { c.module("ling").doc("A value computed on first need."); });

object_value_type::object_value_type(std::vector<object_value_class*> alternatives)
    : object_value_instance(internal::type_class.required()), alternatives_(std::move(alternatives)) {
  for (const object_value_class* each : alternatives_) {
    each->retain();
  }
}

object_value_type::~object_value_type() {
  for (const object_value_class* each : alternatives_) {
    each->release();
  }
}

bool Type::matches(const object_value* object) noexcept {
  return internal::is_handle_object<object_value_type>(object, internal::type_class);
}
Class_Generic Type::getClass() { return internal::type_class.required(); }
Type Type::getType() { return of(getClass()); }

Type Type::of(const Class_Generic& of_class) { return of_class.object().instance_type(); }

Type Type::untyped() {
  // Published without a guard: building the class of types may come back here.
  static constinit internal::published<object_value> shared;
  return unchecked(
      Any::share(shared.get_or_make([] { return make<object_value_type>(std::vector<object_value_class*>()); })));
}

Type Any::getType() { return Type::untyped(); }

bool Type::conformsTo(const Class_Generic& of_class) const noexcept {
  const auto& alternatives = object().alternatives();
  return !alternatives.empty() && std::all_of(alternatives.begin(), alternatives.end(), [&](object_value_class* each) {
    return each->is_ancestor(of_class.object());
  });
}

bool Type::matches(const Any& value) const {
  if (is_untyped()) {
    return true;
  }
  const object_value_class& of_value = raw_class_of(value).object();
  const auto& alternatives = object().alternatives();
  return std::any_of(alternatives.begin(), alternatives.end(),
                     [&](object_value_class* each) { return of_value.is_ancestor(*each); });
}

Union<Class_Generic, None> Type::toClass() const {
  const auto& alternatives = object().alternatives();
  return Union<Class_Generic, None>::unchecked(alternatives.size() == 1 ? Any::share(alternatives.front()) : Any());
}

String Type::name() const {
  if (is_untyped()) {
    return "Any";
  }
  string_builder text;
  for (object_value_class* each : object().alternatives()) {
    text.append(text.empty() ? "" : " | ").append(each->name());
  }
  return text.build();
}

Type type_union_of_unsafe(std::span<const Type> types) {
  std::vector<object_value_class*> alternatives;
  for (const Type& type : types) {
    if (type.is_untyped()) {
      return Type::untyped();
    }
    for (object_value_class* each : type.object().alternatives()) {
      if (std::find(alternatives.begin(), alternatives.end(), each) == alternatives.end()) {
        alternatives.push_back(each);
      }
    }
  }
  return alternatives.size() == 1 ? alternatives.front()->instance_type()
                                  : Type::unchecked(make<object_value_type>(std::move(alternatives)));
}

Type unwrapped_type(const Type& type) {
  const object_value_class& computed = internal::computed_class.required();
  const auto& alternatives = type.object().alternatives();
  if (std::find(alternatives.begin(), alternatives.end(), &computed) == alternatives.end()) {
    return type;
  }
  std::vector<object_value_class*> kept;
  std::copy_if(alternatives.begin(), alternatives.end(), std::back_inserter(kept), [&](object_value_class* each) {
    return each != &computed && each != &internal::error_class.required();
  });
  return kept.size() == 1 ? kept.front()->instance_type() : Type::unchecked(make<object_value_type>(std::move(kept)));
}

}  // namespace ling
