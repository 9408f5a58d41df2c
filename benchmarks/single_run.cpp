// What can be done once in a process only: starting an interpreter, importing all modules. Each run does it, and prints
// seconds on the wall, the bytes by which the process grew at the most, and how many modules there are more.
//
//   benchmarks --start=ling          all that a host does for Python
//   benchmarks --start=raw           a bare start, and the imports that standard input names, a line each
//   benchmarks --start-imports       prints what the language module's start imports
//   benchmarks --import-all          `importAllModules` of the standard library
//   benchmarks --import-all=FOLDER   of the modules in the folder
#include "cases.h"
#include "contestants.h"
#include "ling/ling.h"

#include <Python.h>

#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace benchmarks {
namespace {

void start_ling() { check(ling::load_extension(CORVANTIS_MODULE_FILE)); }

void start_raw(const std::vector<std::string>& names) {
  Py_InitializeEx(0);
  for (const std::string& name : names) {
    if (PyImport_ImportModule(name.c_str()) == nullptr) {
      PyErr_Print();
      std::exit(1);
    }
  }
}

// What Python's own importers have brought, in the order of the imports.
constexpr char imports[] =
    "import sys\n"
    "return '\\n'.join(name for name, module in sys.modules.copy().items()\n"
    "                 if getattr(module, '__spec__', None) and module.__spec__.origin and name != '__main__')";

// Only what is to be listed is on the path; the standard library is found nevertheless.
constexpr char restrict_path[] =
    "import importlib.machinery, sys\n"
    "installed = [path for path in sys.path if path and not path.endswith('-packages')]\n"
    "class StandardLibrary:\n"
    "    def find_spec(name, path=None, target=None):\n"
    "        return importlib.machinery.PathFinder.find_spec(name, installed if path is None else path)\n"
    "if folder:\n"
    "    sys.meta_path.append(StandardLibrary)\n"
    "sys.path[:] = [folder[1:]] if folder else installed";

std::vector<std::string> read_names() {
  std::vector<std::string> names;
  for (std::string name; std::getline(std::cin, name);) {
    names.push_back(name);
  }
  return names;
}

std::int64_t module_count() { return static_cast<std::int64_t>(ling::modules().size()); }

template <class F>
void report(const F& run) {
  const std::int64_t bytes = resident_bytes();
  const std::int64_t modules = module_count();
  const auto before = std::chrono::steady_clock::now();
  run();
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - before;
  std::printf("%.9f %" PRId64 " %" PRId64 "\n", passed.count(), peak_resident_bytes() - bytes,
              module_count() - modules);
}

}  // namespace

bool is_single_run(const std::string& option) {
  return option.starts_with("--start") || option.starts_with("--import-all");
}

int run_single(const std::string& option) {
  if (option == "--start=raw") {
    const auto names = read_names();
    report([&] { start_raw(names); });
  } else {
    check(ling::initialize());
    if (option == "--start=ling") {
      report(start_ling);
    } else {
      start_ling();
      if (option == "--start-imports") {
        std::printf("%s\n", ling::display_text(run_python(imports, "unused", 0)).c_str());
      } else {
        run_python(restrict_path, "folder", ling::String(option.substr(std::string("--import-all").size())));
        report([] { check(language_function("importAllModules")()); });
      }
    }
  }
  std::fflush(stdout);
  std::_Exit(0);
}

}  // namespace benchmarks
