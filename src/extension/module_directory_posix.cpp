// The module's directory, by asking the dynamic linker which file holds an address of ours.
#include "extension/module_directory.h"

#include <dlfcn.h>

namespace ling::cpython {

std::filesystem::path module_directory() {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&module_directory), &info) == 0 || info.dli_fname == nullptr) {
    return {};
  }
  // The name is the one the file was opened by, which may be relative to the directory the process was started in.
  return std::filesystem::absolute(info.dli_fname).parent_path();
}

}  // namespace ling::cpython
