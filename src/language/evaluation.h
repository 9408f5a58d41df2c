// Running Python source for the host: code, expressions, dotted names.
//
// All operations start the interpreter on first need and hold its lock from the first to the last Python call. A Python
// exception becomes the Error that is returned; nothing is raised or thrown.
#pragma once

#include "ling/callable.h"
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

// Runs code as the body of a function, in the context that an EvaluationScope describes; any other scope counts as
// none. Returns what its `return` statement returns, None without one.
//   self       is the variable `self`
//   locals, globals, outLocals   become variables; of two with the same name the one from `locals` wins, then
//   `outLocals`.
//              Without `globals` the host's global variables are taken. Entries that Python cannot take are left out.
//   outLocals  its keys must be Python names; their values after the run are stored under them. A key that has no value
//              by then is an Error.
// The lines and columns of an EvaluationError are those of `code`.
Result<Any> evaluate(const String& code, const Any& scope);

// The value of one expression; `self` and `outLocals` of the scope do not count.
Result<Any> evaluate_expr(const String& code, const Any& scope);

// Code to be run again and again: a callable that takes a scope and does what `evaluate` does with the code. `names`, a
// collection of texts or None, are those of the variables that come back into the scope's `outLocals`.
Result<I_Callable_Generic> compile(const String& code, const Any& names);

// The object with a dotted name: what stands under the last part in the module named by the others, or the module
// itself when there is one part. None for the empty name. Errors: "Unable to find the module: {}.", "Unable to get the
// module dict: {}.", "Unable to find the object: {}.", and that of an import that failed.
Result<Any> resolve(const String& name);

}  // namespace ling::cpython
