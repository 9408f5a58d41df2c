// The module's directory, by asking Windows which module holds an address of ours.
#include "extension/module_directory.h"

#include <windows.h>

#include <string>

namespace ling::cpython {

namespace {

// As long as a path of Windows can be.
constexpr DWORD maximum_path_length = 32768;

}  // namespace

std::filesystem::path module_directory() {
  HMODULE module = nullptr;
  if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCWSTR>(&module_directory), &module) == 0) {
    return {};
  }
  std::string file(maximum_path_length, '\0');
  const DWORD length = GetModuleFileNameA(module, file.data(), maximum_path_length);
  if (length == 0 || length == maximum_path_length) {
    return {};
  }
  file.resize(length);
  return std::filesystem::path(file).parent_path();
}

}  // namespace ling::cpython
