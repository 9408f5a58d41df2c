// The context in which a language evaluates code.
#include "ling/evaluation_scope.h"

#include "ling/detail/definitions.h"

namespace ling {

constinit const class_definition<EvaluationScope> internal::evaluation_scope_class(
    "EvaluationScope", [](class_builder<EvaluationScope>& c) {
      using map = Union<I_Map_Generic, None>;
      using mutable_map = Union<I_MutableMap_Generic, None>;
      c.module("ling")
          .doc("The context in which a language evaluates code.")
          .constructor("self, globals, locals, outLocals", "A context; the maps are from String to any value.",
                       [](const Class_Generic&, const Any& self, const map& globals, const map& locals,
                          const mutable_map& out_locals) { return EvaluationScope(self, globals, locals, out_locals); },
                       {None(), None(), None(), None()})
          .property("self", "The value the code is evaluated for, or none.", &EvaluationScope::self)
          .property("globals", "Global variables; none for those of the process.", &EvaluationScope::globals)
          .property("locals", "Local variables, or none.", &EvaluationScope::locals)
          .property("outLocals", "Receives variables back: those whose names it holds.", &EvaluationScope::outLocals);
    });

object_value_evaluation_scope::object_value_evaluation_scope(Any self_value, Any globals_map, Any locals_map,
                                                             Any out_locals_map)
    : object_value_instance(internal::evaluation_scope_class.required()),
      self(std::move(self_value)),
      globals(std::move(globals_map)),
      locals(std::move(locals_map)),
      out_locals(std::move(out_locals_map)) {}

bool EvaluationScope::matches(const object_value* object) noexcept {
  return internal::is_handle_object<object_value_evaluation_scope>(object, internal::evaluation_scope_class);
}
Type EvaluationScope::getType() { return Type::of(getClass()); }
Class_Generic EvaluationScope::getClass() { return internal::evaluation_scope_class.required(); }

}  // namespace ling
