// The Python modules that the host finds from the start.
#pragma once

namespace ling::cpython {

// Makes the module `python` and the modules in it. What cannot be made is left out. The lock must be held.
void build_module_tree();

}  // namespace ling::cpython
