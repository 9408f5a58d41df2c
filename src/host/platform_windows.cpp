// The system as Windows has it.
#include "host/platform.h"

#include <windows.h>

#include <string>

namespace ling::host {

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

}  // namespace ling::host
