// What the command asks the system.
#pragma once

#include <filesystem>

namespace ling::command {

// The directory of the running program.
std::filesystem::path program_directory(const char* argv0);

// Makes sure that texts are UTF-8 where the environment does not say what they are.
void prepare_locale();

// What the interpreter library that has been loaded has under a name; null when there is none.
void* interpreter_symbol(const char* name);

// Ends the process as an interrupt does. Returns the status to end with where that cannot be.
int end_by_interrupt();

}  // namespace ling::command
