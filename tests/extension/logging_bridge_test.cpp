// Records of Python's `logging` in the host's log.
#include "bridge/python.h"
#include "language/evaluation.h"
#include "ling/logger.h"
#include "ling/reflection.h"

#include <mutex>
#include <set>

namespace ling::cpython {
namespace {

// Collects what reaches the host's log; Python's root logger is put back afterwards.
class LoggingBridge : public PythonTest {
 protected:
  LoggingBridge() {
    get_logger().setSink([this](const LogRecord& record) {
      const std::lock_guard guard(lock_);
      lines_.push_back(std::to_string(record.level()) + " " + std::string(record.message().view()));
    });
  }
  ~LoggingBridge() override {
    get_logger().setSink({});
    log("logging.getLogger().setLevel(logging.INFO)");
  }
  static void log(const std::string& code) {
    const auto outcome = evaluate_code({}, "import logging\n" + code, None(), None(), None());
    EXPECT_FALSE(outcome.is_error()) << display_text(outcome).view();
  }
  std::vector<std::string> take_lines() {
    const std::lock_guard guard(lock_);
    return std::exchange(lines_, {});
  }

 private:
  std::mutex lock_;
  std::vector<std::string> lines_;
};

using lines = std::vector<std::string>;

TEST_F(LoggingBridge, PassesRecordsOnWithLevelAndMessage) {
  const std::pair<const char*, lines> cases[] = {
      {"logging.getLogger('app').warning('%s of %d', 'a', 1)",                     {"30 a of 1"}              },
      {"logging.getLogger('app').log(35, 'between')\nlogging.critical('\\u00e9')", {"35 between", "50 \u00e9"}},
  };
  for (const auto& [code, expected] : cases) {
    log(code);
    EXPECT_EQ(take_lines(), expected) << code;
  }
}

// What comes of a record that cannot be formatted is shown where `logging` shows it, and the program goes on.
TEST_F(LoggingBridge, HandlesFailuresAsHandlersDo) {
  log(R"code(
import contextlib, io
class Unprintable:
    def __str__(self): raise ValueError('no text')
shown = io.StringIO()
with contextlib.redirect_stderr(shown):
    logging.warning('%d', 'x')
    logging.warning('%s', Unprintable())
    logging.getLogger().handle(logging.makeLogRecord({'levelno': 30.5, 'levelname': 'HALF', 'msg': 'unknown level'}))
logging.warning('next')
assert shown.getvalue().count('--- Logging error ---') == 3, shown.getvalue()
for text in "Arguments: ('x',)", 'ValueError: no text', "Message: 'unknown level'":
    assert text in shown.getvalue(), shown.getvalue()
class Endless:
    def __str__(self): return str(self)
try:
    logging.warning('%s', Endless())
except RecursionError:
    logging.warning('too deep')
)code");
  EXPECT_EQ(take_lines(), (lines{"30 next", "30 too deep"}));
}

TEST_F(LoggingBridge, KeepsTextsThatAreNoUnicode) {
  log("logging.warning('a %s', 'b\\udc80c')\nlogging.error('\\ud800\u00e9')");
  EXPECT_EQ(take_lines(), (lines{"30 a b\\udc80c", "40 \\ud800\u00e9"}));
}

TEST_F(LoggingBridge, IsInstalledOnceAndLeavesNoNames) {
  const PyObjectPtr seen = run(R"(
import logging, builtins, __main__
names = [type(each).__name__ for each in logging.getLogger().handlers]
result = names.count('LingLogHandler'), any(hasattr(each, 'LingLogHandler') for each in (logging, builtins, __main__)))");
  EXPECT_EQ(repr(seen), "(1, False)");
}

TEST_F(LoggingBridge, LosesNothingThatThreadsLogAtOnce) {
  constexpr int each_logs = 200;
  on_eight_threads([](int thread) {
    for (int i = 0; i < each_logs; ++i) {
      log("logging.info('" + std::to_string(thread) + "." + std::to_string(i) + "')");
    }
  });
  const lines seen = take_lines();
  EXPECT_EQ(std::set<std::string>(seen.begin(), seen.end()).size(), std::size_t{8 * each_logs});
}

}  // namespace
}  // namespace ling::cpython
