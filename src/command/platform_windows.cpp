// The system as Windows has it.
#include "command/platform.h"

#include <windows.h>

#include <string>

namespace ling::command {

std::filesystem::path program_directory(const char*) {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return std::filesystem::path(path).parent_path();
    }
    path.resize(path.size() * 2);
  }
}

void prepare_locale() {}

// python3.dll passes on the stable functions only; the library that they are in has all.
void* interpreter_symbol(const char* name) {
  const HMODULE stable = GetModuleHandleW(L"python3.dll");
  const FARPROC known = stable == nullptr ? nullptr : GetProcAddress(stable, "Py_IsInitialized");
  HMODULE library = nullptr;
  if (known == nullptr ||
      GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCWSTR>(known), &library) == 0) {
    return nullptr;
  }
  return reinterpret_cast<void*>(GetProcAddress(library, name));
}

int end_by_interrupt() { return static_cast<int>(STATUS_CONTROL_C_EXIT); }

}  // namespace ling::command
