// Rows in which an interpreter starts. It can only do so once in a process, so the program runs itself for each sample
// and takes the time that the child measures.
#include "contestants.h"
#include "ling/ling.h"

#include <Python.h>
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace benchmarks {
namespace {

constexpr char option[] = "--start=";

// What the language module imports as it starts.
constexpr const char* imported[] = {"builtins", "collections", "collections.abc", "datetime",       "decimal",
                                    "sys",      "types",       "typing",          "importlib.util", "logging"};

bool start_raw() {
  Py_InitializeEx(0);
  for (const char* name : imported) {
    if (PyImport_ImportModule(name) == nullptr) {
      return false;
    }
  }
  return true;
}

// All that a host does for Python: loading the file, starting the interpreter, exporting its modules, the log.
bool start_ling() { return !ling::load_extension(CORVANTIS_MODULE_FILE).is_error(); }

void sample(benchmark::State& state, const std::string& command) {
  for (auto _ : state) {
    FILE* const child = popen(command.c_str(), "r");
    double seconds = 0;
    const bool measured = child != nullptr && std::fscanf(child, "%lf", &seconds) == 1;
    if (child == nullptr || pclose(child) != 0 || !measured) {
      state.SkipWithError("the child process failed");
      return;
    }
    state.SetIterationTime(seconds);
  }
}

}  // namespace

bool is_start(const std::string& argument) { return argument.starts_with(option); }

int measure_start(const std::string& argument) {
  const bool is_ling = argument.substr(sizeof option - 1) == name_of(contestant::ling);
  if (is_ling && ling::initialize().is_error()) {
    return 1;
  }
  const auto before = std::chrono::steady_clock::now();
  const bool started = is_ling ? start_ling() : start_raw();
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - before;
  std::printf("%.9f\n", passed.count());
  std::fflush(stdout);
  std::_Exit(started ? 0 : 1);
}

void register_start_rows(const char* program) {
  for (const contestant who : {contestant::ling, contestant::raw}) {
    const std::string command = "'" + std::string(program) + "' " + option + name_of(who);
    benchmark::RegisterBenchmark(("start/" + std::string(name_of(who))).c_str(),
                                 [command](benchmark::State& state) { sample(state, command); })
        ->UseManualTime()
        ->Iterations(5);
  }
}

}  // namespace benchmarks
