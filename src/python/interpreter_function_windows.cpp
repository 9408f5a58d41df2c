// Symbols of the interpreter library. The library that this module is linked against passes on the limited API only;
// the one that its functions are in has all.
#include "python/interpreter_function.h"
#include "python/python_api.h"

#include <windows.h>

namespace ling::cpython {

void* interpreter_symbol(const char* name) noexcept {
  HMODULE library = nullptr;
  if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCWSTR>(&Py_IsInitialized), &library) == 0) {
    return nullptr;
  }
  return reinterpret_cast<void*>(GetProcAddress(library, name));
}

}  // namespace ling::cpython
