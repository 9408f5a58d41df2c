// Records of Python's `logging` in the host's log.
#pragma once

#include "ling/none.h"
#include "ling/union.h"

namespace ling::cpython {

// Puts a handler that hands every record to the host's logger at the root of Python's loggers. Starts the interpreter.
// Where that fails, `logging` stays as it was.
Result<None> install_logging_bridge();

}  // namespace ling::cpython
