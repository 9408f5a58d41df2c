// What the command asks the system.
#pragma once

#include <filesystem>

namespace ling::host {

// The directory of the running program.
std::filesystem::path program_directory(const char* argv0);

// Makes sure that texts are UTF-8 where the environment does not say what they are.
void prepare_locale();

}  // namespace ling::host
