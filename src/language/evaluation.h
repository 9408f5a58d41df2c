// Running Python source for the host: code, expressions, dotted names.
//
// All operations start the interpreter on first need and hold its lock from the first to the last Python call. A Python
// exception becomes the Error that is returned; nothing is raised or thrown.
#pragma once

#include "ling/error.h"
#include "ling/interfaces.h"
#include "ling/none.h"
#include "ling/string.h"
#include "ling/union.h"

namespace ling {

// The body of the method `evaluate` of CPythonLanguage.
Result<Any> language_python_evaluate_method(const String& code, const Any& scope);

}  // namespace ling

namespace ling::cpython {

// The bodies of the host's functions of these names: as below, in the context that an EvaluationScope describes. Any
// other scope counts as none.
Result<Any> evaluate(const String& code, const Any& scope);
Result<Any> evaluate_expr(const String& code, const Any& scope);

// Runs code as the body of a function. Returns what its `return` statement returns, None without one.
//   self       is the variable `self`
//   locals, globals, outLocals   become variables; of two with the same name the one from `locals` wins, then
//   `outLocals`.
//              Without `globals` the host's global variables are taken. Entries that Python cannot take are left out.
//   outLocals  its keys must be Python names; their values after the run are stored under them. A key that has no value
//              by then is an Error.
// The lines and columns of an EvaluationError are those of `code`.
Result<Any> evaluate_code(const Any& self, const String& code, const Union<I_Map_Generic, None>& locals,
                          const Union<I_Map_Generic, None>& globals,
                          const Union<I_MutableMap_Generic, None>& outLocals);

// The value of one expression.
Result<Any> evaluate_expression(const String& code, const Union<I_Map_Generic, None>& globals,
                                const Union<I_Map_Generic, None>& locals);

// The object with a dotted name: what stands under the last part in the module named by the others, or the module
// itself when there is one part. None for the empty name. Errors: "Unable to find the module: {}.", "Unable to get the
// module dict: {}.", "Unable to find the object: {}.", and that of an import that failed.
Result<Any> resolve(const String& name);

}  // namespace ling::cpython
