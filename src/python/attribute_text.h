// Python's texts for the names of attributes that hosts ask for.
#pragma once

#include "ling/name.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// The name as a str, for which the interpreter finds attributes fast when it is the same object each time: those of the
// names that were asked for last are kept. Null with an exception set. The lock must be held.
PyObjectPtr attribute_text(const name_entry& name);

}  // namespace ling::cpython
