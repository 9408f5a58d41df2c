// Symbols of the interpreter library, which is among those that this module is linked against.
#include "python/interpreter_function.h"

#include <dlfcn.h>

namespace ling::cpython {

void* interpreter_symbol(const char* name) noexcept { return dlsym(RTLD_DEFAULT, name); }

}  // namespace ling::cpython
