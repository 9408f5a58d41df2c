// The bridge is Python code: what a handler must be is for `logging` to say.
#include "extension/logging_bridge.h"

#include "language/evaluation.h"
#include "ling/detail/try.h"
#include "python/interpreter.h"

namespace ling::cpython {

namespace {

// Runs as the body of a function, so its names are gone afterwards; the root logger keeps the handler alive. Failures
// are dealt with as by the handlers of `logging`. A text of the host's holds no lone surrogates.
constexpr const char* bridge_code = R"(
import logging

class LingLogHandler(logging.Handler):
    def emit(self, record):
        try:
            msg = self.format(record).encode("utf-8", "backslashreplace").decode()
            ling.get_logger().log(
                ling.LogRecord(record.levelno, msg)
            )
        except RecursionError:
            raise
        except Exception:
            self.handleError(record)

root = logging.getLogger()
root.setLevel(logging.INFO)
root.addHandler(LingLogHandler())
)";

}  // namespace

Result<None> install_logging_bridge() {
  TRY(ensure_interpreter());
  // A host is no worse off without its log of Python's records, so a failure is nobody's concern.
  static_cast<void>(evaluate(bridge_code, {}));
  return None();
}

}  // namespace ling::cpython
