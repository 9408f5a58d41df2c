// A plug-in whose loading a case directs: what its entry points and its init handlers do.
#pragma once

#include "ling/ling.h"

#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>

namespace ling::testing {

// For the life of a case, a library of its own: no other case has loaded it.
class directed_extension {
 public:
  // Nothing that fails, unless a case says so.
  std::function<Any()> entry = [] { return Any(); };
  std::function<Any()> bind = entry;    // the second entry point
  std::function<Any()> first = entry;   // of level Classes
  std::function<Any()> second = entry;  // of level Functions

  directed_extension() {
    const Module functions = get_module("test.extension").value();
    functions.addCallable("entry", make_function("entry", "", "", [this] { return entry(); }));
    functions.addCallable("bind", make_function("bind", "", "", [this] { return bind(); }));
    functions.addCallable("first", make_function("first", "", "", [this] { return first(); }));
    functions.addCallable("second", make_function("second", "", "", [this] { return second(); }));
    std::filesystem::copy_file(EXTENSION_CASE, file_, std::filesystem::copy_options::overwrite_existing);
  }
  ~directed_extension() { std::filesystem::remove(file_); }
  directed_extension(const directed_extension&) = delete;
  directed_extension& operator=(const directed_extension&) = delete;

  String path() const { return file_; }
  Result<None> load() const { return load_extension(path()); }

 private:
  static std::string next_file() {
    static int made = 0;
    const std::string name = "ling-case-" + std::to_string(::getpid()) + "-" + std::to_string(++made) + ".so";
    return (std::filesystem::temp_directory_path() / name).string();
  }
  const std::string file_ = next_file();
};

}  // namespace ling::testing
