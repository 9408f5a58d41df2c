// The queue of paths, and the places that go into it.
#include "extension/search_paths.h"

#include "bridge/convert.h"
#include "bridge/error_bridge.h"
#include "bridge/pending_exception.h"
#include "ling/detail/try.h"
#include "ling/list.h"
#include "ling/spinlock.h"

#include <cstdlib>
#include <mutex>
#include <system_error>
#include <utility>

namespace ling::cpython {

namespace {

namespace fs = std::filesystem;

spinlock pending_lock;

// Lives as long as the process: paths may be queued by static initialisers.
List<String>& pending_paths() {
  static auto* const paths = new List<String>();
  return *paths;
}

// False when the interpreter runs. The answer and the queueing are one step, so that no path gets into the queue behind
// the start, which empties it once.
bool queue_path(const String& path) {
  const List<String>& paths = pending_paths();
  const std::lock_guard guard(pending_lock);
  if (Py_IsInitialized() != 0) {
    return false;
  }
  paths.append(path);
  return true;
}

void append_archives(const std::string& directory, std::vector<fs::path>& paths) {
  std::error_code failure;
  for (fs::directory_iterator entry(directory, failure), end; !failure && entry != end; entry.increment(failure)) {
    std::error_code unreadable;
    if (entry->is_regular_file(unreadable) && entry->path().extension() == ".zip") {
      paths.push_back(entry->path());
    }
  }
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

}  // namespace

Result<None> cpython_add_sys_path(const String& path) {
  if (queue_path(path)) {
    return None();
  }
  const GilGuard lock;
  const PyObjectPtr sys(PyImport_ImportModule("sys"));
  const PyObjectPtr sys_path(sys ? PyObject_GetAttrString(sys.get(), "path") : nullptr);
  const PyObjectPtr text = sys_path ? to_python_locked(path) : PyObjectPtr();
  if (!text) {
    return capture_error_or("Unable to add a path to sys.path.");
  }
  const int found = PySequence_Contains(sys_path.get(), text.get());
  if (found == 1) {
    return None();
  }
  if (found < 0) {
    // An entry that cannot be compared is not this path.
    tolerate_exception();
  }
  if (PyList_Append(sys_path.get(), text.get()) != 0) {
    return capture_error_or("Unable to add a path to sys.path.");
  }
  return None();
}

void add_pending_paths() {
  List<String> paths;
  List<String>& queue = pending_paths();
  {
    const std::lock_guard guard(pending_lock);
    std::swap(queue, paths);
  }
  for (const Any& path : paths.copyItems()) {
    static_cast<void>(cpython_add_sys_path(String::unchecked(path)));
  }
}

std::vector<fs::path> library_paths(const fs::path& module_directory) {
  std::vector<fs::path> paths;
  if (module_directory.empty()) {
    return paths;
  }
  const std::string directory = module_directory.string();
  const std::string packages = directory + "/site-packages";
  append_archives(packages, paths);
  std::error_code missing;
  if (fs::is_directory(packages, missing)) {
    paths.emplace_back(packages);
  }
  append_archives(directory + "/python3/lib", paths);
  return paths;
}

std::optional<fs::path> user_folder() {
  fs::path local = environment("LOCALAPPDATA");
  if (local.empty()) {
    const fs::path profile = environment("USERPROFILE");
    if (profile.empty()) {
      return std::nullopt;
    }
    local = profile / "AppData" / "Local";
  }
  return local / "Corvantis" / "Python313";
}

}  // namespace ling::cpython
