// The system as POSIX has it.
#include "command/platform.h"

#include <dlfcn.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>

namespace ling::command {

std::filesystem::path program_directory(const char* argv0) {
  std::error_code failure;
  std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failure);
  if (failure) {
    program = std::filesystem::canonical(argv0, failure);
  }
  return program.parent_path();
}

void prepare_locale() {
  // As python3 does for itself; an embedded interpreter leaves it to the host. An explicit LC_ALL is obeyed.
  const char* all = std::getenv("LC_ALL");
  if (all != nullptr && *all != '\0') {
    return;
  }
  const char* current = std::setlocale(LC_CTYPE, "");
  if (current != nullptr && std::strcmp(current, "C") == 0 && std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr) {
    setenv("LC_CTYPE", "C.UTF-8", 1);
  }
}

// The language module has made the library's names global.
void* interpreter_symbol(const char* name) { return dlsym(RTLD_DEFAULT, name); }

int end_by_interrupt() {
  std::fflush(nullptr);
  std::signal(SIGINT, SIG_DFL);
  kill(getpid(), SIGINT);
  return 128 + SIGINT;
}

}  // namespace ling::command
