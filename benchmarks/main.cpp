// The benchmark program: a host that loads the language module file like any other, with the two built-in contestants
// in the same interpreter.
#include "contestants.h"
#include "ling/ling.h"

#include <benchmark/benchmark.h>

#include <cstdio>

int main(int count, char** arguments) {
  if (count == 2 && benchmarks::is_start(arguments[1])) {
    return benchmarks::measure_start(arguments[1]);
  }
  benchmark::Initialize(&count, arguments);
  if (benchmark::ReportUnrecognizedArguments(count, arguments)) {
    return 2;
  }
  benchmarks::register_raw_module();
  auto ready = ling::initialize();
  if (!ready.is_error()) {
    ready = ling::load_extension(CORVANTIS_MODULE_FILE);
  }
  if (ready.is_error()) {
    std::fprintf(stderr, "%s\n", ready.error().message().c_str());
    return 1;
  }
  benchmarks::publish_ling_module();
  benchmarks::register_host_rows();
  benchmarks::register_python_rows();
  benchmarks::register_start_rows(arguments[0]);
  benchmark::RunSpecifiedBenchmarks();
}
