// A program in the interpreter, from its start to its end.
#pragma once

#include "host/python_api.h"
#include "ling/none.h"
#include "ling/string.h"
#include "ling/union.h"

#include <optional>
#include <string>
#include <vector>

namespace ling::host {

// The exit statuses that are not the program's own.
enum exit_status : int { success = 0, failure = 1, wrong_usage = 2, lost_output = 120 };

// What the process ends with: a status or, as the shell that has started it expects, the interrupt itself.
struct outcome {
  int status = success;
  bool interrupted = false;
  bool exited = false;  // the program has said itself that it ends
};

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
  // The contents of a module, and a copy from before the program.
  struct known_module {
    reference names;
    reference before;
  };

  // The namespace of a module that has been forgotten, which dies when nothing else refers to it. Its address alone:
  // nothing says that it is still there.
  struct known_namespace {
    PyObject* names;
    reference alive;  // weakly, an object that the namespace has
  };

  program() = default;
  void remember_contents();
  void let_go() const;
  void let_go_of_signal_handlers() const;
  reference forget_modules(PyObject* modules, std::vector<known_namespace>& namespaces) const;
  void empty_left_namespace(const known_namespace& left) const;
  static void watch(PyObject* names, std::vector<known_namespace>& namespaces);
  void collect_garbage() const;

  reference run_exit_handlers_;
  reference signal_handler_;
  reference set_signal_handler_;
  reference collect_garbage_;
  reference garbage_callbacks_;
  reference referrers_;
  reference modules_before_;
  std::vector<known_module> contents_before_;
  reference handover_;
  reference own_output_;
  reference own_errors_;
};

}  // namespace ling::host
