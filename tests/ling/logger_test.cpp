// The log: levels, sinks that misbehave, threads that log at once.
#include "ling/testing.h"

#include <algorithm>
#include <stdexcept>

namespace {

using namespace ling::testing;

class Log : public ::testing::Test {
 protected:
  void TearDown() override {
    logger.setSink({});
    logger.setLevel(INT64_MIN);
  }
  const Logger logger = get_logger();
};

TEST_F(Log, NamesTheLevelBelow) {
  for (const auto& [level, line] : {std::pair(19, " debug text\n"), std::pair(99, " critical text\n")}) {
    ::testing::internal::CaptureStderr();
    logger.log(LogRecord(level, "text"));
    const std::string written = ::testing::internal::GetCapturedStderr();
    EXPECT_TRUE(written.ends_with(line)) << level << ": " << written;
    EXPECT_EQ(std::count(written.begin(), written.end(), '\n'), 1);
  }
}

TEST_F(Log, GivesTheSinkWhatTheLevelLetsThrough) {
  std::vector<std::string> seen;
  logger.setSink([&](const LogRecord& record) { seen.push_back(text(record.message())); });
  call(logger, "setLevel", 30);
  for (const int level : {29, 30, 31}) {
    call(logger, "log", construct(LogRecord::getClass(), level, String("level {}").arg(level)));
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"level 30", "level 31"}));
}

TEST_F(Log, LosesNothingToASinkThatThrowsOrLogsItself) {
  int calls = 0;
  logger.setSink([&](const LogRecord& record) {
    ++calls;
    logger.log(LogRecord(20, String("seen: {}").arg(record.message())));
    throw std::runtime_error("the sink is full");
  });
  ::testing::internal::CaptureStderr();
  logger.log(LogRecord(30, "precious"));
  const std::string written = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(calls, 1) << "its own records do not come back to it";
  for (const char* expected : {"seen: precious", "The log's sink failed: the sink is full", "warning precious"}) {
    EXPECT_NE(written.find(expected), std::string::npos) << expected << " in " << written;
  }
}

TEST_F(Log, CallsTheSinkOnceARecordAndOneAtATime) {
  constexpr int rounds = 300;
  std::vector<std::int64_t> seen;  // unguarded: the log is the guard
  const auto take = [&](const LogRecord& record) { seen.push_back(record.level()); };
  logger.setSink(take);
  on_eight_threads([&](int thread) {
    for (int i = 0; i < rounds; ++i) {
      logger.log(LogRecord(thread * rounds + i, "counted"));
      if (i % 100 == 0) {
        logger.setSink(take);
      }
    }
  });
  std::sort(seen.begin(), seen.end());
  ASSERT_EQ(seen.size(), 8u * rounds);
  EXPECT_EQ(std::adjacent_find(seen.begin(), seen.end()), seen.end());
}

}  // namespace
