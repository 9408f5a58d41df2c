// The functions by which a host enters the module file. They are called from C: nothing is thrown out of them.
#include "extension/search_paths.h"
#include "extension/system_paths.h"
#include "ling/logger.h"

#include <system_error>

#if defined(_WIN32)
#define CORVANTIS_EXPORT __declspec(dllexport)
#else
#define CORVANTIS_EXPORT __attribute__((visibility("default")))
#endif

namespace ling::cpython {

namespace {

constexpr std::int64_t error_level = 40;

void log_error(const String& message) { get_logger().log(LogRecord(error_level, message)); }

void add_path(const std::filesystem::path& path) {
  if (const Result<None> added = add_sys_path(path); added.is_error()) {
    log_error(String("Unable to add {} to sys.path: {}").arg(path_text(path), added.error().message()));
  }
}

void add_user_folder() {
  const std::optional<std::filesystem::path> folder = user_folder();
  if (!folder) {
    return;
  }
  std::error_code failure;
  std::filesystem::create_directories(*folder, failure);
  if (failure) {
    log_error(
        String("Unable to create the folder for Python packages {}: {}").arg(path_text(*folder), failure.message()));
    return;
  }
  add_path(*folder);
}

void add_search_paths() {
  for (const std::filesystem::path& path : library_paths(module_directory())) {
    add_path(path);
  }
  add_user_folder();
}

}  // namespace

}  // namespace ling::cpython

// Finds the places of Python modules. Does not start the interpreter.
extern "C" CORVANTIS_EXPORT void corvantis_extension_init() noexcept {
  using ling::internal::guarded;
  const ling::Any failure = guarded([]() -> ling::Any {
    ling::cpython::add_search_paths();
    return {};
  });
  if (ling::is_error_result(failure)) {
    // Where the log fails as well, nobody is left to tell.
    static_cast<void>(guarded([&]() -> ling::Any {
      ling::cpython::log_error(ling::Error::unchecked(failure).message());
      return {};
    }));
  }
}

// There is nothing to bind: the host's interface is linked.
extern "C" CORVANTIS_EXPORT void corvantis_extension_bind_api() noexcept {}
