// Describing classes. A class is declared in one place, next to the C++ it presents, and reads like a declaration:
//
//   const class_definition<Inventory> inventory_class("Inventory", [](class_builder<Inventory>& c) {
//     c.module("shop")
//         .doc("Items and how many there are of each.")
//         .constructor("name", "An empty inventory.", [](String name) { return Inventory(name); })
//         .property("name", "What it is called.", &Inventory::name)
//         .method("add", "item, count", "Adds items.", &Inventory::add, {1})
//         .constant("LIMIT", 1000, "More than this is refused.");
//   });
//
//   const class_registration registered{inventory_class};
//
// A definition is a constant: it can be used before any static initialiser has run. A registration at namespace scope
// queues the building of its classes at init level Classes; `get` builds a class earlier when it is needed earlier.
// Building runs the description once per thread that races for it at most, and the first finished class is the class:
// nobody waits for anybody, so a thread that holds some other lock cannot deadlock. A description must therefore only
// describe. One that needs the class it is describing gets the error "Recursive call detected while initializing
// class:" and the name.
//
// T is the C++ data that instances carry, a typed handle (its `matches` decides what the receiver is), or void.
#pragma once

#include "ling/closure.h"
#include "ling/registration.h"

#include <initializer_list>
#include <memory>
#include <vector>

namespace ling {

namespace internal {
// A signature text with the receiver in front.
LING_API String with_receiver(std::string_view receiver, const String& signature_text);
// The allocator of classes without default instances: an Error.
LING_API Any refuse_allocation(object_value_class& of_class);
}  // namespace internal

// One callable being described.
class LING_API method_builder_base {
 public:
  method_builder_base(const String& name, const String& signature_text, const String& doc, std::vector<Any> defaults,
                      bool has_receiver)
      : declaration_{name, signature_text, doc, std::move(defaults), has_receiver} {}

  // The finished callable over the function.
  template <class F>
  I_Callable_Generic body(F function) && {
    return I_Callable_Generic::unchecked(make<object_value_closure<F>>(std::move(declaration_), std::move(function)));
  }

 private:
  object_value_function::declaration declaration_;
};

// A free function as a callable.
template <class F>
I_Callable_Generic make_function(const String& name, const String& signature_text, const String& doc, F function,
                                 std::vector<Any> defaults = {}) {
  return method_builder_base(name, signature_text, doc, std::move(defaults), false).body(std::move(function));
}

// One property being described. A getter takes the instance and nothing else, a setter the instance and the value; or
// neither takes the instance.
class LING_API property_builder_base {
 public:
  property_builder_base(const String& name, const String& doc) : name_(name), doc_(doc) {}

  template <class F>
  property_builder_base&& getter(F function) && {
    constexpr std::size_t parameters = internal::parameter_row<typename internal::parameters_of<F>::type>::count;
    take_getter(
        method_builder_base(name_, parameters == 0 ? "" : "self", doc_, {}, parameters != 0).body(std::move(function)),
        parameters);
    return std::move(*this);
  }
  template <class F>
  property_builder_base&& setter(F function) && {
    constexpr std::size_t parameters = internal::parameter_row<typename internal::parameters_of<F>::type>::count;
    take_setter(method_builder_base(name_, parameters < 2 ? "value" : "self, value", doc_, {}, parameters > 1)
                    .body(std::move(function)),
                parameters);
    return std::move(*this);
  }
  // The property, or an Error: "[property_builder::getter] Too many parameters in the getter function.",
  // "[property_builder::setter] Too many parameters in the setter function.", or no getter.
  Result<Property> build() const;

 private:
  void take_getter(I_Callable_Generic getter, std::size_t parameters);
  void take_setter(I_Callable_Generic setter, std::size_t parameters);

