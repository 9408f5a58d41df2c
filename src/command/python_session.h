// python_session: the host's side of running Python. It loads plug-ins and the language module as any host would; from
// then on Python is two callables of the module `ling.cpython`.
#pragma once

#include "ling/any.h"
#include "ling/boolean.h"
#include "ling/error.h"
#include "ling/none.h"
#include "ling/union.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace ling::command {

struct session_options {
  std::vector<std::string> plug_ins;
  std::string module_file;
  // Records below this level are dropped from the log; the least number lets all of them pass.
  std::int64_t log_level = std::numeric_limits<std::int64_t>::min();
};

// What a program is given.
struct program_arguments {
  std::vector<std::string> argv;
  std::optional<std::string> file;
};

class python_session {
 public:
  // Loads the plug-ins, then the module.
  Result<None> open(const session_options& options);
  // Prepares the interpreter for a program. Whether the program is a package.
  Result<Boolean> prepare(const program_arguments& arguments);

  Any evaluate(const String& code) const;
  Any evaluate_expression(const String& code) const;
  // Hands what an Error was made of to the program: see program::report_handed_over().
  void hand_over(const Error& error) const;

 private:
  Any evaluate_;
  Any evaluate_expr_;
  Any handover_;
};

}  // namespace ling::command
