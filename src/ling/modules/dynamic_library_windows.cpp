// Dynamic libraries through LoadLibrary.
#include "ling/modules/dynamic_library.h"

#include <windows.h>

#include <filesystem>
#include <system_error>

namespace ling::internal {

namespace {
std::string last_error() { return std::system_category().message(static_cast<int>(GetLastError())); }
}  // namespace

void* open_dynamic_library(const std::string& path, std::string& error) {
  const std::filesystem::path file(std::u8string(path.begin(), path.end()));
  // The altered search looks for what the library needs beside the library, not beside the program.
  HMODULE library = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (library == nullptr) {
    error = last_error();
  }
  return reinterpret_cast<void*>(library);
}

void* find_dynamic_symbol(void* library, const char* symbol, std::string& error) {
  void* address = reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), symbol));
  if (address == nullptr) {
    error = last_error();
  }
  return address;
}

}  // namespace ling::internal
