// Paths that the system is asked for, in the encoding of its files.
#pragma once

#include <filesystem>

namespace ling::cpython {

// The directory of the file that this code was loaded from; empty when the system cannot tell.
std::filesystem::path module_directory();
// What a variable of the environment names; empty when it is not set.
std::filesystem::path environment_path(const char* variable);

}  // namespace ling::cpython
