// What classes inherit: their parents, adding members, and handing on what changes.
#include "ling/classes/inheritance.h"

#include "ling/class.h"
#include "ling/detail/immortal.h"
#include "ling/interfaces.h"
#include "ling/reflection.h"

#include <algorithm>

namespace ling {

std::mutex& internal::class_change_lock() {
  static immortal<std::mutex> lock;
  return lock.object;
}

namespace {

constexpr const meta_method_untyped* member_access_methods[] = {
    &Any::__propertyValue__,  &Any::__setPropertyValue__, &Any::__property__,       &Any::__ownProperty__,
    &Any::__ownProperties__,  &Any::__method__,           &Any::__ownMethod__,      &Any::__ownMethods__,
    &Any::__insertProperty__, &Any::__insertMethod__,     &Any::__removeProperty__, &Any::__removeMethod__,
};

bool takes_over_member_access(const class_member& member) {
  return !member.method.empty() &&
         std::any_of(std::begin(member_access_methods), std::end(member_access_methods),
                     [&](const meta_method_untyped* name) { return &name->entry() == member.name; });
}

}  // namespace

// Adds what `addition` has to the member of that name; it wins over what was there.
void object_value_class::merge(const class_member& addition) {
  const class_member* former = members_.find(*addition.name);
  class_member merged = former != nullptr ? *former : class_member{addition.name, nullptr, 0, {}, {}};
  const class_member before = merged;
  if (addition.field != nullptr) {
    merged.field = addition.field;
    merged.field_index = addition.field_index;
  }
  if (!addition.property.empty()) {
    merged.property = addition.property;
  }
  if (!addition.method.empty()) {
    merged.method = addition.method;
  }
  if (takes_over_member_access(merged)) {
    set_flags(class_flags::member_access);
  }
  members_.store(merged);
  for (object_value_class* child : children_) {
    child->inherit(before, merged);
  }
}

// Takes from a parent's member what this class has not hidden: what it lacks or has from the parent's former state.
void object_value_class::inherit(const class_member& former, const class_member& current) {
  const class_member* present = members_.find(*current.name);
  class_member addition{current.name, nullptr, 0, {}, {}};
  const bool lacks_field = present == nullptr || present->field == nullptr;
  if (current.field != nullptr && lacks_field) {
    addition.field = current.field;
    addition.field_index = field_defaults_.size();
    field_defaults_.push_back(current.field->default_value);
  }
  if (present == nullptr || present->property.empty() || present->property.is_same(former.property)) {
    addition.property = current.property;
  }
  if (present == nullptr || present->method.empty() || present->method.is_same(former.method)) {
    addition.method = current.method;
  }
  if (addition.field != nullptr || !addition.property.empty() || !addition.method.empty()) {
    merge(addition);
  }
}

void object_value_class::add_parent_unsafe(object_value_class& parent) {
  const std::lock_guard guard(internal::class_change_lock());
  if (&parent == this || parent.is_ancestor(*this) ||
      std::find(parents_.begin(), parents_.end(), &parent) != parents_.end()) {
    return;
  }
  parents_.reserve(parents_.size() + 1);
  parent.children_.push_back(this);
  parents_.push_back(&parent);
  parent.retain();
  // The ancestors of one parent are all different: comparing them with each other would make deep chains of classes
  // expensive.
  const std::size_t known = ancestors_.size();
  for (object_value_class* ancestor : parent.ancestors_) {
    const auto known_end = ancestors_.begin() + static_cast<std::ptrdiff_t>(known);
    if (std::find(ancestors_.begin(), known_end, ancestor) == known_end) {
      ancestors_.push_back(ancestor);
    }
  }
  set_flags(parent.flags() & ~(class_flags::interface | class_flags::declared));
  if (hooks_ == nullptr) {
    hooks_ = parent.hooks_;
    hooked_methods_ = parent.hooked_methods_;
  }
  if (native_type_ == nullptr) {
    native_type_ = parent.native_type_;
    native_base_ = parent.native_base_;
    native_upcast_ = parent.native_upcast_;
    allocate_ = allocate_ == nullptr ? parent.allocate_ : allocate_;
  }
  // A constructor makes the data of the class it belongs to.
  if (constructor_.empty() && native_type_ == parent.native_type_) {
    constructor_ = parent.constructor_;
  }
  for (const class_member* each : parent.members_.ordered()) {
    inherit(class_member{each->name, nullptr, 0, {}, {}}, *each);
  }
}

void object_value_class::add_field_unsafe(const String& name, const Any& default_value, const String& doc) {
  const std::lock_guard guard(internal::class_change_lock());
  const class_field* field =
      own_fields_
          .emplace_back(std::make_unique<class_field>(class_field{&internal::intern(name.view()), default_value, doc}))
          .get();
  class_member addition{field->name, field, field_defaults_.size(), {}, {}};
  field_defaults_.push_back(default_value);
  merge(addition);
}

void object_value_class::add_property_unsafe(const String& name, const Property& property) {
  const std::lock_guard guard(internal::class_change_lock());
  merge({&internal::intern(name.view()), nullptr, 0, property, {}});
}

void object_value_class::add_method_unsafe(const String& name, const I_Callable_Generic& method) {
  if (method.declaringContext().empty()) {
    method.object().set_declaring_context(Class_Generic(*this));
  }
  const std::lock_guard guard(internal::class_change_lock());
  merge({&internal::intern(name.view()), nullptr, 0, {}, method});
}

void object_value_class::add_class_method_unsafe(const String& name, const I_Callable_Generic& method) {
  method.setIndependent();
  add_method_unsafe(name, method);
}

void object_value_class::add_class_property_unsafe(const String& name, const Property& property) {
  add_property_unsafe(name, property);
}

void object_value_class::add_expected_member_unsafe(const String& name) {
  own_expected_members_.push_back(&internal::intern(name.view()));
}

std::vector<const name_entry*> object_value_class::expected_members() const {
  std::vector<const name_entry*> names;
  for (auto each = ancestors_.rbegin(); each != ancestors_.rend(); ++each) {
    names.insert(names.end(), (*each)->own_expected_members_.begin(), (*each)->own_expected_members_.end());
  }
  return names;
}

void object_value_class::set_constructor_unsafe(const I_Callable_Generic& constructor) {
  if (constructor.declaringContext().empty()) {
    constructor.object().set_declaring_context(Class_Generic(*this));
  }
  constructor_ = constructor;
}

void object_value_class::set_allocator_unsafe(allocator allocate, const std::type_info* native_type) {
  allocate_ = allocate;
  native_type_ = native_type;
}

void object_value_class::set_native_base_unsafe(object_value_class& parent, void* (*upcast)(void*)) {
  native_base_ = &parent;
  native_upcast_ = upcast;
}

void object_value_class::set_generic_unsafe(object_value_class& definition, std::vector<Type> arguments) {
  generic_definition_ = &definition;
  type_arguments_ = std::move(arguments);
}

void object_value_class::set_hooks_unsafe(const dynamic_member_hooks& hooks) {
  hooks_ = &hooks;
  set_flags(class_flags::dynamic_members);
}

void object_value_class::note_hooked_methods_unsafe() noexcept {
  const meta_method_untyped names[] = {Any::__method__, Any::__propertyValue__, Any::__setPropertyValue__};
  for (std::size_t i = 0; i < hooked_methods_.size(); ++i) {
    const class_member* const member = find_member(names[i].entry());
    hooked_methods_[i] = member == nullptr ? nullptr : member->method.get();
  }
}

}  // namespace ling
