// Classes: inheritance, members, making instances.
#include "ling/class.h"

#include "ling/class_builder.h"
#include "ling/detail/argument_row.h"
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

// Serialises changes of classes. Changes are rare and run no code but the runtime's. Never destroyed.
std::mutex& change_lock() {
  static internal::immortal<std::mutex> lock;
  return lock.object;
}

// Every immortal class: this is what keeps them reachable.
std::vector<object_value_class*>& all_classes() {
  static internal::immortal<std::vector<object_value_class*>> classes;
  return classes.object;
}

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

object_value_class::object_value_class(String name, class_lifetime lifetime)
    : object_value_callable(lifetime == class_lifetime::process ? object_traits::immortal : object_traits::none),
      name_(std::move(name)),
      ancestors_{this} {
  if (lifetime == class_lifetime::process) {
    const std::lock_guard guard(change_lock());
    all_classes().push_back(this);
  }
}

// Of a counted class, or of one whose making has failed halfway.
object_value_class::~object_value_class() {
  {
    const std::lock_guard guard(change_lock());
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
  const std::lock_guard guard(change_lock());
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

// --- changing a class -----------------------------------------------------------------------------------------------

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
  const std::lock_guard guard(change_lock());
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
  const std::lock_guard guard(change_lock());
  const class_field* field =
      own_fields_
          .emplace_back(std::make_unique<class_field>(class_field{&internal::intern(name.view()), default_value, doc}))
          .get();
  class_member addition{field->name, field, field_defaults_.size(), {}, {}};
  field_defaults_.push_back(default_value);
  merge(addition);
}

void object_value_class::add_property_unsafe(const String& name, const Property& property) {
  const std::lock_guard guard(change_lock());
  merge({&internal::intern(name.view()), nullptr, 0, property, {}});
}

void object_value_class::add_method_unsafe(const String& name, const I_Callable_Generic& method) {
  if (method.declaringContext().empty()) {
    method.object().set_declaring_context(Class_Generic(*this));
  }
  const std::lock_guard guard(change_lock());
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

// --- instances of generic classes -----------------------------------------------------------------------------------

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
