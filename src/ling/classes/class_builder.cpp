// Building classes from their descriptions.
#include "ling/class_builder.h"

#include "ling/detail/immortal.h"
#include "ling/detail/try.h"
#include "ling/detail/under_way.h"
#include "ling/reflection.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <mutex>

namespace ling {

String internal::with_receiver(std::string_view receiver, const String& signature_text) {
  std::string text(receiver);
  if (!signature_text.empty()) {
    text += ", ";
    text += signature_text.view();
  }
  return text;
}

Any internal::refuse_allocation(object_value_class& of_class) {
  return Error(String("The class {} has no default instance.").arg(qualname(Class_Generic(of_class))));
}

// --- properties ------------------------------------------------------------------------------------------------------

void property_builder_base::take_getter(I_Callable_Generic getter, std::size_t parameters) {
  if (parameters > 1) {
    error_ = Error("[property_builder::getter] Too many parameters in the getter function.");
  }
  getter_ = std::move(getter);
}

void property_builder_base::take_setter(I_Callable_Generic setter, std::size_t parameters) {
  if (parameters > 2) {
    error_ = Error("[property_builder::setter] Too many parameters in the setter function.");
  }
  setter_ = std::move(setter);
}

Result<Property> property_builder_base::build() const {
  if (!error_.empty()) {
    return Error::unchecked(error_);
  }
  if (getter_.empty()) {
    return Error(String("The property '{}' has no getter.").arg(name_));
  }
  const auto getter = I_Callable_Generic::unchecked(getter_);
  return setter_.empty() ? Property(getter, doc_) : Property(getter, I_Callable_Generic::unchecked(setter_), doc_);
}

// --- classes ---------------------------------------------------------------------------------------------------------

struct class_builder_base::entries {
  struct method_entry {
    String name;
    std::vector<I_Callable_Generic> overloads;
  };

  object_value_class* of_class;
  std::vector<method_entry> methods;
  Any error;
  bool has_hooks = false;
};

class_builder_base::class_builder_base(const String& name)
    : entries_(new entries{new object_value_class(name), {}, {}}) {}

class_builder_base::~class_builder_base() = default;

void class_builder_base::set_module(module_entry owner) { module_ = std::move(owner.name); }
void class_builder_base::set_doc(const String& doc) { entries_->of_class->set_doc_unsafe(doc); }
void class_builder_base::add_parent(const Class_Generic& parent) {
  entries_->of_class->add_parent_unsafe(parent.object());
}
void class_builder_base::add_flags(std::uint64_t flags) { entries_->of_class->set_flags(flags); }

void class_builder_base::add_field(field_builder_base field) {
  entries_->of_class->add_field_unsafe(field.name, field.default_value, field.doc);
}

void class_builder_base::add_property(const String& name, const Result<Property>& property) {
  if (property.is_error()) {
    if (entries_->error.empty()) {
      entries_->error = property.error();
    }
    return;
  }
  entries_->of_class->add_property_unsafe(name, property.value());
}

void class_builder_base::add_method(const String& name, const I_Callable_Generic& method) {
  for (entries::method_entry& each : entries_->methods) {
    if (each.name == name) {
      each.overloads.push_back(method);
      return;
    }
  }
  entries_->methods.push_back({name, {method}});
}

void class_builder_base::add_class_method(const String& name, const I_Callable_Generic& method) {
  method.setIndependent();
  add_method(name, method);
}

void class_builder_base::add_expected_members(const String& names) {
  for (const String& name : names.split(',')) {
    entries_->of_class->add_expected_member_unsafe(name.trimmed());
  }
}

void class_builder_base::set_constructor(const I_Callable_Generic& constructor) {
  entries_->of_class->set_constructor_unsafe(constructor);
}

void class_builder_base::set_allocator(object_value_class::allocator allocate, const std::type_info* native_type) {
  entries_->of_class->set_allocator_unsafe(allocate, native_type);
}

void class_builder_base::set_native_base(const Class_Generic& parent, void* (*upcast)(void*)) {
  entries_->of_class->set_native_base_unsafe(parent.object(), upcast);
}

void class_builder_base::set_hooks(const dynamic_member_hooks& hooks) {
  entries_->of_class->set_hooks_unsafe(hooks);
  entries_->has_hooks = true;
}

Result<Class_Generic> class_builder_base::build() {
  if (!entries_->error.empty()) {
    return Error::unchecked(entries_->error);
  }
  object_value_class& of_class = *entries_->of_class;
  for (const entries::method_entry& each : entries_->methods) {
    if (each.overloads.size() == 1) {
      of_class.add_method_unsafe(each.name, each.overloads.front());
      continue;
    }
    of_class.add_method_unsafe(
        each.name, I_Callable_Generic::unchecked(make<object_value_multimethod>(each.name, each.overloads)));
  }
  if (entries_->has_hooks) {
    of_class.note_hooked_methods_unsafe();
  }
  return Class_Generic(of_class);
}

// --- definitions -----------------------------------------------------------------------------------------------------

namespace {

using description = internal::under_way<const class_definition_base*>;

// Classes that are finished but not yet in their modules. Entering a module needs the class Module, which may be the
// one being described: so it happens when no description runs on the thread any more.
struct unregistered_class {
  String module;
  object_value_class* of_class;
};
// A list, because its elements change hands without taking memory.
using unregistered_row = std::list<unregistered_class>;
struct unregistered_classes {
  spinlock lock;
  unregistered_row waiting;
};
unregistered_classes& classes_to_register() {
  static internal::immortal<unregistered_classes> classes;
  return classes.object;
}
void queue_for_registration(unregistered_row& row) {
  const std::lock_guard guard(classes_to_register().lock);
  classes_to_register().waiting.splice(classes_to_register().waiting.end(), row);
}

constinit thread_local bool registering = false;

// The classes that a thread is about to register. Those that it does not come to wait for the next one.
class [[nodiscard]] registration_batch {
 public:
  registration_batch() noexcept { registering = true; }
  ~registration_batch() {
    registering = false;
    queue_for_registration(row_);
  }
  registration_batch(const registration_batch&) = delete;
  registration_batch& operator=(const registration_batch&) = delete;

