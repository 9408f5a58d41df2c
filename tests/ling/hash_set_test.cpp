// HashSets: membership, order and set operations.
#include "ling/container_testing.h"

namespace {

using namespace ling;
using namespace ling::testing;

HashSet_Generic make_set(std::initializer_list<Any> values) {
  return HashSet_Generic::unchecked(construct(HashSet_Generic::getClass(), List_Generic(values)));
}

TEST(HashSet, AnswersTheMethodsOfScripts) {
  struct row {
    const char* method;
    std::vector<Any> arguments;
    const char* set;  // afterwards, starting from {3, 1, 2}
    const char* result;
  };
  const row rows[] = {
      {"insert",              {4},                      "{3, 1, 2, 4}", "true"                                            },
      {"insert",              {1.0},                    "{3, 1, 2}",    "false"                                           },
      {"remove",              {3},                      "{1, 2}",       "true"                                            },
      {"remove",              {4},                      "{3, 1, 2}",    "false"                                           },
      {"contains",            {2},                      "{3, 1, 2}",    "true"                                            },
      {"extend",              {Tuple_Generic{2, 5}},    "{3, 1, 2, 5}", "None"                                            },
      {"clear",               {},                       "HashSet()",    "None"                                            },
      {"union",               {Tuple_Generic{4, 1}},    "{3, 1, 2}",    "{3, 1, 2, 4}"                                    },
      {"intersection",        {Tuple_Generic{4, 1, 2}}, "{3, 1, 2}",    "{1, 2}"                                          },
      {"difference",          {List_Generic{1}},        "{3, 1, 2}",    "{3, 2}"                                          },
      {"symmetricDifference", {List_Generic{1, 4}},     "{3, 1, 2}",    "{3, 2, 4}"                                       },
      {"__or__",              {make_set({4})},          "{3, 1, 2}",    "{3, 1, 2, 4}"                                    },
      {"__and__",             {make_set({1})},          "{3, 1, 2}",    "{1}"                                             },
      {"__sub__",             {make_set({1})},          "{3, 1, 2}",    "{3, 2}"                                          },
      {"__xor__",             {make_set({1, 4})},       "{3, 1, 2}",    "{3, 2, 4}"                                       },
      {"__iadd__",            {make_set({4})},          "{3, 1, 2, 4}", "{3, 1, 2, 4}"                                    },
      {"toList",              {},                       "{3, 1, 2}",    "[3, 1, 2]"                                       },
      {"deepClone",           {},                       "{3, 1, 2}",    "{3, 1, 2}"                                       },
      {"insert",              {List_Generic{1}},        "{3, 1, 2}",    "The value of a set is not immutable: [1] (List)."},
      {"union",               {5},                      "{3, 1, 2}",    "Not an iterable: 5 (Integer)."                   },
  };
  for (const row& each : rows) {
    SCOPED_TRACE(each.method);
    const HashSet_Generic set = make_set({3, 1, 2, 3});
    const Any result = call_method(set, meta_method_untyped(each.method), each.arguments);
    EXPECT_EQ(is_error_result(result) ? message(result) : text(result), each.result);
    EXPECT_EQ(text(set), each.set);
    EXPECT_EQ(text(property(set, "__length__")), text(set.length()));
  }
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
