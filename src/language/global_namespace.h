// The names that evaluated code finds without importing anything. The lock must be held for every operation.
#pragma once

#include "ling/interfaces.h"
#include "ling/none.h"
#include "ling/union.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// Stores the entries of a map, those whose keys are not texts left out. An Error when the map cannot be read.
Result<None> store_all(PyObject* dict, const Union<I_Map_Generic, None>& map);

// What is in the host's inlined modules, under its own names.
void store_inlined_members(PyObject* dict);
// The host's global variables or those that are given in their place.
Result<None> store_globals(PyObject* dict, const Union<I_Map_Generic, None>& globals);

}  // namespace ling::cpython
