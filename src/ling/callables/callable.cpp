// Functions, bound methods and constants.
#include "ling/callable.h"

#include "ling/class_builder.h"
#include "ling/detail/argument_row.h"
#include "ling/detail/definitions.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"
#include "ling/reflection.h"
#include "ling/signature.h"

namespace ling {

constinit const class_definition<I_Callable_Generic> internal::callable_class(
    "I_Callable", [](class_builder<I_Callable_Generic>& c) {
      c.module("ling")
          .doc("What can be called. Properties: name, doc.")
          .flags(class_flags::callable | class_flags::interface)
          .expects("name, doc");
    });

constinit const class_definition<I_Callable_Generic> internal::function_class(
    "Function", [](class_builder<I_Callable_Generic>& c) {
      c.doc("A function, a method, or a method with its receiver.")
          .parent(I_Callable_Generic::getClass())
          .parent(I_Immutable::getClass())
          .parent(I_HasName::getClass())
          .parent(I_HasDoc::getClass())
          .property("name", "The name it was declared with.",
                    [](const I_Callable_Generic& self) { return self.name(); })
          .property("doc", "What it does.", [](const I_Callable_Generic& self) { return self.doc(); })
          .property("signature", "What it takes and returns.",
                    [](const I_Callable_Generic& self) { return self.signature(); });
    });

Type I_Callable_Generic::getType() { return Type::of(getClass()); }
Class_Generic I_Callable_Generic::getClass() { return internal::callable_class.required(); }

// --- the handle ------------------------------------------------------------------------------------------------------

Any I_Callable_Generic::callWith(const List_Generic& arguments) const {
  // The row is shared: nothing is copied.
  const item_row row = arguments.object().share_items();
  return callWith(row.items());
}

Type I_Callable_Generic::resultType() const { return object().result_type(); }

I_Callable_Generic I_Callable_Generic::bindInstance(const Any& instance) const {
  if (type() != ObjectType::Multimethod) [[likely]] {
    return unchecked(make<object_value_bound>(*this, instance));
  }
  const auto& multimethod = static_cast<const object_value_multimethod&>(object());
  const bool binds_all = isIndependent();
  std::vector<I_Callable_Generic> overloads;
  for (const I_Callable_Generic& each : multimethod.overloads()) {
    overloads.push_back(each.isIndependent() && !binds_all ? each : each.bindInstance(instance));
  }
  return unchecked(make<object_value_multimethod>(multimethod.name(), std::move(overloads)));
}

// --- functions -------------------------------------------------------------------------------------------------------

object_value_function::object_value_function(declaration declared, native_types types)
    : object_value_receiving_callable(!declared.has_receiver), declaration_(std::move(declared)), types_(types) {}

object_value_function::~object_value_function() {
  if (object_value* signature = signature_.get()) {
    signature->release();
  }
  if (object_value* context = declaring_context_.get()) {
    context->release();
  }
}

object_value_class& object_value_function::object_class() const { return internal::function_class.required(); }

Result<Signature> object_value_function::signature() const {
  if (object_value* made = signature_.get()) {
    return Signature::unchecked(Any::share(made));
  }
  const std::vector<Type> types = types_.parameters();
  const std::vector<String> names =
      declaration_.signature_text.empty() ? std::vector<String>() : declaration_.signature_text.split(',');
  if (names.size() != types.size()) {
    return Error(String("The signature text '{}' of '{}' does not name the {} parameters of the function.")
                     .arg(declaration_.signature_text, declaration_.name, types.size()));
  }
  std::vector<Parameter> parameters;
  for (std::size_t i = 0; i < names.size(); ++i) {
    String name = names[i].trimmed();
    const bool variadic = name.endsWith("...");
    if (variadic) {
      name = name.sliced(0, -3).trimmed();
    }
    parameters.emplace_back(name, types[i], variadic);
  }
  Any signature = Signature(types_.result(), std::move(parameters), declaration_.defaults);
  return Signature::unchecked(Any::share(signature_.publish(std::move(signature))));
}

Any object_value_function::declaring_context() const { return Any::share(declaring_context_.get()); }

void object_value_function::set_declaring_context(const Any& context) {
  // A function is declared once; a second context, as when a module shares a function, leaves the first.
  declaring_context_.publish(Any(context));
}

const Any* object_value_function::default_of(std::size_t index, std::size_t parameter_count) const noexcept {
  const std::size_t without = parameter_count - std::min(parameter_count, declaration_.defaults.size());
  return index < without ? nullptr : &declaration_.defaults[index - without];
}

// --- bound methods ---------------------------------------------------------------------------------------------------

object_value_class& object_value_bound::object_class() const { return internal::function_class.required(); }

Any object_value_bound::do_call(std::span<const Any> arguments) const {
  return callable_.callWith(internal::prefixed_row(instance_, arguments));
}

Any object_value_bound::do_call_named(std::span<const Any> positional, std::span<const named_argument> named) const {
  return callable_.object().call_named(internal::prefixed_row(instance_, positional), named);
}

Result<Signature> object_value_bound::signature() const {
  const Signature full = TRY(callable_.signature());
  return full.withoutReceiver();
}

// --- constants -------------------------------------------------------------------------------------------------------

object_value_class& object_value_constant::object_class() const { return internal::function_class.required(); }

Any object_value_constant::do_call(std::span<const Any> arguments) const {
  return arguments.empty() ? value_ : error_arguments_count(arguments.size());
}

Result<Signature> object_value_constant::signature() const {
  return Signature(Type::of(class_of(value_)), std::vector<Parameter>());
}

}  // namespace ling
