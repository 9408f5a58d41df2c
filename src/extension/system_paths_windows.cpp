// The module's directory, by asking Windows which module holds an address of ours. Paths are UTF-16.
#include "extension/system_paths.h"

#include <windows.h>

#include <cstdlib>
#include <string>
#include <string_view>

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
  std::wstring file(maximum_path_length, L'\0');
  const DWORD length = GetModuleFileNameW(module, file.data(), maximum_path_length);
  if (length == 0 || length == maximum_path_length) {
    return {};
  }
  file.resize(length);
  return std::filesystem::path(file).parent_path();
}

std::filesystem::path environment_path(const char* variable) {
  const std::string_view name = variable;
  const wchar_t* const value = _wgetenv(std::wstring(name.begin(), name.end()).c_str());
  return value == nullptr ? std::filesystem::path() : value;
}

}  // namespace ling::cpython
