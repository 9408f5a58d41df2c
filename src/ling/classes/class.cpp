// Classes: inheritance, members, making instances.
#include "ling/class.h"

#include "ling/class_builder.h"
#include "ling/classes/inheritance.h"
#include "ling/detail/argument_row.h"
#include "ling/detail/declarations.h"
#include "ling/detail/definitions.h"
#include "ling/detail/immortal.h"
#include "ling/interfaces.h"
#include "ling/reflection.h"

#include <algorithm>
#include <mutex>

namespace ling {

constinit const class_definition<Class_Generic> internal::class_class("Class", [](class_builder<Class_Generic>& c) {
  c.module("ling")
      .doc("What objects are made of. Calling a class makes an instance.")
      .parent(I_Callable_Generic::getClass())
      .parent(I_Immutable::getClass())
      .parent(I_HasName::getClass())
      .parent(I_HasDoc::getClass())
      .property("name", "The name without that of the module.", [](const Class_Generic& self) { return self.name(); })
      .property("doc", "What the class is for.", [](const Class_Generic& self) { return self.doc(); })
      .property("parents", "The classes it descends from directly.", [](const Class_Generic& self) {
        std::vector<Class_Generic> parents;
        for (object_value_class* parent : self.object().parents()) {
          parents.emplace_back(*parent);
        }
        return parents;
      });
});

Class_Generic Class_Generic::getClass() { return internal::class_class.required(); }
Type Class_Generic::getType() { return Type::of(getClass()); }
object_value_class& object_value_class::object_class() const { return internal::class_class.required(); }

namespace {

// Every immortal class: this is what keeps them reachable.
std::vector<object_value_class*>& all_classes() {
  static internal::immortal<std::vector<object_value_class*>> classes;
  return classes.object;
}

}  // namespace

object_value_class::object_value_class(String name, class_lifetime lifetime)
    : object_value_callable(lifetime == class_lifetime::process ? object_traits::immortal : object_traits::none),
      name_(std::move(name)),
      ancestors_{this} {
  if (lifetime == class_lifetime::process) {
    const std::lock_guard guard(internal::class_change_lock());
    all_classes().push_back(this);
  }
}

// Of a counted class, or of one whose making has failed halfway.
object_value_class::~object_value_class() {
  {
    const std::lock_guard guard(internal::class_change_lock());
    if (has(object_traits::immortal)) {
      std::erase(all_classes(), this);
    }
    for (const object_value_class* parent : parents_) {
      // From the back: classes that come and go were added last.
      auto& siblings = const_cast<object_value_class*>(parent)->children_;
      const auto self = std::find(siblings.rbegin(), siblings.rend(), this);
      *self = siblings.back();
      siblings.pop_back();
    }
  }
  for (const object_value_class* parent : parents_) {
    parent->release();
  }
}

Any object_value_class::do_call(std::span<const Any> arguments) const {
  const Class_Generic self(const_cast<object_value_class&>(*this));
  if (constructor_.empty()) {
    if (arguments.empty()) {
      return self.allocateInstance();
    }
    return Error(String("The class {} has no constructor.").arg(qualname(self)));
  }
  return I_Callable_Generic::unchecked(constructor_).callWith(internal::prefixed_row(self, arguments));
}

Any object_value_class::do_call_named(std::span<const Any> positional, std::span<const named_argument> named) const {
  if (constructor_.empty()) {
    return object_value_callable::do_call_named(positional, named);
  }
  const Class_Generic self(const_cast<object_value_class&>(*this));
  return static_cast<const object_value_callable&>(*constructor_.get())
      .call_named(internal::prefixed_row(self, positional), named);
}

Result<Signature> object_value_class::signature() const {
  const Type result = instance_type();
  if (constructor_.empty()) {
    return Signature(result, {});
  }
  const Result<Signature> full = I_Callable_Generic::unchecked(constructor_).signature();
  if (!full) {
    return full;
  }
  const Signature bound = full.value().withoutReceiver();
  return Signature(result, bound.parameters(), bound.object().defaults());
}

String object_value_class::doc() const {
  const std::lock_guard guard(lock_);
  return doc_;
}

void object_value_class::set_doc_unsafe(const String& doc) {
  Any former;
  const std::lock_guard guard(lock_);
  former = std::exchange(doc_, doc);
}

Any object_value_class::declaring_context() const {
  const std::lock_guard guard(lock_);
  return declaring_context_;
}

void object_value_class::set_declaring_context(const Any& context) {
  Any former;
  const std::lock_guard guard(lock_);
  former = std::exchange(declaring_context_, context);
  if (context.empty()) {
    flags_.fetch_and(~class_flags::declared, std::memory_order_relaxed);
  } else {
    set_flags(class_flags::declared);
  }
  internal::note_declaration();
}

std::optional<std::size_t> object_value_class::find_field(const name_entry& name) const noexcept {
  const class_member* member = find_member(name);
  return member == nullptr || member->field == nullptr ? std::nullopt : std::optional(member->field_index);
}

Union<I_Callable_Generic, None> object_value_class::find_property_getter(const name_entry& name) const noexcept {
  const class_member* member = find_member(name);
  if (member == nullptr || member->property.empty()) {
    return None();
  }
  return Property::unchecked(member->property).getter();
}

Union<I_Callable_Generic, None> object_value_class::find_property_setter(const name_entry& name) const noexcept {
  const class_member* member = find_member(name);
  if (member == nullptr || member->property.empty()) {
    return None();
  }
  return Property::unchecked(member->property).setter();
}

std::vector<const class_member*> object_value_class::members() const {
  const std::lock_guard guard(internal::class_change_lock());
  return members_.ordered();
}

namespace {
template <class Predicate>
std::vector<const class_member*> only(std::vector<const class_member*> members, Predicate wanted) {
  std::erase_if(members, [&](const class_member* each) { return !wanted(*each); });
  return members;
}
}  // namespace

std::vector<const class_member*> object_value_class::fields() const {
  return only(members(), [](const class_member& each) { return each.field != nullptr; });
}
std::vector<const class_member*> object_value_class::properties() const {
  return only(members(), [](const class_member& each) { return !each.property.empty(); });
}
std::vector<const class_member*> object_value_class::methods() const {
  return only(members(), [](const class_member& each) { return !each.method.empty(); });
}

Type object_value_class::instance_type() const {
  const auto make_type = [this] { return make<object_value_type>(std::vector{const_cast<object_value_class*>(this)}); };
  if (!has(object_traits::immortal)) {
    return Type::unchecked(make_type());
  }
  return Type::unchecked(Any::share(instance_type_.get_or_make(make_type)));
}

Any object_value_class::allocate_instance() {
  if (has_flag(class_flags::interface)) {
    return Error(String("The interface {} has no instances.").arg(qualname(Class_Generic(*this))));
  }
  if (allocate_ != nullptr) {
    return allocate_(*this);
  }
  if (native_type_ != nullptr) {
    return internal::refuse_allocation(*this);
  }
  return make<object_value_instance>(*this);
}

void* object_value_class::native_data(void* data, const std::type_info& wanted) const noexcept {
  for (const object_value_class* each = this; each->native_type_ != nullptr; each = each->native_base_) {
    if (each->native_type_ == &wanted || *each->native_type_ == wanted) {
      return data;
    }
    if (each->native_upcast_ == nullptr) {
      return nullptr;
    }
    data = each->native_upcast_(data);
  }
  return nullptr;
}

// --- the handle ------------------------------------------------------------------------------------------------------

Union<Property, None> Class_Generic::definedProperty(meta_property_untyped name) const {
  const class_member* member = object().find_member(name.entry());
  return Union<Property, None>::unchecked(member == nullptr ? Any() : member->property);
}

Union<I_Callable_Generic, None> Class_Generic::definedMethod(meta_method_untyped name) const {
  const class_member* member = object().find_member(name.entry());
  return Union<I_Callable_Generic, None>::unchecked(member == nullptr ? Any() : member->method);
}

bool Class_Generic::definedField(meta_field_untyped name) const noexcept {
  return object().find_field(name.entry()).has_value();
}

Union<Class_Generic, None> Class_Generic::genericDefinition() const {
  object_value_class* definition = object().generic_definition();
  return Union<Class_Generic, None>::unchecked(definition == nullptr ? Any() : Any::share(definition));
}

}  // namespace ling
