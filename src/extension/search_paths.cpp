// The queue of paths, and the places that go into it.
#include "extension/search_paths.h"

#include "extension/system_paths.h"
#include "ling/detail/try.h"
#include "ling/logger.h"
#include "ling/spinlock.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/interpreter.h"
#include "python/pending_exception.h"

#include <mutex>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>
#include <variant>

namespace ling::cpython {

namespace {

namespace fs = std::filesystem;

spinlock pending_lock;

// Text, or what the system spelled. Python makes a str of the latter once it runs, and knows how.
using any_path = std::variant<String, fs::path>;

// Lives as long as the process: paths may be queued by static initialisers.
std::vector<any_path>& pending_paths() {
  static auto* const paths = new std::vector<any_path>;
  return *paths;
}

// False when the interpreter runs. The answer and the queueing are one step, so that no path gets into the queue behind
// the start, which empties it once.
bool queue_path(const any_path& path) {
  std::vector<any_path>& paths = pending_paths();
  const std::lock_guard guard(pending_lock);
  if (Py_IsInitialized() != 0) {
    return false;
  }
  paths.push_back(path);
  return true;
}

template <class Character>
PyObject* decode(const std::basic_string<Character>& native) {
  const auto size = static_cast<Py_ssize_t>(native.size());
  if constexpr (std::is_same_v<Character, char>) {
    return PyUnicode_DecodeFSDefaultAndSize(native.data(), size);
  } else {
    return PyUnicode_FromWideChar(native.data(), size);
  }
}

PyObjectPtr path_to_python(const any_path& path) {
  const auto* const native = std::get_if<fs::path>(&path);
  return native == nullptr ? to_python_locked(std::get<String>(path)) : PyObjectPtr(decode(native->native()));
}

Result<None> add_or_queue(const any_path& path) {
  if (interpreter_has_ended()) {
    return error_interpreter_ended();
  }
  if (queue_path(path)) {
    return None();
  }
  const GilGuard lock;
  const PyObjectPtr sys(PyImport_ImportModule("sys"));
  const PyObjectPtr sys_path(sys ? PyObject_GetAttrString(sys.get(), "path") : nullptr);
  const PyObjectPtr text = sys_path ? path_to_python(path) : PyObjectPtr();
  if (!text) {
    return capture_error_or("Unable to add a path to sys.path.");
  }
  const int found = PySequence_Contains(sys_path.get(), text.get());
  if (found == 1) {
    return None();
  }
  // An entry that cannot be compared is not this path.
  tolerate_exception();
  if (PyList_Append(sys_path.get(), text.get()) != 0) {
    return capture_error_or("Unable to add a path to sys.path.");
  }
  return None();
}

fs::path below(fs::path directory, const char* rest) { return directory += rest; }

void append_archives(const fs::path& directory, std::vector<fs::path>& paths) {
  std::error_code failure;
  for (fs::directory_iterator entry(directory, failure), end; !failure && entry != end; entry.increment(failure)) {
    std::error_code unreadable;
    if (entry->is_regular_file(unreadable) && entry->path().extension() == ".zip") {
      paths.push_back(entry->path());
    }
  }
}

// A directory that a variable names. A relative one would be another place for every directory that the process is
// started in.
fs::path environment_directory(const char* variable) {
  const fs::path path = environment_path(variable);
  if (path.is_absolute() || path.empty()) {
    return path;
  }
  constexpr std::int64_t warning_level = 30;
  get_logger().log(LogRecord(
      warning_level, String("The variable {} is ignored: {} is no absolute path.").arg(variable, path_text(path))));
  return {};
}

}  // namespace

Result<None> cpython_add_sys_path(const String& path) {
  if (path.empty()) {
    return Error("Unable to add a path to sys.path: it is empty, or no Unicode text.");
  }
  return internal::guarded([&] { return add_or_queue(path); });
}

Result<None> add_sys_path(const fs::path& path) {
  return internal::guarded([&] { return add_or_queue(path); });
}

void add_pending_paths() {
  std::vector<any_path> paths;
  std::vector<any_path>& queue = pending_paths();
  {
    const std::lock_guard guard(pending_lock);
    std::swap(queue, paths);
  }
  for (const any_path& path : paths) {
    static_cast<void>(internal::guarded([&] { return add_or_queue(path); }));  // the others may be added
  }
}

std::vector<fs::path> library_paths(const fs::path& module_directory) {
  std::vector<fs::path> paths;
  if (module_directory.empty()) {
    return paths;
  }
  const fs::path packages = below(module_directory, "/site-packages");
  append_archives(packages, paths);
  std::error_code missing;
  if (fs::is_directory(packages, missing)) {
    paths.push_back(packages);
  }
  append_archives(below(module_directory, "/python3/lib"), paths);
  return paths;
}

std::optional<fs::path> user_folder() {
  fs::path local = environment_directory("LOCALAPPDATA");
  if (local.empty()) {
    const fs::path profile = environment_directory("USERPROFILE");
    if (profile.empty()) {
      return std::nullopt;
    }
    local = profile / "AppData" / "Local";
  }
  return local / "Corvantis" / "Python313";
}

String path_text(const fs::path& path) {
  const std::u8string text = path.u8string();
  return String::fromUtf8(reinterpret_cast<const char*>(text.data()), text.size());
}

}  // namespace ling::cpython
