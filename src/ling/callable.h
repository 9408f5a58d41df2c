// Callables: everything that can be called. Functions, methods, bound methods, multimethods, and classes (calling a
// class makes an instance).
//
// A callable is entered through `call` with a row of arguments; the row is borrowed for the call. A method takes its
// receiver as the first argument until it is bound. A callable that takes no receiver although it stands in a class, or
// stands alone, is independent.
//
// Errors: a call returns its result or an Error; C++ exceptions thrown on the way become Errors, in one place for all.
//
// Threads: any, at once; a callable that a host writes is called as threads come. A language enters its own lock in the
// call. `setIndependent` and the declaring context belong to the making.
#pragma once

#include "ling/any.h"
#include "ling/error.h"
#include "ling/published.h"
#include "ling/string.h"
#include "ling/union.h"

#include <atomic>
#include <span>
#include <vector>

namespace ling {

class Class_Generic;
class HashMap_Generic;
class List_Generic;
class Signature;
class Type;

struct named_argument {
  String name;
  Any value;
};

class LING_API object_value_callable : public object_value {
 public:
  Any call(std::span<const Any> arguments) const noexcept {
    return internal::guarded([&] { return do_call(arguments); });
  }
  // Positional arguments first, then those given by name.
  Any call_named(std::span<const Any> positional, std::span<const named_argument> named) const noexcept {
    return internal::guarded([&] { return do_call_named(positional, named); });
  }

  virtual String name() const = 0;
  virtual String doc() const = 0;
  virtual Result<Signature> signature() const = 0;
  virtual bool is_independent() const noexcept { return true; }
  virtual void set_independent(bool) noexcept {}
  // The module or class that declares it, empty when none does.
  virtual Any declaring_context() const { return {}; }
  virtual void set_declaring_context(const Any&) {}

  // What the signature says; untyped, 0 and false when it cannot be told.
  Type result_type() const;
  std::size_t parameter_count() const;
  bool has_variadic_parameters() const;

  // The Error for a call with a number of arguments that the callable does not accept.
  Any error_arguments_count(std::size_t given) const;

 protected:
  explicit object_value_callable(object_traits traits = object_traits::none) noexcept
      : object_value(traits | object_traits::callable) {}

  // What is called; may throw.
  virtual Any do_call(std::span<const Any> arguments) const = 0;
  // The default places named arguments by the parameter names of the signature and fills gaps with defaults; unknown,
  // repeated and missing names are BadArguments.
  virtual Any do_call_named(std::span<const Any> positional, std::span<const named_argument> named) const;
};

class LING_API I_Callable_Generic : public Handle<I_Callable_Generic, object_value_callable> {
  LING_HANDLE(I_Callable_Generic, object_value_callable)

  template <class... Arguments>
  Any operator()(const Arguments&... arguments) const {
    const Any row[sizeof...(Arguments) + 1] = {Any(arguments)..., Any()};
    return object().call(std::span<const Any>(row, sizeof...(Arguments)));
  }
  Any callWith(std::span<const Any> arguments) const { return object().call(arguments); }
  Any callWith(const List_Generic& arguments) const;
  Any callWithNamed(const HashMap_Generic& named) const;
  // Positional arguments, then named ones; a key that is not a String is a BadArgument.
  Any callWithNamed(const List_Generic& positional, const HashMap_Generic& named) const;

  String name() const { return object().name(); }
  String doc() const { return object().doc(); }
  Result<Signature> signature() const { return object().signature(); }
  Type resultType() const;
  std::size_t parameterCount() const { return object().parameter_count(); }
  bool hasVariadicParameters() const { return object().has_variadic_parameters(); }
  bool isIndependent() const noexcept { return object().is_independent(); }
  void setIndependent(bool independent = true) const noexcept { object().set_independent(independent); }
  // A callable that passes `instance` as the first argument. Overloads that take no receiver stay as they are among
  // those that get one.
  I_Callable_Generic bindInstance(const Any& instance) const;
  Any declaringContext() const { return object().declaring_context(); }

  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->has(object_traits::callable);
  }
  static Type getType();
  static Class_Generic getClass();
};

// A callable whose result is known to be a T.
template <class T>
class I_Callable : public Handle<I_Callable<T>, object_value_callable, I_Callable_Generic> {
  using Handle = ling::Handle<I_Callable<T>, object_value_callable, I_Callable_Generic>;
  LING_HANDLE(I_Callable, object_value_callable)
};

