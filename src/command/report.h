// Reporting exceptions and writing out the standard streams in the order and the words of python3, by the interpreter's
// C functions: nothing that a program does to its interpreter is in their way. All need the interpreter lock.
#pragma once

#include "command/python_api.h"

namespace ling::command {

inline constexpr int as_text = 1;  // Py_PRINT_RAW

// The exit statuses that are not the program's own.
enum exit_status : int { success = 0, failure = 1, wrong_usage = 2, lost_output = 120 };

// What the process ends with: a status or, as the shell that has started it expects, the interrupt itself.
struct outcome {
  int status = success;
  bool interrupted = false;
  bool exited = false;  // the program has said itself that it ends
};

// Reports the pending exception, and takes it away.
outcome report();

// Reports and takes away an exception that nobody is left to handle: "Exception ignored ", the words, the culprit.
void ignore_exception(const char* words, PyObject* culprit);

// Writes out a stream that is there and open; false with the exception pending.
bool flush(PyObject* stream);

// What a program has printed comes before the report of its failure: the pending exception stays.
void flush_quietly();

// At the end: false when output is lost.
bool flush_standard_streams();

}  // namespace ling::command
