// The program behind its allocation functions.
#pragma once

namespace faults {

// Tries the scenarios that the arguments name, all without arguments. The exit status of the program.
int run_scenarios(int count, char** arguments);

}  // namespace faults
