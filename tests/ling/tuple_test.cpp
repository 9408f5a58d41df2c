// Tuples, and the packs of variadic arguments.
#include "ling/testing.h"

namespace {

using namespace ling::testing;

TEST(Tuple, AnswersTheMethodsOfScripts) {
  const method_row rows[] = {
      {"at",      {-1},              "b"                                                              },
      {"atOr",    {7, 0},            "0"                                                              },
      {"indexOf", {"b"},             "1"                                                              },
      {"sliced",  {0, -1},           "(1,)"                                                           },
      {"concat",  {List_Generic{2}}, "(1, \"b\", 2)"                                                  },
      {"repeat",  {2},               "(1, \"b\", 1, \"b\")"                                           },
      {"repeat",  {-2},              "()"                                                             },
      {"repeat",  {INT64_MAX},       "Error: 2 items repeated 9223372036854775807 times are too many."},
  };
  expect_methods([] { return Tuple_Generic{1, "b"}; }, rows);
  const Class_Generic tuple = Tuple_Generic::getClass();
  expect_outcomes({
      {call(tuple(), "repeat", INT64_MAX), "()"},
      {tuple(call(List_Generic{1, 2}, "iter")), "(1, 2)"},
      {tuple(1), "BadArgument: Not an iterable: 1 (Integer)."},
  });
}

TEST(Tuple, IsAKeyOnlyWithImmutableItems) {
  Any deep = 1;
  Any deep_with_list = List_Generic();
  for (int i = 0; i < 100000; ++i) {
    deep = Tuple_Generic{deep};
    deep_with_list = Tuple_Generic{deep_with_list};
  }
  const HashMap_Generic map;
  EXPECT_FALSE(is_error_result(map.setChecked(deep, 1)));
  EXPECT_TRUE(map.contains(deep));
  EXPECT_TRUE(is_error_result(map.setChecked(deep_with_list, 1)));
}

TEST(Variadic, TakesItsItemsOneByOne) {
  const Variadic pack = create_ellipsis(2);
  assign_ellipsis_item(pack, 1, "b");
  assign_ellipsis_item(pack, 0, 1);
  EXPECT_EQ(text(pack), "(1, \"b\")");
}

}  // namespace
