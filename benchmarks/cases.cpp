// Measuring: time by the clocks of the standard library, memory as the system reports it.
#include "cases.h"

#include <algorithm>
#include <barrier>
#include <chrono>
#include <ctime>
#include <exception>
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
    using clock = std::chrono::steady_clock;
    struct period {
      clock::time_point begin, end;
      std::exception_ptr failed;
    };
    std::barrier ready(threads);
    std::vector<period> periods(static_cast<std::size_t>(threads));
    std::vector<std::jthread> workers;
    workers.reserve(periods.size());
    for (period& own : periods) {
      workers.emplace_back([&] {
        ready.arrive_and_wait();
        own.begin = clock::now();
        try {
          run(turns);
        } catch (...) {
          own.failed = std::current_exception();
        }
        own.end = clock::now();
      });
    }
    workers.clear();
    period whole = periods.front();
    for (const period& own : periods) {
      if (own.failed) {
        std::rethrow_exception(own.failed);
      }
      whole.begin = std::min(whole.begin, own.begin);
      whole.end = std::max(whole.end, own.end);
    }
    return std::chrono::duration<double>(whole.end - whole.begin).count();
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
