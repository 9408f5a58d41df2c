// The benchmark program: a host that loads the language module file like any other, with the other contestants in the
// same interpreter. `scripts/bench` runs it.
//
//   benchmarks [--modules=N]   lists its cases, a line each, and an empty line; then, for every line "INDEX TURNS" that
//                              it reads, a line with seconds or bytes, or "failed: " and why. With N more modules than
//                              the runtime has by itself, only the cases that concern their number.
//   benchmarks --start…        see single_run.cpp
#include "cases.h"
#include "contestants.h"
#include "ling/ling.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace benchmarks {
namespace {

std::vector<measured_case>& cases() {
  static std::vector<measured_case> all;
  return all;
}

void list_cases() {
  for (const measured_case& of : cases()) {
    std::printf("%s\t%s\t%s\t%s\t%" PRId64 "\t%" PRId64 "\t%d\n", of.group.c_str(), of.row.c_str(),
                of.contestant.c_str(), of.unit.c_str(), of.parameter, of.operations, of.countable ? 1 : 0);
  }
  std::printf("\n");
  std::fflush(stdout);
}

void serve() {
  std::size_t index = 0;
  std::int64_t turns = 0;
  while (std::scanf("%zu %" SCNd64, &index, &turns) == 2) {
    try {
      std::printf("%.9f\n", cases().at(index).measure(turns));
    } catch (const std::exception& error) {
      std::string text = error.what();
      std::replace(text.begin(), text.end(), '\n', ' ');
      std::printf("failed: %s\n", text.c_str());
    }
    std::fflush(stdout);
  }
}

void register_rows(std::int64_t modules) {
  if (modules != 0) {
    register_module_rows(modules);
    return;
  }
  register_python_rows();
  register_host_rows();
  register_container_rows();
  register_growth_rows();
  register_module_rows(0);
}

}  // namespace

void add_case(measured_case added) { cases().push_back(std::move(added)); }

}  // namespace benchmarks

int main(int count, char** arguments) {
  const std::string option = count > 1 ? arguments[1] : "";
  if (benchmarks::is_single_run(option)) {
    return benchmarks::run_single(option);
  }
  std::int64_t modules = 0;
  if (constexpr std::string_view prefix = "--modules="; option.starts_with(prefix)) {
    modules = std::atoll(option.c_str() + prefix.size());
  } else if (!option.empty()) {
    std::fprintf(stderr, "unknown option %s\n", option.c_str());
    return 2;
  }
  benchmarks::register_raw_module();
  benchmarks::check(ling::initialize());
  benchmarks::check(ling::load_extension(CORVANTIS_MODULE_FILE));
  benchmarks::publish_ling_module();
  benchmarks::publish_python_modules();
  benchmarks::register_rows(modules);
  benchmarks::list_cases();
  benchmarks::serve();
  // What the contestants hold is not taken apart: at the end nobody has the interpreter lock.
  std::fflush(stdout);
  std::_Exit(0);
}