  String name_;
  String doc_;
  Any getter_;
  Any setter_;
  Any error_;
};

// One field being described.
struct field_builder_base {
  String name;
  String doc;
  Any default_value;
};

// The module that owns a class.
struct module_entry {
  String name;
};

// Collects the entries of a description and makes the class of them.
class LING_API class_builder_base {
 public:
  explicit class_builder_base(const String& name);
  ~class_builder_base();
  class_builder_base(const class_builder_base&) = delete;
  class_builder_base& operator=(const class_builder_base&) = delete;

  void set_module(module_entry owner);
  void set_doc(const String& doc);
  void add_parent(const Class_Generic& parent);
  void add_flags(std::uint64_t flags);
  void add_field(field_builder_base field);
  void add_property(const String& name, const Result<Property>& property);
  // Overloads under one name become a multimethod.
  void add_method(const String& name, const I_Callable_Generic& method);
  void add_class_method(const String& name, const I_Callable_Generic& method);
  void add_expected_members(const String& names);
  void set_constructor(const I_Callable_Generic& constructor);
  void set_allocator(object_value_class::allocator allocate, const std::type_info* native_type);
  void set_native_base(const Class_Generic& parent, void* (*upcast)(void*));
  void set_hooks(const dynamic_member_hooks& hooks);
  // The class, or the first error of the description.
  Result<Class_Generic> build();
  const String& module_name() const noexcept { return module_; }

 private:
  struct entries;
  std::unique_ptr<entries> entries_;
  String module_;
};

template <class T>
class class_builder : public class_builder_base {
 public:
  using class_builder_base::class_builder_base;

  class_builder& module(const String& name) { return set_module({name}), *this; }
  class_builder& doc(const String& text) { return set_doc(text), *this; }
  class_builder& parent(const Class_Generic& of_class) { return add_parent(of_class), *this; }
  // A parent class whose C++ data is a base class of T.
  template <class Base>
  class_builder& native_parent(const Class_Generic& of_class) {
    static_assert(std::derived_from<T, Base>);
    add_parent(of_class);
    set_native_base(of_class, [](void* data) -> void* { return static_cast<Base*>(static_cast<T*>(data)); });
    return *this;
  }
  class_builder& flags(std::uint64_t bits) { return add_flags(bits), *this; }

  // A function that makes the C++ value of an instance; or, for other classes, one that makes the value itself and
  // takes the class that was called, which may be a descendant, as its first parameter.
  template <class F>
  class_builder& constructor(const String& signature_text, const String& doc, F function,
                             std::vector<Any> defaults = {}) {
    method_builder_base builder("__init__", internal::with_receiver("class", signature_text), doc, std::move(defaults),
                                true);
    if constexpr (std::same_as<std::remove_cvref_t<typename internal::callable_traits<F>::result>, T> &&
                  !handle_type<T>) {
      set_constructor(std::move(builder).body(
          native_constructor(function, std::type_identity<typename internal::parameters_of<F>::type>())));
    } else {
      set_constructor(std::move(builder).body(std::move(function)));
    }
    return *this;
  }
  class_builder& field(const String& name, const String& doc, const Any& default_value = {}) {
    return add_field({name, doc, default_value}), *this;
  }
  template <class Getter>
  class_builder& property(const String& name, const String& doc, Getter getter) {
    return add_property(name, property_builder_base(name, doc).getter(std::move(getter)).build()), *this;
  }
  template <class Getter, class Setter>
  class_builder& property(const String& name, const String& doc, Getter getter, Setter setter) {
    return add_property(name,
                        property_builder_base(name, doc).getter(std::move(getter)).setter(std::move(setter)).build()),
           *this;
  }
  class_builder& constant(const String& name, const Any& value, const String& doc) {
    return add_property(name, Property::constant(value, doc)), *this;
  }
  // The signature text leaves out the receiver.
  template <class F>
  class_builder& method(const String& name, const String& signature_text, const String& doc, F function,
                        std::vector<Any> defaults = {}) {
    method_builder_base builder(name, internal::with_receiver("self", signature_text), doc, std::move(defaults), true);
    return add_method(name, std::move(builder).body(std::move(function))), *this;
  }
  // A meta-method: an operator or a part of the member access protocol.
  template <class F>
  class_builder& method(meta_method_untyped name, const String& signature_text, F function) {
    return method(name.name(), signature_text, String(), std::move(function));
  }
  // A method that takes no instance.
  template <class F>
  class_builder& class_method(const String& name, const String& signature_text, const String& doc, F function,
                              std::vector<Any> defaults = {}) {
    return add_class_method(name, make_function(name, signature_text, doc, std::move(function), std::move(defaults))),
           *this;
  }
  // Of an interface: the members that a conforming class has, as in "name, doc". They are listed, never looked up.
  class_builder& expects(const String& names) { return add_expected_members(names), *this; }
  class_builder& hooks(const dynamic_member_hooks& functions) { return set_hooks(functions), *this; }

