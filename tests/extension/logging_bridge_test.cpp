// Records of Python's `logging` in the host's log.
#include "bridge/python.h"
#include "language/evaluation.h"
#include "ling/logger.h"
#include "ling/reflection.h"

namespace ling::cpython {
namespace {

using lines = std::vector<std::string>;

// Collects what reaches the host's log; Python's root logger is put back afterwards.
class LoggingBridge : public PythonTest {
 protected:
  LoggingBridge() {
    get_logger().setSink([this](const LogRecord& record) {
      lines_.push_back(std::to_string(record.level()) + " " + std::string(record.message().view()));
    });
  }
  ~LoggingBridge() override { get_logger().setSink({}); }
  // What code logs.
  lines logged(const std::string& code) {
    const auto outcome = evaluate_code({}, "import logging\n" + code, None(), None(), None());
    EXPECT_FALSE(outcome.is_error()) << display_text(outcome).view();
    return std::exchange(lines_, {});
  }

 private:
  lines lines_;
};

TEST_F(LoggingBridge, PassesRecordsOnWithLevelAndMessage) {
  EXPECT_EQ(logged("logging.getLogger('app').warning('%s of %d', 'a', 1)"), (lines{"30 a of 1"}));
  EXPECT_EQ(logged("logging.debug('dropped')\nlogging.log(35, 'b\\udc80\\u00e9')"), (lines{"35 b\\udc80\u00e9"}))
      << "what is no Unicode is escaped";
}

// What comes of a record that cannot be formatted is shown where `logging` shows it, and the program goes on.
TEST_F(LoggingBridge, HandlesFailuresAsHandlersDo) {
  EXPECT_EQ(logged(R"code(
import contextlib, io
class Endless:
    def __str__(self): return str(self)
shown = io.StringIO()
with contextlib.redirect_stderr(shown):
    logging.warning('%d', 'x')
    logging.getLogger().handle(logging.makeLogRecord({'levelno': 30.5, 'levelname': 'HALF', 'msg': 'unknown level'}))
logging.warning('next')
assert shown.getvalue().count('--- Logging error ---') == 2, shown.getvalue()
for text in "Arguments: ('x',)", "Message: 'unknown level'":
    assert text in shown.getvalue(), shown.getvalue()
try:
    logging.warning('%s', Endless())
except RecursionError:
    logging.warning('too deep')
)code"),
            (lines{"30 next", "30 too deep"}));
}

}  // namespace
}  // namespace ling::cpython
