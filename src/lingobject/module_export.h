// Host modules as Python modules: what the importer for the names "ling" and "ling.…" is made of. The lock must be
// held.
#pragma once

#include "ling/string.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// `_ling_has_module(name)` for Python: whether the host has a module of that name; False for what is no name.
PyObject* has_ling_module(PyObject* self, PyObject* name);
// `_ling_create_module(name)` for Python: a new module, or null with an exception set.
PyObject* create_ling_module(PyObject* self, PyObject* name);

// A new Python module that holds what the host's module of that name has now: its callables, its classes, and the
// values of its properties. Null with an exception set. A property that cannot be read is left out, with a warning.
PyObjectPtr export_ling_module(const String& name);

}  // namespace ling::cpython
