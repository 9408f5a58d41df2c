// What is measured, and how the program is asked for it.
//
// A case is one row of a table for one contestant. `scripts/bench` starts the program, gets the list of its cases, and
// asks for measurements of them in the order it likes.
#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

namespace benchmarks {

// Why a case cannot be measured.
struct failure : std::runtime_error {
  using runtime_error::runtime_error;
};

struct measured_case {
  std::string group;
  std::string row;
  std::string contestant;
  std::string unit = "ns";  // or bytes: of these a process takes one measurement only
  // What the row varies: a number of threads, of members, …; 0 when nothing is.
  std::int64_t parameter = 0;
  std::int64_t operations = 1;  // per turn
  // Seconds or bytes for that many turns.
  std::function<double(std::int64_t turns)> measure;
  // Whether `measure` is a processor_time.
  bool countable = true;
};

void add_case(measured_case added);

using run_turns = std::function<void(std::int64_t turns)>;

// Seconds of processor time, which other programs on the machine do not move.
std::function<double(std::int64_t)> processor_time(run_turns run);
// Seconds on the wall from the start of the first thread, when all are ready, until the last one is done.
std::function<double(std::int64_t)> wall_time(int threads, run_turns run);
// By how many bytes the process is larger after the turns, with what they leave behind alive.
std::function<double(std::int64_t)> memory_growth(run_turns run);

std::int64_t resident_bytes();
std::int64_t peak_resident_bytes();

}  // namespace benchmarks
