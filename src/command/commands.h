// The commands: each returns the exit status of the process.
#pragma once

#include "command/inspect.h"
#include "command/program.h"
#include "command/python_session.h"

#include <string>
#include <vector>

namespace ling::command {

// Runs a Python file as the program; the file is the first argument.
int run_file(const session_options& options, const std::vector<std::string>& arguments);
// Prints the value of an expression.
int evaluate_expression(const session_options& options, const std::string& expression);
// Runs code as the body of a function; prints what it returns unless that is None.
int execute_code(const session_options& options, const std::string& code);
// Prints what the host sees under a name.
int inspect(const session_options& options, const std::string& name, description_format format);

}  // namespace ling::command
