// Code that was written without regard to it as the body of a function.
#pragma once

#include <string>
#include <string_view>

namespace ling::cpython {

// Appends the code to a text that ends with the line of a `def` or with lines of its body. Each line of the code has a
// tab in front, except where that would change what Python reads; code that does nothing becomes `pass`. Whatever the
// code is, it stays inside of the function, or the whole is no valid Python.
void append_function_body(std::string& source, std::string_view code);

}  // namespace ling::cpython
