// Classes: what an object is made of. A class is described once by a class_builder (class_builder.h), built on first
// need, and lives for the life of the process.
//
// A class that another language's code defines at run time is counted like any other value instead (`class_lifetime`):
// handles, types and descendants keep it, references to it and its members are good while one of these does. It has no
// instances in the runtime; its allocator makes values of another class.
//
// A class flattens what it inherits: its member table answers for its own members and those of all its ancestors in one
// probe. Own members hide inherited ones; among parents the first one listed wins.
//
// Calling a class makes an instance. A class is a callable like any other.
//
// Threads: lookups take no lock. Properties and methods may be added at any time from any thread; the `_unsafe`
// operations are named so because nobody checks that the change makes sense to those who already use the class.
// Parents, fields, the constructor, the allocator and the hooks belong to a class that nobody else uses yet: instances
// made before do not have a field that is added later.
#pragma once

#include "ling/callable.h"
#include "ling/member_table.h"
#include "ling/property.h"
#include "ling/signature.h"
#include "ling/type.h"

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <typeinfo>
#include <vector>

namespace ling {

// Bits of a class's flag word that code outside the runtime tests.
namespace class_flags {
inline constexpr std::uint64_t callable = 1ull << 8;          // instances can be called
inline constexpr std::uint64_t collection = 1ull << 17;       // answers `contains`: maps, sets, some iterables
inline constexpr std::uint64_t sequence = 1ull << 24;         // items by position
inline constexpr std::uint64_t dynamic_members = 1ull << 39;  // hooks answer for members the class does not register
inline constexpr std::uint64_t interface = 1ull << 40;        // has no instances of its own
inline constexpr std::uint64_t member_access = 1ull << 41;    // defines meta-methods that take over member access
inline constexpr std::uint64_t declared = 1ull << 42;         // has a declaring context; kept by the class itself
}  // namespace class_flags

// Answers for members that a class with the flag `dynamic_members` does not register. When it is described with the
// meta-methods `__method__`, `__propertyValue__` and `__setPropertyValue__` as well, the hooks say the same at less
// cost, and are asked instead of these very methods; not of others that take their places.
struct dynamic_member_hooks {
  Any (*method)(const Any& instance, const name_entry& name);                 // a callable, or empty
  Any (*get)(const Any& instance, const name_entry& name);                    // the value or an Error
  Any (*set)(const Any& instance, const name_entry& name, const Any& value);  // None or an Error
  // Appends what is left of an iterator, as calling its `next` would, up to StopIteration: None, an Error, or Undefined
  // when `next` must be called. May be null.
  Any (*drain)(const Any& iterator, std::vector<Any>& items) = nullptr;
};

enum class class_lifetime : bool { process, counted };

class LING_API object_value_class : public object_value_callable {
 public:
  explicit object_value_class(String name, class_lifetime lifetime = class_lifetime::process);

  ObjectType type() const noexcept override { return ObjectType::Class; }
  object_value_class& object_class() const override;

  // The callable: making an instance. A class without a constructor of its own uses that of its first parent that has
  // one; a class without any is an Error.
  Any do_call(std::span<const Any> arguments) const override;
  Any do_call_named(std::span<const Any> positional, std::span<const named_argument> named) const override;
  String name() const override { return name_; }
  String doc() const override;
  Result<Signature> signature() const override;
  Any declaring_context() const override;
  void set_declaring_context(const Any& context) override;

  std::uint64_t flags() const noexcept { return flags_.load(std::memory_order_relaxed); }
  bool has_flag(std::uint64_t flag) const noexcept { return (flags() & flag) != 0; }
  void set_flags(std::uint64_t flags) noexcept { flags_.fetch_or(flags, std::memory_order_relaxed); }

  const std::vector<object_value_class*>& parents() const noexcept { return parents_; }
  // The class itself first, then its ancestors, nearest first, without repetitions.
  const std::vector<object_value_class*>& ancestors() const noexcept { return ancestors_; }
  // Whether `ancestor` is this class or one of its ancestors.
  bool is_ancestor(const object_value_class& ancestor) const noexcept {
    for (const object_value_class* each : ancestors_) {
      if (each == &ancestor) {
        return true;
      }
    }
    return false;
  }

  // Own and inherited members.
  const class_member* find_member(const name_entry& name) const noexcept { return members_.find(name); }
  std::optional<std::size_t> find_field(const name_entry& name) const noexcept;
  Union<I_Callable_Generic, None> find_property_getter(const name_entry& name) const noexcept;
  Union<I_Callable_Generic, None> find_property_setter(const name_entry& name) const noexcept;
  // What a class must have to conform, for an interface: names that are listed and never looked up, those of the
  // parents first.
  std::vector<const name_entry*> expected_members() const;
  // Snapshots in the order of declaration, inherited members first.
  std::vector<const class_member*> members() const;
  std::vector<const class_member*> fields() const;
  std::vector<const class_member*> properties() const;
  std::vector<const class_member*> methods() const;
  std::size_t field_count() const noexcept { return field_defaults_.size(); }
  const Any& field_default(std::size_t index) const noexcept { return field_defaults_[index]; }

  // The class `List` for `List<Integer>`, null for a class that is not an instance of a generic one.
  object_value_class* generic_definition() const noexcept { return generic_definition_; }
  const std::vector<Type>& type_arguments() const noexcept { return type_arguments_; }
  // The type of the instances. Keeps the class.
  Type instance_type() const;

