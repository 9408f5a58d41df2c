// Init handlers: order, handlers of handlers, errors.
#include "ling/ling.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace ling;

std::vector<int>& trace() {
  static std::vector<int> levels;
  return levels;
}

template <int mark>
Result<None> note() {
  trace().push_back(mark);
  return None();
}

TEST(Registration, HandlersRunByLevelOnceAndAllOfThem) {
  ASSERT_FALSE(initialize().is_error());
  internal::add_init_handler(InitLevel::Functions, &note<5>);
  internal::add_init_handler(InitLevel::Classes, &note<2>);
  internal::add_init_handler(InitLevel::Classes, []() -> Result<None> {
    trace().push_back(20);
    internal::add_init_handler(InitLevel::Services, &note<3>);
    return Error("first");
  });
  internal::add_init_handler(InitLevel::Properties, []() -> Result<None> {
    trace().push_back(4);
    return Error("second");
  });
  const Result<None> made = initialize();
  ASSERT_TRUE(made.is_error());
  EXPECT_EQ(made.error().message(), "first");
  EXPECT_EQ(trace(), (std::vector<int>{2, 20, 3, 4, 5}));
  ASSERT_FALSE(initialize().is_error());
  EXPECT_EQ(trace().size(), 5u);
  internal::add_init_handler(InitLevel::Classes, []() -> Result<None> { throw std::runtime_error("thrown"); });
  internal::add_init_handler(InitLevel::Functions, &note<6>);
  EXPECT_EQ(initialize().error().message(), "thrown");
  EXPECT_EQ(trace().back(), 6) << "an exception stops nothing either";
}

}  // namespace
