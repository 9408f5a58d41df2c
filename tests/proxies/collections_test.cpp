// Python's collections as the host's: their members, faults, and the runtime's own algorithms over them.
#include "proxies/collection_proxies.h"
#include "proxies/outcomes.h"

namespace ling::cpython {
namespace {

using Collections = PythonTest;

constexpr const char* by_zero = "Error: integer division or modulo by zero";

Any python(const char* expression) { return from_python(eval(expression).get()); }

TEST_F(Collections, SequencesAnswerAsPythonDoes) {
  const char* const list = "[10, 20, 30]";
  const auto list_with = [](const std::string& method, const std::string& answer) {
    return "type('L', (list,), {'" + method + "': lambda s, *a: " + answer + "})([1])";
  };
  expect_answers({
      {list, "at", {-1}, "30"},
      {list, "atOr", {3, "none"}, "none"},
      {list, "indexOf", {20, 2}, "-1"},
      {list, "set", {0, "x"}, "None", "['x', 20, 30]"},
      {list, "appendAt", {1, 15}, "None", "[10, 15, 20, 30]"},
      {"(1, 2)", "sliced", {0, -1}, "(1,)"},
      {"(1, 2)", "append", {3}, "Error: The method is missing: append, target object: (1, 2)."},
      {list_with("__len__", "'many'"), ".__length__", {}, "BadArgument: Expected Integer, got String: many"},
      {list_with("__len__", "-1"), ".__length__", {}, "Error: The length of [1] is negative: -1."},
      {list_with("remove", "1 // 0"), "removeOne", {1}, by_zero},
      {"[type('E', (), {'__eq__': lambda s, o: 1 // 0, '__repr__': lambda s: 'E'})()]", "contains", {1}, by_zero},
  });
}

TEST_F(Collections, MappingsAnswerAsPythonDoes) {
  const char* const dict = "{'a': 1, 2: None}";
  const char* const vague = "type('D', (dict,), {'__contains__': lambda s, k: 'perhaps'})()";
  expect_answers({
      {dict, ".keys", {}, "[\"a\", 2]"},
      {dict, "get", {2, "none"}, "None"},
      {dict, "get", {"z", "none"}, "none"},
      {dict, "remove", {"a"}, "1", "{2: None}"},
      {"type('D', (dict,), {'keys': lambda s: (1 // n for n in (1, 0))})()", ".keys", {}, by_zero},
      {vague, "get", {1, 2}, "BadArgument: Expected Boolean, got String: perhaps"},
  });
  expect_outcome(I_Map_Generic::cast(python(dict)).value().get("z"), "Error: Key not found: z.");
}

TEST_F(Collections, SetsAndIterablesAnswerAsPythonDoes) {
  const char* const set = "{1, 2}";
  const char* const unmade = "type('U', (), {'__iter__': (f := lambda s: delattr(type(s), '__iter__') or iter(()))})()";
  // The first look finds an iterator; what comes later is in front.
  const auto turning = [](const std::string& iterators) {
    return "type('T', (), {'left': [" + iterators + "iter(())], '__iter__': lambda s: s.left.pop()})()";
  };
  expect_answers({
      {set, "insert", {3}, "true", "{1, 2, 3}"},
      {set, "remove", {python("[1]")}, "false"},
      {set, "extend", {python("(4 // n for n in (1, 0))")}, by_zero, "{1, 2, 4}"},
      {turning("5, "), "iter", {}, "Error: The method '__iter__' returned 5, which is no iterator."},
      {unmade, "iter", {}, "Error: Missing '__iter__' method."},
  });
}

TEST_F(Collections, ServeTheRuntimesOwnAlgorithms) {
  const Class_Generic list = List_Generic::getClass();
  expect_outcomes({
      {list(python("type('L', (list,), {'__len__': lambda s: 2**60})([1])")), "[1]"         },
      {list(python("(exec('raise SystemExit(7)') for n in (1,))")),           "Error: 7"    },
      {HashMap_Generic::getClass()(python("{'a': [1]}")),                     "{\"a\": [1]}"},
  });
  const I_Iterator_Generic spent = I_Iterable_Generic::cast(python("[]")).value().iter().value();
  EXPECT_TRUE(StopIteration::matches(spent.next().get()) && StopIteration::matches(spent.next().get()));
}

TEST_F(Collections, CopyNothing) {
  const PyObjectPtr list = eval("[[]] * 10_000_000");
  PyObject* const item = PyList_GetItem(list.get(), 5);
  const Py_ssize_t references = Py_REFCNT(item);
  const long long blocks = allocated_blocks();
  const auto sequence = I_MutableSequence_Generic::cast(from_python(list.get())).value();
  EXPECT_EQ(Py_REFCNT(item), references);
  EXPECT_LT(allocated_blocks() - blocks, 100);
  EXPECT_TRUE(to_python(sequence.at(5)).get() == item);
  EXPECT_FALSE(sequence.append("host").is_error());
  EXPECT_EQ(PyList_Size(list.get()), 10'000'001);
}

}  // namespace
}  // namespace ling::cpython
