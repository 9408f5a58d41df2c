// The names that evaluated code finds without importing anything. The lock must be held for every operation.
#pragma once

#include "extension/pyobject_ptr.h"
#include "ling/interfaces.h"
#include "ling/none.h"
#include "ling/union.h"

namespace ling::cpython {

// Stores the value under a name. A value that has no Python counterpart is left out; no exception is left.
void store(PyObject* dict, const String& name, const Any& value);
// Stores the entries of a map, those whose keys are not texts left out. An Error when the map cannot be read.
Result<None> store_all(PyObject* dict, const Union<I_Map_Generic, None>& map);

// The host's modules under their names, a dotted name excepted, and what is in its inlined modules.
void store_modules(PyObject* dict);
// The host's global variables or those that are given in their place.
Result<None> store_globals(PyObject* dict, const Union<I_Map_Generic, None>& globals);

}  // namespace ling::cpython