  // An instance without running a constructor: without C++ data, or with data in its default state. An Error for an
  // interface and for a class whose data needs a constructor.
  using allocator = Any (*)(object_value_class& of_class);
  Any allocate_instance();
  const dynamic_member_hooks* hooks() const noexcept { return hooks_; }
  // Whether the hooks say what this meta-method does.
  bool hooks_stand_for(const object_value* method) const noexcept {
    return hooked_methods_[0] == method || hooked_methods_[1] == method || hooked_methods_[2] == method;
  }

  // For builders, and for classes that grow: modules, and classes made for another language's types.
  void set_doc_unsafe(const String& doc);
  void add_parent_unsafe(object_value_class& parent);
  void add_field_unsafe(const String& name, const Any& default_value, const String& doc);
  void add_property_unsafe(const String& name, const Property& property);
  void add_method_unsafe(const String& name, const I_Callable_Generic& method);
  void add_expected_member_unsafe(const String& name);
  // Class-level members: they take no instance.
  void add_class_method_unsafe(const String& name, const I_Callable_Generic& method);
  void add_class_property_unsafe(const String& name, const Property& property);
  void set_constructor_unsafe(const I_Callable_Generic& constructor);
  void set_allocator_unsafe(allocator allocate, const std::type_info* native_type);
  // How the C++ data of this class becomes that of a parent class: a pointer conversion.
  void set_native_base_unsafe(object_value_class& parent, void* (*upcast)(void*));
  void set_generic_unsafe(object_value_class& definition, std::vector<Type> arguments);
  void set_hooks_unsafe(const dynamic_member_hooks& hooks);
  // When all methods are there: notes those that the hooks stand for.
  void note_hooked_methods_unsafe() noexcept;

  // The C++ data `data` of an instance of this class, as a `wanted`; null when it has none of that type.
  void* native_data(void* data, const std::type_info& wanted) const noexcept;

 protected:
  // Only counted classes end.
  ~object_value_class() override;

 private:
  void merge(const class_member& addition);
  void inherit(const class_member& former, const class_member& current);

  String name_;
  mutable spinlock lock_;  // guards doc_ and declaring_context_
  String doc_;
  Any declaring_context_;
  std::atomic<std::uint64_t> flags_{0};
  std::vector<object_value_class*> parents_;   // each holds a reference
  std::vector<object_value_class*> children_;  // members added later reach them too
  std::vector<object_value_class*> ancestors_;
  member_table members_;
  std::vector<const name_entry*> own_expected_members_;
  std::vector<std::unique_ptr<class_field>> own_fields_;
  std::vector<Any> field_defaults_;
  Any constructor_;
  allocator allocate_ = nullptr;
  const std::type_info* native_type_ = nullptr;
  object_value_class* native_base_ = nullptr;
  void* (*native_upcast_)(void*) = nullptr;
  object_value_class* generic_definition_ = nullptr;
  std::vector<Type> type_arguments_;
  const dynamic_member_hooks* hooks_ = nullptr;
  std::array<const object_value*, 3> hooked_methods_{};      // that the hooks stand for
  mutable internal::published<object_value> instance_type_;  // stays empty in a counted class, which the type keeps
};

class LING_API Class_Generic : public Handle<Class_Generic, object_value_class, I_Callable_Generic> {
  LING_HANDLE(Class_Generic, object_value_class)
  Class_Generic(object_value_class& of) noexcept : Class_Generic(Unchecked{}, Any::share(&of)) {}
  // Of a temporary handle, too: for classes that live as long as the process. Of a counted class keep a handle.
  object_value_class& object() const noexcept { return *static_cast<object_value_class*>(get()); }

  String name() const { return object().name(); }
  String doc() const { return object().doc(); }
  bool is_ancestor(const Class_Generic& ancestor) const noexcept { return object().is_ancestor(ancestor.object()); }
  Any allocateInstance() const { return object().allocate_instance(); }
  // The value converted to this class: itself when it is an instance, else what the runtime's conversions or the
  // value's `__coerce__` make of it, or an Error.
  Any coerce(const Any& value) const;

  // Members the class answers for, inherited ones included.
  Union<Property, None> definedProperty(meta_property_untyped name) const;
  Union<I_Callable_Generic, None> definedMethod(meta_method_untyped name) const;
  bool definedField(meta_field_untyped name) const noexcept;
  std::vector<const class_member*> definedProperties() const { return object().properties(); }
  // The class `List` for `List<Integer>`.
  Union<Class_Generic, None> genericDefinition() const;

  friend bool operator==(const Class_Generic& a, const Class_Generic& b) noexcept { return a.is_same(b); }

  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::Class;
  }
  static Type getType();
  static Class_Generic getClass();
};

// A class whose instances are known to be T.
template <class T>
class Class : public Handle<Class<T>, object_value_class, Class_Generic> {
  using Handle = ling::Handle<Class<T>, object_value_class, Class_Generic>;
  LING_HANDLE(Class, object_value_class)
  using Class_Generic::object;
};

// The instance of a generic class for these arguments, `List<Integer>` of `List`; made on first request, then the same.
LING_API Class_Generic generic_instance(const Class_Generic& definition, std::span<const Type> arguments);

}  // namespace ling
