// object_value_instance: an object of a described class, with fields and members of its own.
//
// Fields are declared by the class and stored in a row per object. Own members (properties and methods of this one
// object) are added at run time, under names that live no longer than they, and found before those of the class. A
// class that carries C++ data makes its instances object_value_native<T>.
//
// Threads: fields and own members are guarded by a spinlock per object; C++ data is the host's to guard.
#pragma once

#include "ling/any.h"
#include "ling/spinlock.h"

#include <atomic>
#include <memory>
#include <typeinfo>

namespace ling {

class Property;
class I_Callable_Generic;
class HashMap_Generic;

class LING_API object_value_instance : public object_value {
 public:
  // An instance with the default values of the class's fields.
  explicit object_value_instance(object_value_class& of_class, object_traits traits = object_traits::none);

  ObjectType type() const noexcept override { return ObjectType::Instance; }
  object_value_class& object_class() const override { return *class_; }

  Any field(std::size_t index) const;
  void set_field(std::size_t index, Any value);

  // The C++ data of the class, null when it has none; `native_cast` checks the type.
  virtual void* native_data() noexcept { return nullptr; }

  // Members of this object alone; empty handles when there is none of that name.
  bool may_have_own_members() const noexcept { return own() != nullptr; }
  Any own_property(const name_entry& name) const;
  Any own_method(const name_entry& name) const;
  void insert_own_property(const name_entry& name, const Property& property);
  void insert_own_method(const name_entry& name, const I_Callable_Generic& method);
  bool remove_own_property(const name_entry& name);
  bool remove_own_method(const name_entry& name);
  // Snapshots, in the order of insertion: String to Property, String to I_Callable_Generic.
  HashMap_Generic own_properties() const;
  HashMap_Generic own_methods() const;

 protected:
  // For objects that exist while their class is being described: the derived class answers `object_class`.
  explicit object_value_instance(object_traits traits) noexcept
      : object_value(traits | object_traits::instance), class_(nullptr) {}
  ~object_value_instance() override;

  mutable spinlock lock_;

 private:
  struct own_members;
  own_members* own() const noexcept { return own_.load(std::memory_order_acquire); }
  own_members& own_locked();

  object_value_class* class_;
  std::unique_ptr<Any[]> fields_;
  std::atomic<own_members*> own_{nullptr};  // made with the first own member, so that most lookups take no lock
};

// An instance that carries a C++ value.
template <class T>
class object_value_native final : public object_value_instance {
 public:
  template <class... Arguments>
  explicit object_value_native(object_value_class& of_class, Arguments&&... arguments)
      : object_value_instance(of_class), value_(std::forward<Arguments>(arguments)...) {}
  void* native_data() noexcept override { return &value_; }

 private:
  T value_;
};

namespace internal {
// The C++ data of `object` as a `type`: the class's own data or, along the declared bases, that of a parent class; null
// when the object has none of that type.
LING_API void* native_data(object_value* object, const std::type_info& type) noexcept;
}  // namespace internal

// The C++ data of a value, null when it carries none of that type. Borrowed: valid while the value lives.
template <class T>
T* native_cast(const Any& value) noexcept {
  return static_cast<T*>(internal::native_data(value.get(), typeid(T)));
}
template <class T>
T* native_cast(const Any&& value) noexcept = delete;

}  // namespace ling
