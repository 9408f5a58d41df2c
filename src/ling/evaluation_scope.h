// EvaluationScope: the context in which a language evaluates code.
//
// Errors: the language tells what is wrong with the maps when it evaluates. Threads: immutable; the maps have their own
// rules.
#pragma once

#include "ling/instance.h"
#include "ling/interfaces.h"

namespace ling {

class LING_API object_value_evaluation_scope final : public object_value_instance {
 public:
  object_value_evaluation_scope(Any self, Any globals, Any locals, Any out_locals);
  const Any self, globals, locals, out_locals;
};

class LING_API EvaluationScope : public Handle<EvaluationScope, object_value_evaluation_scope> {
  LING_HANDLE(EvaluationScope, object_value_evaluation_scope)
  // Each of the maps is a map from String to any value, or None.
  EvaluationScope(const Any& self, const Any& globals, const Any& locals, const Any& outLocals)
      : Handle(new object_value_evaluation_scope(self, globals, locals, outLocals)) {}

  Any self() const { return object().self; }
  Union<I_Map_Generic, None> globals() const { return I_Map_Generic::cast(object().globals); }
  Union<I_Map_Generic, None> locals() const { return I_Map_Generic::cast(object().locals); }
  // Receives variables back.
  Union<I_MutableMap_Generic, None> outLocals() const { return I_MutableMap_Generic::cast(object().out_locals); }

  static bool matches(const object_value* object) noexcept;
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
