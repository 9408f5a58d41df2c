// Loading plug-ins.
#include "ling/extension.h"

#include "ling/detail/immortal.h"
#include "ling/detail/try.h"
#include "ling/modules/dynamic_library.h"
#include "ling/modules/initialization.h"
#include "ling/none.h"
#include "ling/type.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace ling {

namespace {

constexpr char init_symbol[] = "corvantis_extension_init";
constexpr char bind_symbol[] = "corvantis_extension_bind_api";

using entry_point = void (*)();

// A library whose entry points were called, or are being called. Guarded by the turn to initialise.
struct loaded_library {
  void* library;
  Any outcome;  // of its init handlers; empty until they have run
};
std::vector<loaded_library>& loaded() {
  static internal::immortal<std::vector<loaded_library>> libraries;
  return libraries.object;
}
auto find_loaded(void* library) {
  return std::find_if(loaded().begin(), loaded().end(), [&](const auto& each) { return each.library == library; });
}

// A plain name means a file in the current directory; the system would look for it along its library path.
std::string absolute_path(const String& path) {
  const std::string_view text = path.view();
  std::error_code unknown_directory;
  const auto absolute =
      std::filesystem::absolute(std::u8string(text.begin(), text.end()), unknown_directory).u8string();
  return unknown_directory ? std::string(text) : std::string(absolute.begin(), absolute.end());
}

Result<None> call_entry_point(void* address, const char* symbol, const String& path) {
  const Result<None> called = internal::guarded([address]() -> Result<None> {
    reinterpret_cast<entry_point>(address)();
    return None();
  });
  if (!called.is_error() || called.has(internal::intolerable)) {
    return called;
  }
  const Error failure = called.error();
  const Error error(String("Extension {}: {} failed: {}").arg(path, symbol, failure.message()));
  error.setCause(failure.cause());
  return error;
}

Result<None> call_entry_points(void* library, const String& path) {
  std::string problem;
  void* init = internal::find_dynamic_symbol(library, init_symbol, problem);
  if (init == nullptr) {
    return Error(String("Not an extension: {} lacks the symbol {}: {}").arg(path, init_symbol, problem));
  }
  TRY(call_entry_point(init, init_symbol, path));
  if (void* bind = internal::find_dynamic_symbol(library, bind_symbol, problem)) {
    TRY(call_entry_point(bind, bind_symbol, path));
  }
  return None();
}

Result<None> load(const String& path) {
  const internal::initialization_turn turn;
  // Inside of another initialisation, the handlers that wait already are that one's to run and to answer for.
  const std::size_t others = turn.is_nested() ? internal::waiting_handlers() : 0;
  std::string problem;
  void* library = internal::open_dynamic_library(absolute_path(path), problem);
  if (library == nullptr) {
    return Error(String("Unable to load the extension {}: {}").arg(path, problem));
  }
  if (const auto known = find_loaded(library); known != loaded().end()) {
    return Result<None>::unchecked(known->outcome);
  }
  loaded().push_back({library, {}});
  const Result<None> called = internal::guarded([&] { return call_entry_points(library, path); });
  if (called.is_error()) {
    loaded().erase(find_loaded(library));  // so that it can be tried again
    return called;
  }
  const Result<None> initialized = internal::run_handlers(others);
  find_loaded(library)->outcome = initialized;
  return initialized;
}

}  // namespace

Result<None> load_extension(const String& path) {
  if (path.empty()) {
    return Error("Unable to load an extension: the path is empty.");  // the system would take it for the program itself
  }
  return internal::guarded([&] { return load(path); });
}

}  // namespace ling
