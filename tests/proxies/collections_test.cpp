// Python's collections as the host's: every member, faults, and the runtime's own algorithms over them.
#include "proxies/collection_proxies.h"
#include "proxies/outcomes.h"

namespace ling::cpython {
namespace {

using Collections = PythonTest;

constexpr const char* by_zero = "Error: integer division or modulo by zero";

Any python(const char* expression) { return from_python(eval(expression).get()); }

TEST_F(Collections, SequencesAnswerAsPythonDoes) {
  const List_Generic more = {4, 5};
  const char* const list = "[10, 20, 30]";
  expect_answers({
      {list, ".__length__", {}, "3"},
      {list, "at", {-1}, "30"},
      {list, "at", {3}, "Error: list index out of range"},
      {list, "at", {"x"}, "BadArgument: Bad call of 'ling.cpython.CPythonProxySequence.at'…"},
      {list, "atOr", {3, "none"}, "none"},
      {list, "contains", {20}, "true"},
      {list, "indexOf", {20}, "1"},
      {list, "indexOf", {20, 2}, "-1"},
      {list, "indexOf", {5}, "-1"},
      {list, "sliced", {1, 3}, "[20, 30]"},
      {list, "set", {0, "x"}, "None", "['x', 20, 30]"},
      {list, "set", {3, "x"}, "Error: list assignment index out of range"},
      {list, "append", {4}, "None", "[10, 20, 30, 4]"},
      {list, "appendAt", {1, 15}, "None", "[10, 15, 20, 30]"},
      {list, "extend", {more}, "None", "[10, 20, 30, 4, 5]"},
      {list, "removeAt", {0, 2}, "None", "[30]"},
      {list, "removeAt", {2, 2}, "Error: list assignment index out of range", "[10, 20]"},
      {list, "removeAt", {0, 0}, "None"},
      {list, "removeOne", {20}, "true", "[10, 30]"},
      {list, "removeOne", {5}, "false"},
      {list, "pop", {}, "30", "[10, 20]"},
      {list, "pop", {0}, "10", "[20, 30]"},
      {list, "clear", {}, "None", "[]"},
      {"(1, 2)", "sliced", {0, -1}, "(1,)"},
      {"(1, 2)", "append", {3}, "Error: The method is missing: append, target object: (1, 2)."},
      {"range(5)", "indexOf", {3}, "3"},
  });
}

TEST_F(Collections, MappingsAnswerAsPythonDoes) {
  const char* const dict = "{'a': 1, 2: None}";
  const char* const shrinking = "type('D', (dict,), {'keys': lambda s: (s.clear() for k in dict.keys(s))})(a=1, b=2)";
  const char* const vague = "type('D', (dict,), {'__contains__': lambda s, k: 'perhaps'})()";
  expect_answers({
      {dict, ".__length__", {}, "2"},
      {dict, ".keys", {}, "[\"a\", 2]"},
      {dict, ".values", {}, "[1, None]"},
      {"{}", ".keys", {}, "[]"},
      {dict, "contains", {python("[1]")}, "Error: unhashable type: 'list'"},
      {dict, "get", {"a", "none"}, "1"},
      {dict, "get", {2, "none"}, "None"},
      {dict, "get", {"z", "none"}, "none"},
      {dict, "get", {"z"}, "Undefined"},
      {dict, "set", {"a", 5}, "None", "{'a': 5, 2: None}"},
      {dict, "remove", {"a"}, "1", "{2: None}"},
      {dict, "remove", {"z"}, "Error: 'z'"},
      {dict, "clear", {}, "None", "{}"},
      {"type('D', (dict,), {'keys': lambda s: 5})()", ".keys", {}, "Error: 'int' object is not iterable"},
      {"type('D', (dict,), {'values': lambda s: s.no})()", ".values", {}, "Error: 'D' object has no attribute 'no'"},
      {shrinking, ".keys", {}, "Error: dictionary changed size during iteration", "{}"},
      {vague, "get", {1, 2}, "BadArgument: Expected Boolean, got String: perhaps"},
  });
  for (const char* name : {"keysType", "valuesType"}) {
    EXPECT_TRUE(python(dict).propertyValue(meta_property_untyped(name)).is_same(Untyped::getType())) << name;
  }
  EXPECT_EQ(outcome_text(I_Map_Generic::cast(python(dict))->get("z")), "Error: Key not found: z.");
}

TEST_F(Collections, SetsAndIterablesAnswerAsPythonDoes) {
  const char* const set = "{1, 2}";
  const char* const stubborn = "type('S', (set,), {'remove': lambda s, v: exec('raise KeyboardInterrupt(v)')})([1])";
  const char* const raising = "type('E', (), {'__iter__': lambda s: iter(()), '__contains__': lambda s, v: 1 // 0})()";
  const char* const silent = "type('N', (), {'__iter__': lambda s: iter('ab'), '__repr__': lambda s: 'N'})()";
  expect_answers({
      {set, ".__length__", {}, "2"},
      {set, "contains", {1}, "true"},
      {set, "insert", {3}, "true", "{1, 2, 3}"},
      {set, "insert", {1}, "false"},
      {set, "remove", {1}, "true", "{2}"},
      {set, "remove", {9}, "false"},
      {set, "remove", {python("[1]")}, "false"},
      {stubborn, "remove", {7}, "Error: 7"},
      {"type('S', (set,), {'remove': None})()", "remove", {1}, "Error: The method is missing in S()."},
      {set, "extend", {List_Generic{3, 1}}, "None", "{1, 2, 3}"},
      {set, "extend", {python("(4 // n for n in (2, 1, 0))")}, by_zero, "{1, 2, 4}"},
      {set, "clear", {}, "None", "set()"},
      {"frozenset({1})", "contains", {1}, "true"},
      {silent, "contains", {"a"}, "Error: The method is missing: __contains__, target object: N."},
      {raising, "contains", {1}, by_zero},
  });
}

TEST_F(Collections, TellWhatIsWrongWithLyingObjects) {
  const auto list_with = [](const std::string& method, const std::string& answer) {
    return "type('L', (list,), {'" + method + "': lambda s, *a: " + answer + "})([1])";
  };
  expect_answers({
      {list_with("__len__", "'many'"), ".__length__", {}, "BadArgument: Expected Integer, got String: many"},
      {list_with("__len__", "-1"), ".__length__", {}, "Error: The length of [1] is negative: -1."},
      {list_with("__contains__", "'yes'"), "contains", {1}, "BadArgument: Expected Boolean, got String: yes"},
      {list_with("remove", "1 // 0"), "removeOne", {2}, "false"},
      {list_with("remove", "1 // 0"), "removeOne", {1}, by_zero},
      {list_with("index", "exec('raise KeyboardInterrupt(2)')"), "indexOf", {1}, "Error: 2"},
      {list_with("count", "exec('raise SystemExit(4)')"), "removeOne", {2}, "Error: 4"},
      {list_with("__getattribute__", "exec('raise KeyboardInterrupt(3)')"), "append", {1}, "Error: 3"},
      {"[type('E', (), {'__eq__': lambda s, o: 1 // 0, '__repr__': lambda s: 'E'})()]", "contains", {1}, by_zero},
  });
}

TEST_F(Collections, WithoutAnObjectSayThatThereIsNone) {
  const auto ask = [](const class_definition<CPythonObject>& of_class, const char* member, std::vector<Any> arguments) {
    return outcome_text(ask_member(Class_Generic(of_class.required())(), {"", member, std::move(arguments), ""}));
  };
  EXPECT_EQ(ask(cpython_proxy_sequence_class, "indexOf", {0}), "Error: The object is null.");
  EXPECT_EQ(ask(cpython_proxy_mapping_class, ".keys", {}), "Error: The object is null.");
  EXPECT_EQ(ask(cpython_proxy_set_class, "remove", {1}), "Error: The object is null.");
  EXPECT_EQ(ask(cpython_proxy_iterator_class, "next", {}), "Error: The object is null.");
  EXPECT_EQ(ask(cpython_proxy_iterable_class, "iter", {}), "Error: Invalid object.");
}

TEST_F(Collections, IterateToTheEndOrTheError) {
  const struct {
    const char* object;
    const char* items;
  } rows[] = {
      {"{'a': 1, 'b': 2}", "[\"a\", \"b\"]"},
      {"{3}", "[3]"},
      {"(n * n for n in range(3))", "[0, 1, 4]"},
      {"type('Old', (), {'__getitem__': lambda s, i: 'ab'[i]})()", "[\"a\", \"b\"]"},
      {"(1 // n for n in (1, 0))", by_zero},
      {"(exec('raise SystemExit(7)') for n in (1,))", "Error: 7"},
  };
  for (const auto& row : rows) {
    const auto iterable = I_Iterable_Generic::cast(python(row.object));
    ASSERT_TRUE(iterable) << row.object;
    EXPECT_EQ(outcome_text(iterable->toList()), row.items) << row.object;
  }
}

TEST_F(Collections, TellWhatIsWrongWithIterators) {
  const PyObjectPtr objects = run(R"(
class Turning:                    # an iterable when it is first looked at, nonsense later
    def __init__(self, later): self.later, self.asked = later, 0
    def __iter__(self):
        self.asked += 1
        return iter(()) if self.asked == 1 else self.later()
class Plain:
    def __iter__(self): return iter(())
result = [Turning(lambda: 5), Turning(lambda: 1 // 0), Plain(), lambda: delattr(Plain, '__iter__')]
)");
  const Any nonsense = from_python(PyList_GetItem(objects.get(), 0));
  const Any raising = from_python(PyList_GetItem(objects.get(), 1));
  const Any missing = from_python(PyList_GetItem(objects.get(), 2));
  I_Callable_Generic::cast(from_python(PyList_GetItem(objects.get(), 3))).value()();
  const meta_method_untyped iter("iter");
  EXPECT_EQ(outcome_text(call_method(nonsense, iter, {})),
            "Error: The method '__iter__' returned 5, which is no iterator.");
  EXPECT_EQ(outcome_text(call_method(raising, iter, {})), by_zero);
  EXPECT_EQ(outcome_text(call_method(missing, iter, {})), "Error: Missing '__iter__' method.");

  const PyObjectPtr dict = eval("{1: 1, 2: 2}");
  const I_Iterator_Generic keys = I_Iterable_Generic::cast(from_python(dict.get()))->iter().value();
  EXPECT_EQ(outcome_text(keys.next()), "1");
  PyDict_Clear(dict.get());
  EXPECT_EQ(outcome_text(keys.next()), "Error: dictionary changed size during iteration");
  const I_Iterator_Generic spent = I_Iterable_Generic::cast(python("[]"))->iter().value();
  EXPECT_TRUE(StopIteration::matches(spent.next().get()) && StopIteration::matches(spent.next().get()));
}

TEST_F(Collections, ServeTheRuntimesOwnAlgorithms) {
  const auto make_from = [](const Class_Generic& of_class, const char* expression) {
    return outcome_text(of_class(python(expression)));
  };
  EXPECT_EQ(make_from(List_Generic::getClass(), "(1, 'b', None)"), "[1, \"b\", None]");
  EXPECT_EQ(make_from(List_Generic::getClass(), "type('L', (list,), {'__len__': lambda s: 2**60})([1])"), "[1]");
  EXPECT_EQ(make_from(HashSet_Generic::getClass(), "[2, 2]"), "{2}");
  EXPECT_EQ(make_from(HashMap_Generic::getClass(), "{'a': [1]}"), "{\"a\": [1]}");
  EXPECT_EQ(make_from(Tuple_Generic::getClass(), "(n for n in (1, 2))"), "(1, 2)");
  EXPECT_TRUE(make_from(List_Generic::getClass(), "(1 // n for n in (1, 0))").starts_with("Error: "));
  const auto of = [](const char* expression) { return I_Iterable_Generic::cast(python(expression)).value(); };
  EXPECT_TRUE(of("[1, 2]").contains(2)->value());
  EXPECT_FALSE(of("{1: 2}").contains(2)->value());
  EXPECT_TRUE(of("frozenset({5})").contains(5)->value());
  std::vector<std::pair<Any, Any>> pairs;
  EXPECT_FALSE(I_Map_Generic::cast(python("{'a': 1, 'b': 2}"))->pairs(pairs).is_error());
  EXPECT_EQ(pairs.size(), 2u);
  EXPECT_EQ(outcome_text(I_Sequence_Generic::cast(python("'a b c'.split()"))->sliced(1, 3)), "['b', 'c']");
}

TEST_F(Collections, CopyNothing) {
  const PyObjectPtr item = run("class Item: pass\nresult = Item()");
  const PyObjectPtr objects = run(R"(
class Shy(list):
    def __len__(self): raise LookupError
    __iter__ = __getitem__ = __len__
result = [None] * 10_000_000, Shy())");
  PyObject* const list = PyTuple_GetItem(objects.get(), 0);
  PyList_SetItem(list, 5, PyObjectPtr::share(item.get()).release());
  const Py_ssize_t references = Py_REFCNT(item.get());
  const long long blocks = allocated_blocks();
  const Any value = from_python(list), shy = from_python(PyTuple_GetItem(objects.get(), 1));
  EXPECT_EQ(Py_REFCNT(item.get()), references);
  EXPECT_LT(allocated_blocks() - blocks, 100);
  const auto sequence = I_MutableSequence_Generic::cast(value).value();
  EXPECT_TRUE(to_python(sequence.at(5)).get() == item.get());
  EXPECT_FALSE(sequence.append("host").is_error());
  PyList_SetItem(list, 0, PyLong_FromLong(7));
  EXPECT_EQ(PyList_Size(list), 10'000'001);
  EXPECT_EQ(outcome_text(sequence.at(0)), "7");
  EXPECT_TRUE(is_error_result(shy.propertyValue(meta_property_untyped("__length__"))));
}

}  // namespace
}  // namespace ling::cpython
