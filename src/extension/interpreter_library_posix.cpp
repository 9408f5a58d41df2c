// A host loads this module, and with it the interpreter library, with local symbols as a rule. `import _struct` then
// fails with an undefined symbol: Python's extension modules expect those of the interpreter to be global.
#include "extension/interpreter_library.h"
#include "extension/python_api.h"

#include <dlfcn.h>

namespace ling::cpython {

void open_interpreter_library() noexcept {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&Py_InitializeEx), &info) != 0 && info.dli_fname != nullptr) {
    // The handle stays open, as the interpreter stays alive.
    dlopen(info.dli_fname, RTLD_NOW | RTLD_GLOBAL | RTLD_NOLOAD);
  }
}

}  // namespace ling::cpython
