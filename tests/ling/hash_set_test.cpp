// HashSets: membership, order and set operations.
#include "ling/testing.h"

namespace {

using namespace ling::testing;

TEST(HashSet, AnswersTheMethodsOfScripts) {
  const method_row rows[] = {
      {"insert", {4}, "true", "{3, 1, 2, 4}"},
      {"insert", {1.0}, "false"},
      {"remove", {3}, "true", "{1, 2}"},
      {"extend", {Tuple_Generic{2, 5}}, "None", "{3, 1, 2, 5}"},
      {"clear", {}, "None", "HashSet()"},
      {"union", {Tuple_Generic{4, 1}}, "{3, 1, 2, 4}"},
      {"__or__", {make_set({4})}, "{3, 1, 2, 4}"},
      {"__and__", {make_set({1})}, "{1}"},
      {"__sub__", {make_set({1})}, "{3, 2}"},
      {"__xor__", {make_set({1, 4})}, "{3, 2, 4}"},
      {"__iadd__", {make_set({4})}, "{3, 1, 2, 4}", "{3, 1, 2, 4}"},
      {"deepClone", {}, "{3, 1, 2}"},
      {"insert", {List_Generic{1}}, "BadArgument: The value of a set is not immutable: [1] (List)."},
      {"union", {5}, "BadArgument: Not an iterable: 5 (Integer)."},
  };
  expect_methods([] { return make_set({3, 1, 2, 3}); }, rows);
  EXPECT_EQ(text(property(make_set({3, 1, 3}), "__length__")), "2");
}

}  // namespace
