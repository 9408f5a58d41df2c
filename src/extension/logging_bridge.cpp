// The bridge is Python code: what a handler must be is for `logging` to say.
#include "extension/logging_bridge.h"

#include "extension/interpreter.h"
#include "language/evaluation.h"

namespace ling::cpython {

namespace {

// Runs as the body of a function, so its names are gone afterwards; the root logger keeps the handler alive.
constexpr const char* bridge_code = R"(
import logging

class LingLogHandler(logging.Handler):
    def emit(self, record):
        msg = self.format(record)
        ling.get_logger().log(
            ling.LogRecord(record.levelno, msg)
        )

root = logging.getLogger()
root.setLevel(logging.INFO)
root.addHandler(LingLogHandler())
)";

}  // namespace

Result<None> install_logging_bridge() {
  ensure_interpreter();
  // A host is no worse off without its log of Python's records, so a failure is nobody's concern.
  static_cast<void>(evaluate_code({}, bridge_code, None(), None(), None()));
  return None();
}

}  // namespace ling::cpython
