// Measuring: time by the clocks of the standard library, memory as the system reports it.
#include "cases.h"

#include <barrier>
#include <chrono>
#include <ctime>
#include <fstream>
#include <thread>
#include <vector>

// By this name `scripts/bench --instructions` finds what is to be counted.
extern "C" [[gnu::noinline]] void measured_turns(const benchmarks::run_turns& run, std::int64_t turns);
extern "C" void measured_turns(const benchmarks::run_turns& run, std::int64_t turns) { run(turns); }

namespace benchmarks {
namespace {

// A line "Name:   123 kB" of the process's status.
std::int64_t status_bytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  std::string word;
  std::int64_t kilobytes = 0;
  while (status >> word) {
    if (word == name && status >> kilobytes) {
      return kilobytes * 1024;
    }
  }
  throw failure("/proc/self/status does not tell " + name);
}

}  // namespace

std::int64_t resident_bytes() { return status_bytes("VmRSS:"); }
std::int64_t peak_resident_bytes() { return status_bytes("VmHWM:"); }

std::function<double(std::int64_t)> processor_time(run_turns run) {
  return [run = std::move(run)](std::int64_t turns) {
    const std::clock_t before = std::clock();
    measured_turns(run, turns);
    return static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
  };
}

std::function<double(std::int64_t)> wall_time(int threads, run_turns run) {
  return [threads, run = std::move(run)](std::int64_t turns) {
    std::barrier ready(threads + 1);
    std::vector<std::jthread> workers;
    for (int i = 0; i < threads; ++i) {
      workers.emplace_back([&] {
        ready.arrive_and_wait();
        run(turns);
      });
    }
    ready.arrive_and_wait();
    const auto before = std::chrono::steady_clock::now();
    workers.clear();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - before).count();
  };
}

std::function<double(std::int64_t)> memory_growth(run_turns run) {
  return [run = std::move(run)](std::int64_t turns) {
    const std::int64_t before = resident_bytes();
    run(turns);
    return static_cast<double>(resident_bytes() - before);
  };
}

}  // namespace benchmarks
