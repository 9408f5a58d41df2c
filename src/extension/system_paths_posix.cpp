// The module's directory, by asking the dynamic linker which file holds an address of ours. Paths are bytes.
#include "extension/system_paths.h"

#include <dlfcn.h>

#include <cstdlib>

namespace ling::cpython {

std::filesystem::path module_directory() {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&module_directory), &info) == 0 || info.dli_fname == nullptr) {
    return {};
  }
  // The name is the one the file was opened by, which may be relative to the directory the process was started in.
  return std::filesystem::absolute(info.dli_fname).parent_path();
}

std::filesystem::path environment_path(const char* variable) {
  const char* const value = std::getenv(variable);
  return value == nullptr ? std::filesystem::path() : value;
}

}  // namespace ling::cpython
