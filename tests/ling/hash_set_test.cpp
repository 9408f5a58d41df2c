// HashSets: membership, order and set operations.
#include "ling/testing.h"

namespace {

using namespace ling;
using namespace ling::testing;

HashSet_Generic make_set(std::initializer_list<Any> values) {
  return HashSet_Generic::unchecked(construct(HashSet_Generic::getClass(), List_Generic(values)));
}

TEST(HashSet, AnswersTheMethodsOfScripts) {
  const method_row rows[] = {
      {"insert", {4}, "true", "{3, 1, 2, 4}"},
      {"insert", {1.0}, "false"},
      {"remove", {3}, "true", "{1, 2}"},
      {"remove", {4}, "false"},
      {"contains", {2}, "true"},
      {"extend", {Tuple_Generic{2, 5}}, "None", "{3, 1, 2, 5}"},
      {"clear", {}, "None", "HashSet()"},
      {"union", {Tuple_Generic{4, 1}}, "{3, 1, 2, 4}"},
      {"intersection", {Tuple_Generic{4, 1, 2}}, "{1, 2}"},
      {"difference", {List_Generic{1}}, "{3, 2}"},
      {"symmetricDifference", {List_Generic{1, 4}}, "{3, 2, 4}"},
      {"__or__", {make_set({4})}, "{3, 1, 2, 4}"},
      {"__and__", {make_set({1})}, "{1}"},
      {"__sub__", {make_set({1})}, "{3, 2}"},
      {"__xor__", {make_set({1, 4})}, "{3, 2, 4}"},
      {"__iadd__", {make_set({4})}, "{3, 1, 2, 4}", "{3, 1, 2, 4}"},
      {"toList", {}, "[3, 1, 2]"},
      {"deepClone", {}, "{3, 1, 2}"},
      {"insert", {List_Generic{1}}, "BadArgument: The value of a set is not immutable: [1] (List)."},
      {"union", {5}, "BadArgument: Not an iterable: 5 (Integer)."},
  };
  expect_methods([] { return make_set({3, 1, 2, 3}); }, rows);
  EXPECT_EQ(text(property(make_set({3, 1, 3}), "__length__")), "2");
}

TEST(HashSet, RefusesWhatIsNotOfItsType) {
  const Type arguments[] = {Integer::getType()};
  const Class_Generic of_integers = generic_instance(HashSet_Generic::getClass(), arguments);
  const Any set = construct(of_integers, List_Generic{1, 2});
  const std::string refused = "The value of a set is not of the type Integer: a (String).";
  EXPECT_EQ(message(call(set, "insert", "a")), refused);
  EXPECT_EQ(message(call(set, "extend", List_Generic{"a"})), refused);
  EXPECT_EQ(message(call(set, "__or__", List_Generic{"a"})), refused);
  EXPECT_TRUE(raw_class_of(call(set, "intersection", List_Generic{"a", 1})) == of_integers);
}

TEST(HashSet, DestroysValuesAfterUnlocking) {
  const HashSet_Generic set;
  int deaths = 0;
  const auto insert_mortal = [&] {
    EXPECT_FALSE(is_error_result(set.insert(make_mortal([&] { deaths += set.length() == 0 ? 1 : 100; }))));
  };
  insert_mortal();
  set.remove(set.copyItems()[0]);
  insert_mortal();
  set.object().clear();
  EXPECT_EQ(deaths, 2);
}

}  // namespace
