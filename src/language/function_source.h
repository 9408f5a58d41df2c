// Evaluated code as the body of a generated function.
#pragma once

#include "ling/string.h"

#include <string>
#include <string_view>
#include <vector>

namespace ling::cpython {

// Text that defines a function with the code as its body, calls it, and hands its result and then the variables of
// these names to the functions `ling_store_result` and `ling_store_local`. The names are declared global, one to a
// line, between the line of `def` and the code. Each line of code has a tab in front, except where that would change a
// literal.
std::string function_source(std::string_view code, const std::vector<String>& names);

}  // namespace ling::cpython
