// Ordering: four shared objects of a described class.
#include "ling/ordering.h"

#include "ling/detail/definitions.h"
#include "ling/interfaces.h"
#include "ling/published.h"

#include <array>
#include <memory>

namespace ling {

namespace internal {

constinit const class_definition<Ordering> ordering_class("Ordering", [](class_builder<Ordering>& c) {
  c.module("ling")
      .doc("The outcome of comparing two values.")
      .parent(I_Immutable::getClass())
      .property("value", "-1, 0 or 1, and 2 for values that cannot be compared.", &Ordering::value)
      // Functions, not constants: the values are instances of the class that is being described here.
      .property("Less", "The left value comes first.", [] { return Ordering(ordering_value::Less); })
      .property("Equal", "Neither value comes first.", [] { return Ordering(ordering_value::Equal); })
      .property("Greater", "The right value comes first.", [] { return Ordering(ordering_value::Greater); })
      .property("Incomparable", "The values have no order.", [] { return Ordering(ordering_value::Incomparable); })
      .method(Any::__display__, "", [](const Ordering& self) {
        constexpr const char* names[] = {"Less", "Equal", "Greater", "Incomparable"};
        return String(names[self.value() + 1]);
      });
});

}  // namespace internal

namespace {

constinit std::array<internal::published<object_value_ordering>, 4> shared_orderings{};

object_value_ordering& shared_ordering(ordering_value value) {
  auto& shared = shared_orderings[static_cast<std::size_t>(static_cast<int>(value) + 1)];
  return *shared.get_or_make(
      [&] { return std::make_unique<object_value_ordering>(internal::ordering_class.required(), value); });
}

}  // namespace

Ordering::Ordering(ordering_value value) : Ordering(Unchecked{}, Any::share(&shared_ordering(value))) {}

// By identity: an instance that somebody allocates of the class, or of one derived from it, carries no value.
bool Ordering::matches(const object_value* object) noexcept {
  for (const auto& shared : shared_orderings) {
    if (object != nullptr && object == shared.get()) {
      return true;
    }
  }
  return false;
}

Type Ordering::getType() { return Type::of(getClass()); }

Class_Generic Ordering::getClass() { return Class_Generic(internal::ordering_class.required()); }

}  // namespace ling
