// What the contestants have in common: the data they present to Python, and where Python finds their objects.
//
// Each contestant is a Python module with three objects, so that one loop serves all of them:
//   subject   an object with the attributes `value` (read and written) and `child` (another such object) and the method
//             `add(number)`
//   numbers   a sequence of `item_count` integers
//   function  `function(number)`, which adds one
#pragma once

#include "ling/callable.h"

#include <cstdint>
#include <string>
#include <vector>

namespace benchmarks {

// Neither the interpreter nor the runtime shares objects for numbers from here on: every contestant makes new ones.
inline constexpr std::int64_t large_number = 1'000'000;
inline constexpr std::int64_t item_count = 1000;

inline std::vector<std::int64_t> large_numbers() {
  std::vector<std::int64_t> items;
  for (std::int64_t i = 0; i < item_count; ++i) {
    items.push_back(large_number + i);
  }
  return items;
}

enum class contestant { ling, pybind11, raw };
inline constexpr contestant contestants[] = {contestant::ling, contestant::pybind11, contestant::raw};
constexpr const char* name_of(contestant who) {
  constexpr const char* names[] = {"ling", "pybind11", "raw"};
  return names[static_cast<int>(who)];
}
constexpr const char* module_of(contestant who) {
  constexpr const char* names[] = {"contestant_ling", "contestant_pybind11", "contestant_raw"};
  return names[static_cast<int>(who)];
}

// Makes the modules importable: two are built in and must be known before the interpreter starts, the third is filled
// by evaluated code. Each ends the process with a message when it fails.
void register_raw_module();
void publish_ling_module();

// The callable of that name in the module `ling.cpython`.
ling::I_Callable_Generic language_function(const char* name);

// The rows of the table.
void register_host_rows();
void register_python_rows();
void register_start_rows(const char* program);

// For the processes that `register_start_rows` starts: whether this is one, and what it does.
bool is_start(const std::string& argument);
int measure_start(const std::string& argument);

}  // namespace benchmarks
