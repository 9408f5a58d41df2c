// A program in the interpreter, from its start to its end.
#pragma once

#include "command/program_cleanup.h"
#include "command/report.h"
#include "ling/none.h"
#include "ling/string.h"
#include "ling/union.h"

#include <optional>
#include <string>

namespace ling::command {

// A list in the module `sys` by which the host hands over what it has got from Python.
inline constexpr char handover_name[] = "ling_handover";

// Everything is as with python3, in its order and in its words, but for one thing: the interpreter lives as long as the
// process, since plug-ins and their threads may use it. The operations take the interpreter lock.
class program {
 public:
  // The one of the process; never destroyed, for want of a moment when it would hold the lock.
  static program& instance();

  // Takes what the end will need, while the interpreter is still as it should be.
  Result<None> start();

  // Run a script or compiled code; run what is in the directory or the archive that is first on `sys.path`.
  outcome run_file(const std::string& path) const;
  outcome run_package() const;
  // Prints a line to standard output.
  outcome print(const String& line) const;
  // Reports the exception that was handed over when it is a request to stop, which no Error tells all of.
  std::optional<outcome> report_handed_over() const;

  // Waits for the program's threads, runs its exit handlers, writes out what is left in its standard streams and lets
  // go of its objects. The exit status of the process; does not return when that is the interrupt.
  int end(const outcome& how) const;

 private:
  program() = default;

  reference run_exit_handlers_;
  program_cleanup cleanup_;
  reference handover_;
  reference own_output_;
  reference own_errors_;
};

}  // namespace ling::command