  // The next class, which is the batch's until `done`; null when none is left.
  const unregistered_class* next() {
    if (row_.empty()) {
      const std::lock_guard guard(classes_to_register().lock);
      row_.swap(classes_to_register().waiting);
    }
    return row_.empty() ? nullptr : &row_.front();
  }
  void done() { row_.pop_front(); }

 private:
  unregistered_row row_;
};

Result<None> register_finished_classes() {
  if (description::any() || registering) {
    return None();
  }
  Any first_error;
  registration_batch batch;
  while (const unregistered_class* each = batch.next()) {
    const Result<None> registered = register_class(each->module, Class_Generic(*each->of_class));
    internal::tolerate_error(registered);
    if (registered.is_error() && first_error.empty()) {
      first_error = registered;
    }
    batch.done();
  }
  return Result<None>::unchecked(first_error);
}

}  // namespace

namespace {

// The descriptions of classes with C++ data, before their classes are published: whoever can have an instance finds its
// class by the C++ type.
struct native_definition {
  const std::type_info* type;
  const class_definition_base* definition;
};
struct native_definitions {
  spinlock lock;
  std::vector<native_definition> known;
};
native_definitions& known_native_definitions() {
  static internal::immortal<native_definitions> definitions;
  return definitions.object;
}

void register_native_definition(const std::type_info& type, const class_definition_base& definition) {
  const std::lock_guard guard(known_native_definitions().lock);
  auto& known = known_native_definitions().known;
  if (std::none_of(known.begin(), known.end(), [&](const auto& each) { return each.definition == &definition; })) {
    known.push_back({&type, &definition});
  }
}

}  // namespace

object_value_class* internal::native_class(const std::type_info& type) noexcept {
  const std::lock_guard guard(known_native_definitions().lock);
  for (const native_definition& each : known_native_definitions().known) {
    if (each.type == &type || *each.type == type) {
      if (object_value_class* built = each.definition->if_built()) {
        return built;
      }
    }
  }
  return nullptr;
}

Result<Class_Generic> class_definition_base::run_description(String& module) const {
  return internal::guarded([&] {
    const description scope(this);
    return describe_(*this, module);
  });
}

Result<Class_Generic> class_definition_base::build() const {
  if (description::has(this)) {
    return Error(String("Recursive call detected while initializing class: {}").arg(name_));
  }
  String module;
  const auto described = run_description(module);
  const Class_Generic finished = TRY(described);
  if (native_type_ != nullptr) {
    register_native_definition(*native_type_, *this);
  }
  unregistered_row own_row;
  if (!module.empty()) {
    own_row.push_back({module, &finished.object()});
  }
  if (object_value_class* const built = built_.publish(Class_Generic(finished)); built != &finished.object()) {
    return Class_Generic(*built);  // another thread was first; its class is the class
  }
  queue_for_registration(own_row);
  TRY(register_finished_classes());
  return finished;
}

object_value_class& class_definition_base::build_required() const {
  const Result<Class_Generic> built = build();
  internal::tolerate_error(built);
  if (built.is_error()) {
    std::fprintf(stderr, "ling: the class %s cannot be built: %s\n", name_, built.error().message().c_str());
    std::abort();
  }
  return built.value().object();
}

// --- C++ data --------------------------------------------------------------------------------------------------------

Type internal::native_type(const std::type_info& type) {
  object_value_class* of_class = native_class(type);
  return of_class == nullptr ? Type::untyped() : of_class->instance_type();
}

Any internal::error_no_native_class(const std::type_info& type) {
  return Error(String("No class is described for the C++ type {}.").arg(type.name()));
}

// --- registration ----------------------------------------------------------------------------------------------------

namespace {

struct pending_definitions {
  spinlock lock;
  std::vector<const class_definition_base*> waiting;
};
pending_definitions& definitions_to_build() {
  static internal::immortal<pending_definitions> definitions;
  return definitions.object;
}

Result<None> build_pending_definitions() {
  std::vector<const class_definition_base*> batch;
  {
    const std::lock_guard guard(definitions_to_build().lock);
    batch.swap(definitions_to_build().waiting);
  }
  Any first_error;
  for (const class_definition_base* each : batch) {
    const Result<Class_Generic> built = each->get();
    if (built.is_error() && first_error.empty()) {
      first_error = built;
    }
  }
  return Result<None>::unchecked(first_error);
}

}  // namespace

class_registration::class_registration(
    std::initializer_list<std::reference_wrapper<const class_definition_base>> definitions) {
  {
    const std::lock_guard guard(definitions_to_build().lock);
    for (const class_definition_base& each : definitions) {
      definitions_to_build().waiting.push_back(&each);
    }
  }
  internal::add_init_handler(InitLevel::Classes, &build_pending_definitions);
}

}  // namespace ling
