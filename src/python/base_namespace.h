// The names that code finds without importing anything: the host's modules and what is in those that are inlined.
//
// Defined in bridge/base_namespace.cpp.
#pragma once

#include "python/pyobject_ptr.h"

namespace ling::cpython {

enum class base_names {
  modules,             // those without a dot in their names
  modules_and_inlined  // and what is in inlined modules, whatever these are called
};

// A new dict with these names; null with an exception set when it cannot be made. Costs the same with ten modules and
// ten thousand: it is the copy of one that is kept until one of them changes. The lock must be held.
PyObjectPtr new_namespace(base_names names);

}  // namespace ling::cpython