 private:
  template <class F, class... P>
  static auto native_constructor(F function, std::type_identity<std::tuple<P...>>) {
    return [function](Class_Generic of_class, std::remove_cvref_t<P>... arguments) -> Any {
      return make<object_value_native<T>>(of_class.object(), function(std::move(arguments)...));
    };
  }
};

// The one place where a class is described, and the way to the class.
class LING_API class_definition_base {
 public:
  class_definition_base(const class_definition_base&) = delete;
  class_definition_base& operator=(const class_definition_base&) = delete;

  const char* name() const noexcept { return name_; }
  // The class, built on first request; or the error of its description.
  Result<Class_Generic> get() const {
    if (object_value_class* built = built_.get()) [[likely]] {
      return Class_Generic(*built);
    }
    return build();
  }
  // The class, null as long as it is not built.
  object_value_class* if_built() const noexcept { return built_.get(); }
  // The class of a description that is known to be right; ends the process with the error otherwise.
  object_value_class& required() const {
    if (object_value_class* built = built_.get()) [[likely]] {
      return *built;
    }
    return build_required();
  }

 protected:
  constexpr class_definition_base(const char* name,
                                  Result<Class_Generic> (*describe)(const class_definition_base&, String& module),
                                  const std::type_info* native_type) noexcept
      : name_(name), describe_(describe), native_type_(native_type) {}
  ~class_definition_base() = default;

 private:
  Result<Class_Generic> run_description(String& module) const;
  Result<Class_Generic> build() const;
  object_value_class& build_required() const;

  const char* name_;
  Result<Class_Generic> (*describe_)(const class_definition_base&, String& module);
  const std::type_info* native_type_;
  mutable internal::published<object_value_class> built_;
};

template <class T>
class class_definition : public class_definition_base {
 public:
  using description = void (*)(class_builder<T>&);
  constexpr class_definition(const char* name, description describe) noexcept
      : class_definition_base(name, &run, native_type()), describe_(describe) {}

 private:
  static constexpr bool has_native_data = !std::is_void_v<T> && !handle_type<T>;
  static constexpr const std::type_info* native_type() noexcept {
    if constexpr (has_native_data) {
      return &typeid(T);
    } else {
      return nullptr;
    }
  }
  static Result<Class_Generic> run(const class_definition_base& base, String& module) {
    class_builder<T> builder{String(base.name())};
    if constexpr (has_native_data) {
      if constexpr (std::default_initializable<T>) {
        builder.set_allocator(
            [](object_value_class& of_class) -> Any { return make<object_value_native<T>>(of_class); }, &typeid(T));
      } else {
        builder.set_allocator(nullptr, &typeid(T));
      }
    }
    if constexpr (!has_native_data && !std::is_void_v<T>) {
      // Only the runtime makes the objects behind its handles.
      builder.set_allocator(&internal::refuse_allocation, nullptr);
    }
    static_cast<const class_definition&>(base).describe_(builder);
    module = builder.module_name();
    return builder.build();
  }

  description describe_;
};

// Queues the building of classes at init level Classes; stands at namespace scope behind the definitions, which it
// keeps references to.
class LING_API class_registration {
 public:
  class_registration(std::initializer_list<std::reference_wrapper<const class_definition_base>> definitions);
};

}  // namespace ling
