// Python modules as modules of the host. The lock must be held.
//
// Defined in proxies/python_module.cpp.
#pragma once

#include "ling/module.h"
#include "ling/union.h"

namespace ling::cpython {

// Imports the Python module and puts it into the host's table of modules under `name`. What is there already under that
// name stays what it was, so doing it twice gives the same module. An Error when the import fails, in which case
// nothing is put anywhere, or when the name is that of another module of the host's. Shows no warnings.
Result<Module> export_python_module(const String& name, const String& python_name);

}  // namespace ling::cpython
