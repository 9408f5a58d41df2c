// Dynamic libraries, as the platform has them. A library that was opened stays open: nobody knows who still refers to
// what it brought.
#pragma once

#include <string>

namespace ling::internal {

// Opens the library at that absolute path (UTF-8) with all its symbols bound, and keeps its symbols to itself. The same
// file gives the same handle each time. Null on failure, with the system's text in `error`.
void* open_dynamic_library(const std::string& path, std::string& error);

// The address of an exported symbol; null on failure, with the system's text in `error`.
void* find_dynamic_symbol(void* library, const char* symbol, std::string& error);

}  // namespace ling::internal
