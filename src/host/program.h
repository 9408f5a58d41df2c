// A program in the interpreter, from its start to its end.
#pragma once

#include "host/python_api.h"
#include "ling/none.h"
#include "ling/string.h"
#include "ling/union.h"

#include <optional>
#include <string>

namespace ling::host {

// The exit statuses that are not the program's own.
enum exit_status : int { success = 0, failure = 1, wrong_usage = 2, lost_output = 120 };

// What the process ends with: a status or, as the shell that has started it expects, the interrupt itself.
struct outcome {
  int status = success;
  bool interrupted = false;
};

// A list in the module `sys` by which the host hands over what it has got from Python.
inline constexpr char handover_name[] = "ling_handover";

// From taking it on.
class interpreter_lock {
 public:
  interpreter_lock() noexcept = default;
  ~interpreter_lock();
  interpreter_lock(const interpreter_lock&) = delete;
  interpreter_lock& operator=(const interpreter_lock&) = delete;
  void take();

 private:
  std::optional<int> state_;
};

// Everything is as with python3, in its order and in its words, but for one thing: the interpreter lives as long as the
// process, since plug-ins and their threads may use it. Holds the interpreter lock.
class program {
 public:
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
  // The contents of a module, and a copy from before the program.
  struct known_module {
    reference names;
    reference before;
  };
  static void restore(const known_module& module);

  void let_go() const;
  reference forget_modules(PyObject* modules) const;
  void collect_garbage() const;

  interpreter_lock lock_;  // first, since references are released under it
  reference run_exit_handlers_;
  reference collect_garbage_;
  reference garbage_callbacks_;
  reference modules_before_;
  reference handover_;
  reference own_output_;
  reference own_errors_;
  known_module builtins_;
  known_module sys_;
};

}  // namespace ling::host
