// Where the language module's own file stands.
#pragma once

#include <filesystem>

namespace ling::cpython {

// The directory of the file that this code was loaded from; empty when the system cannot tell.
std::filesystem::path module_directory();

}  // namespace ling::cpython
