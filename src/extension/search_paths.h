// Where Python looks for modules: the archives and packages beside the module file, and a folder of the user's own.
//
// The places are known before the interpreter runs. Until then paths wait in a queue.
#pragma once

#include "ling/error.h"
#include "ling/none.h"
#include "ling/string.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace ling::cpython {

// Appends a path to `sys.path` unless it is there. Before the interpreter runs, queues it. Any thread. An Error for the
// empty path, which Python would take for the current directory, whatever that is later: text that is no Unicode
// arrives as the empty String.
Result<None> cpython_add_sys_path(const String& path);
// The same for a path as the system spells it, which need not be text; Python spells it as it does all file names.
Result<None> add_sys_path(const std::filesystem::path& path);
// Takes over the queue and adds its paths in order. The interpreter must run.
void add_pending_paths();

// What lies beside the module file: the archives in "site-packages", that directory, the archives in "python3/lib". A
// directory that does not exist is left out, and so is what the system refuses to list.
std::vector<std::filesystem::path> library_paths(const std::filesystem::path& module_directory);
// The user's own package folder; absent when the environment names no place for it. It need not exist. What is no
// absolute path names no place; it is logged.
std::optional<std::filesystem::path> user_folder();

// A path for people.
String path_text(const std::filesystem::path& path);

}  // namespace ling::cpython
