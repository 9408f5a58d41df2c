// Dynamic libraries through dlopen.
#include "ling/modules/dynamic_library.h"

#include <dlfcn.h>

namespace ling::internal {

namespace {
std::string last_error() {
  const char* text = dlerror();
  return text == nullptr ? "unknown error" : text;
}
}  // namespace

void* open_dynamic_library(const std::string& path, std::string& error) {
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    error = last_error();
  }
  return library;
}

void* find_dynamic_symbol(void* library, const char* symbol, std::string& error) {
  void* address = dlsym(library, symbol);
  if (address == nullptr) {
    error = last_error();
  }
  return address;
}

}  // namespace ling::internal