// A callable that may take a receiver, and is told whether it does.
class LING_API object_value_receiving_callable : public object_value_callable {
 public:
  ObjectType type() const noexcept override { return ObjectType::Callable; }
  bool is_independent() const noexcept override { return independent_.load(std::memory_order_relaxed); }
  void set_independent(bool independent) noexcept override {
    independent_.store(independent, std::memory_order_relaxed);
  }

 protected:
  explicit object_value_receiving_callable(bool independent) noexcept : independent_(independent) {}

 private:
  std::atomic<bool> independent_;
};

// A callable that keeps what it was declared with.
class LING_API object_value_function : public object_value_receiving_callable {
 public:
  // What a native function's parameters and result are; asked for on first need, since the classes it names may not be
  // built yet when the function is declared.
  struct native_types {
    std::vector<Type> (*parameters)();
    Type (*result)();
  };
  // How the function is declared. The signature text lists the parameter names: "path, flags, rest...", where three
  // dots mark a variadic last parameter. Defaults belong to the last parameters.
  struct declaration {
    String name;
    String signature_text;
    String doc;
    std::vector<Any> defaults;
    bool has_receiver = false;
  };

  object_value_class& object_class() const override;
  String name() const override { return declaration_.name; }
  String doc() const override { return declaration_.doc; }
  Result<Signature> signature() const override;
  Any declaring_context() const override;
  void set_declaring_context(const Any& context) override;

 protected:
  object_value_function(declaration declared, native_types types);

  // The default of parameter `index`, null when it has none.
  const Any* default_of(std::size_t index, std::size_t parameter_count) const noexcept;
  Any error_bad_argument(std::size_t index, const Any& value) const;

 private:
  const declaration declaration_;
  const native_types types_;
  mutable internal::published<object_value> signature_;
  internal::published<object_value> declaring_context_;

 public:
  ~object_value_function() override;
};

// A callable with its receiver.
class LING_API object_value_bound final : public object_value_callable {
 public:
  object_value_bound(I_Callable_Generic callable, Any instance) noexcept
      : callable_(std::move(callable)), instance_(std::move(instance)) {}

  ObjectType type() const noexcept override { return ObjectType::Callable; }
  object_value_class& object_class() const override;
  Any do_call(std::span<const Any> arguments) const override;
  Any do_call_named(std::span<const Any> positional, std::span<const named_argument> named) const override;
  String name() const override { return callable_.name(); }
  String doc() const override { return callable_.doc(); }
  Result<Signature> signature() const override;  // without the receiver
  Any declaring_context() const override { return callable_.declaringContext(); }

  const I_Callable_Generic& callable() const noexcept { return callable_; }
  const Any& instance() const noexcept { return instance_; }

 private:
  I_Callable_Generic callable_;
  Any instance_;
};

// A callable without parameters that always answers the same value; the getter of constant properties.
class LING_API object_value_constant final : public object_value_callable {
 public:
  explicit object_value_constant(Any value) noexcept : value_(std::move(value)) {}
  ObjectType type() const noexcept override { return ObjectType::Callable; }
  object_value_class& object_class() const override;
  Any do_call(std::span<const Any> arguments) const override;
  String name() const override { return {}; }
  String doc() const override { return {}; }
  Result<Signature> signature() const override;

  const Any& value() const noexcept { return value_; }

 private:
  const Any value_;
};

// Overloads under one name. A call goes to the overload whose parameters fit the arguments best: by number, then by how
// near the classes of the arguments are to those of the parameters; the first declared wins a tie. When none fits, the
// BadArgument lists the candidates.
class LING_API object_value_multimethod final : public object_value_callable {
 public:
  // At least one overload.
  object_value_multimethod(String name, std::vector<I_Callable_Generic> overloads)
      : name_(std::move(name)), overloads_(std::move(overloads)) {}
  ObjectType type() const noexcept override { return ObjectType::Multimethod; }
  object_value_class& object_class() const override;
  Any do_call(std::span<const Any> arguments) const override;
  Any do_call_named(std::span<const Any> positional, std::span<const named_argument> named) const override;
  String name() const override { return name_; }
  String doc() const override;                               // the docs of the overloads, one after the other
  Result<Signature> signature() const override;              // variadic, untyped
  bool is_independent() const noexcept override;             // when all overloads are
  void set_independent(bool independent) noexcept override;  // of every overload
  Any declaring_context() const override;
  void set_declaring_context(const Any& context) override;  // of every overload

  const std::vector<I_Callable_Generic>& overloads() const noexcept { return overloads_; }
  // The overloads that take no receiver.
  std::vector<I_Callable_Generic> independent_functions() const;

 private:
  String name_;
  std::vector<I_Callable_Generic> overloads_;
};

}  // namespace ling
