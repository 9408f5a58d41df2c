// Methods of Python types.
#include "proxies/python_method.h"

#include "ling/class_builder.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"
#include "proxies/cpython_object.h"
#include "proxies/python_type.h"
#include "python/call_python.h"
#include "python/interpreter.h"
#include "python/pending_exception.h"
#include "python/python_callable.h"
#include "python/python_text.h"

namespace ling::cpython {

namespace {

constinit const class_definition<I_Callable_Generic> python_method_class(
    "CPythonMethod", [](class_builder<I_Callable_Generic>& c) {
      c.module("ling.cpython")
          .doc("A method of a Python class.")
          .flags(class_flags::callable)
          .parent(I_Callable_Generic::getClass())
          .parent(I_HasName::getClass())
          .parent(I_HasDoc::getClass())
          .property("name", "The name in the class.", [](const I_Callable_Generic& self) { return self.name(); })
          .property("doc", "What it does.", [](const I_Callable_Generic& self) { return self.doc(); })
          .property("signature", "What it takes and returns.",
                    [](const I_Callable_Generic& self) { return self.signature(); });
    });

class object_value_python_method final : public object_value_python_callable {
 public:
  object_value_python_method(String name, PyObjectPtr function, receiver takes) noexcept
      : object_value_python_callable(std::move(function), takes == receiver::none), name_(std::move(name)) {}

  object_value_class& object_class() const override { return python_method_class.required(); }
  Any do_call(std::span<const Any> arguments) const override { return do_call_named(arguments, {}); }
  Any do_call_named(std::span<const Any> positional, std::span<const named_argument> named) const override;
  String name() const override { return name_; }
  Any declaring_context() const override;
  void set_declaring_context(const Any& context) override;

 private:
  const String name_;
};

// The class of a Python type holds its methods: kept by them, it would live for ever. They keep its type, which leads
// to the class.
Any object_value_python_method::declaring_context() const {
  const Any context = object_value_python_callable::declaring_context();
  if (!CPythonObject::matches(context.get())) {
    return context;
  }
  if (ensure_interpreter().is_error()) {
    return {};
  }
  const GilGuard gil;
  const auto of_class = class_of_python_type(python_object_of(context).get());
  internal::tolerate_error(of_class);
  return of_class ? Any(of_class.value()) : Any();
}

void object_value_python_method::set_declaring_context(const Any& context) {
  Any kept = context;
  if (const auto of_class = Class_Generic::cast(context); of_class && !interpreter_has_ended()) {
    const GilGuard gil;
    PyObject* const type = python_type_behind(of_class->object());
    kept = type == nullptr ? context : make_python_object(type);
  }
  object_value_python_callable::set_declaring_context(kept);
}

Any object_value_python_method::do_call_named(std::span<const Any> positional,
                                              std::span<const named_argument> named) const {
  constexpr std::size_t maximum_arguments = 12;
  if (positional.size() > maximum_arguments) {
    return error_arguments_count(positional.size());
  }
  TRY(ensure_interpreter());
  const GilGuard gil;
  if (PyCallable_Check(function()) == 0) {
    return Error("The source object isn't a function.");
  }
  return call_python(function(), positional, named);
}

// One of the functions of a `property`, which passes the object to it; empty when it is missing or cannot be called.
Any accessor(PyObjectPtr_Borrowed property, const char* name) {
  const PyObjectPtr function(PyObject_GetAttrString(property.get(), name));
  drop_exception();
  if (!function || PyCallable_Check(function.get()) == 0) {
    return {};
  }
  return make_python_method(String(), function.get(), receiver::first_argument);
}

}  // namespace

I_Callable_Generic make_python_method(const String& name, PyObjectPtr_Borrowed function, receiver takes) {
  return I_Callable_Generic::unchecked(make<object_value_python_method>(name, PyObjectPtr::share(function), takes));
}

Union<Property, None> make_python_property(PyObjectPtr_Borrowed property, const String& doc) {
  const Any getter = accessor(property, "fget");
  if (getter.empty()) {
    return None();
  }
  const Any setter = accessor(property, "fset");
  const auto get = I_Callable_Generic::unchecked(getter);
  return setter.empty() ? Property(get, doc) : Property(get, I_Callable_Generic::unchecked(setter), doc);
}

}  // namespace ling::cpython
