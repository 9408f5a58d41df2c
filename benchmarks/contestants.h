// What the contestants have in common: the data they present to Python, and where Python finds their objects.
//
// Each contestant is a Python module with the same objects, so that one loop serves all of them:
//   subject   an object with the attributes `value` (read and written) and `child` (another such object) and the
//   methods
//             `add(number)`, `sum(number)`, which is called by keyword, and `measure(text)`
//   kind      its class, which makes more of them
//   numbers   a sequence of `item_count` integers
//   function  `function(number)`, which adds one
// A contestant whose objects are others, or that has fewer, says in `codes` which rows it takes part in, and the code.
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

// Makes the modules importable: two are built in and must be known before the interpreter starts, the others are filled
// by evaluated code. Each ends the process with a message when it fails.
void register_raw_module();
void publish_ling_module();
// Python's own objects, and peers that are Python modules, as far as they are installed.
void publish_python_modules();
// The contestants that `publish_python_modules` found; their modules are `contestant_` and the name.
std::vector<std::string> python_contestants();

// Ends the process with the message of an Error.
ling::Any check(ling::Any value);
// The callable of that name in the module `ling.cpython`.
ling::I_Callable_Generic language_function(const char* name);
// What the evaluated code returns, with one variable.
ling::Any run_python(const char* code, const char* variable, const ling::Any& value);

// The rows of the tables.
void register_python_rows();
void register_host_rows();
void register_container_rows();
void register_growth_rows();
// Evaluation among that many further modules.
void register_module_rows(std::int64_t further);

// What can be done once in a process: whether the option asks for that, and doing it.
bool is_single_run(const std::string& option);
int run_single(const std::string& option);

}  // namespace benchmarks
