// Init handlers: order, handlers of handlers, errors.
#include "ling/testing.h"

#include <stdexcept>

namespace {

using namespace ling::testing;

std::vector<int> trace;

template <int mark>
Result<None> note() {
  trace.push_back(mark);
  return None();
}

TEST(Registration, HandlersRunByLevelOnceAndAllOfThem) {
  ASSERT_FALSE(initialize().is_error());
  internal::add_init_handler(InitLevel::Functions, &note<5>);
  internal::add_init_handler(InitLevel::Classes, &note<2>);
  internal::add_init_handler(InitLevel::Classes, []() -> Result<None> {
    trace.push_back(20);
    internal::add_init_handler(InitLevel::Services, &note<3>);
    return Error("first");
  });
  internal::add_init_handler(InitLevel::Properties, []() -> Result<None> {
    trace.push_back(4);
    return Error("second");
  });
  EXPECT_EQ(message(initialize()), "first");
  EXPECT_EQ(trace, (std::vector<int>{2, 20, 3, 4, 5}));
  ASSERT_FALSE(initialize().is_error());
  EXPECT_EQ(trace.size(), 5u);
  internal::add_init_handler(InitLevel::Classes, []() -> Result<None> { throw std::runtime_error("thrown"); });
  internal::add_init_handler(InitLevel::Functions, &note<6>);
  EXPECT_EQ(message(initialize()), "thrown");
  EXPECT_EQ(trace.back(), 6) << "an exception stops nothing either";
}

}  // namespace
