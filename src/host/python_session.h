// python_session: the host's side of running Python. It loads plug-ins and the language module as any host would; from
// then on Python is two callables of the module `ling.cpython`.
#pragma once

#include "ling/any.h"
#include "ling/error.h"
#include "ling/none.h"
#include "ling/union.h"

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace ling::host {

// The exit statuses that are the command's own.
enum exit_status : int { success = 0, failure = 1, wrong_usage = 2 };

struct session_options {
  std::vector<std::string> plug_ins;
  std::string module_file;
  // Records below this level are dropped from the log; the least number lets all of them pass.
  std::int64_t log_level = std::numeric_limits<std::int64_t>::min();
};

class python_session {
 public:
  // Loads the plug-ins, then the module.
  Result<None> open(const session_options& options);
  // Starts a program: these are its `sys.argv`.
  int begin(const std::vector<std::string>& arguments) const;
  // Ends a program: waits for its threads, runs its exit handlers, writes out what it left in its files. The status is
  // the given one unless that fails.
  int finish(int status) const;

  // Runs the file that is the first argument as the program; reports its failure.
  int run_file() const;
  Any evaluate(const String& code) const;
  Any evaluate_expression(const String& code) const;
  // Prints a line to the program's standard output.
  int show(const String& text) const;
  // Reports the error of an evaluation on standard error, unless it is a request to exit.
  int report(const Error& error) const;

 private:
  using variables = std::initializer_list<std::pair<const char*, Any>>;

  // The result of an expression that calls a function of session.py.
  Any call(const char* expression, variables locals = {}) const;
  int call_for_status(const char* expression, variables locals = {}) const;

  Any evaluate_;
  Any evaluate_expr_;
};

}  // namespace ling::host
