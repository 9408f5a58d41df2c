// None and Undefined: two shared objects.
#include "ling/none.h"

#include "ling/detail/definitions.h"
#include "ling/detail/immortal.h"
#include "ling/interfaces.h"

namespace ling {

namespace internal {

constinit const class_definition<None> none_class("None", [](class_builder<None>& c) {
  c.module("ling").doc("The absence of a value.").parent(I_Immutable::getClass());
});

constinit const class_definition<Undefined> undefined_class("Undefined", [](class_builder<Undefined>& c) {
  c.module("ling").doc("The answer that an operation does not apply to its operands.").parent(I_Immutable::getClass());
});

}  // namespace internal

namespace {

class object_value_none final : public object_value {
 public:
  constexpr object_value_none() noexcept : object_value(object_traits::immortal) {}
  ObjectType type() const noexcept override { return ObjectType::None; }
  object_value_class& object_class() const override { return internal::none_class.required(); }
};

class object_value_undefined final : public object_value {
 public:
  constexpr object_value_undefined() noexcept : object_value(object_traits::immortal) {}
  ObjectType type() const noexcept override { return ObjectType::Undefined; }
  object_value_class& object_class() const override { return internal::undefined_class.required(); }
};

constinit internal::immortal<object_value_none> none_object;
constinit internal::immortal<object_value_undefined> undefined_object;

}  // namespace

None::None() noexcept : None(Unchecked{}, Any::share(&none_object.object)) {}

Type None::getType() { return Type::of(getClass()); }

Class_Generic None::getClass() { return Class_Generic(internal::none_class.required()); }

Undefined::Undefined() noexcept : Undefined(Unchecked{}, Any::share(&undefined_object.object)) {}

Type Undefined::getType() { return Type::of(getClass()); }

Class_Generic Undefined::getClass() { return Class_Generic(internal::undefined_class.required()); }

}  // namespace ling
