// Python types as classes of the host.
#include "proxies/outcomes.h"
#include "proxies/python_type.h"

namespace ling::cpython {
namespace {

using PythonTypes = PythonTest;

Class_Generic class_from(const PyObjectPtr& type) { return Class_Generic::cast(from_python(type.get())).value(); }

constexpr const char* shop = R"(
class Base: pass
class Mixin: pass
class Shop(Base, Mixin):
    """Where things are sold."""
    limit = 3
    class Shelf: pass
    _hidden = 1
    def __init__(self, name, *, floor=0): self.name, self.floor = name, floor
    def __str__(self): return f'{self.name} on {self.floor}'
    def count(self, *things):
        """How many."""
        return len(things)
    @classmethod
    def open(cls, name='new'): return cls(name)
    @staticmethod
    def add(a, b): return a + b
    @property
    def label(self):
        """What it says outside."""
        return self.name
    @label.setter
    def label(self, text): self.name = text
    @property
    def fixed(self): return 1 // self.floor
Shop.itself = Shop
result = Shop)";

TEST_F(PythonTypes, TellWhatPythonTellsOfThem) {
  const PyObjectPtr type = run(shop);
  const Class_Generic shop_class = class_from(type);
  EXPECT_EQ(shop_class.name().view(), "Shop");
  EXPECT_EQ(shop_class.doc().view(), "Where things are sold.");
  std::string parents;
  for (const object_value_class* each : shop_class.object().parents()) {
    parents += std::string(each->name().view()) + " ";
  }
  EXPECT_EQ(parents, "Base Mixin ");
  for (const char* hidden : {"_hidden", "__init__", "__str__", "__dict__"}) {
    EXPECT_EQ(shop_class.object().find_member(internal::intern(hidden)), nullptr) << hidden;
  }
  const auto method = [&](const char* name) { return shop_class.definedMethod(meta_method_untyped(name)).value(); };
  EXPECT_EQ(method("count").doc().view(), "How many.");
  EXPECT_EQ(method("count").name().view(), "count");
  EXPECT_EQ(shop_class.definedProperty(meta_property_untyped("label")).value().doc().view(), "What it says outside.");
  EXPECT_FALSE(shop_class.definedProperty(meta_property_untyped("fixed")).value().hasSetter());
  EXPECT_TRUE(from_python(type.get()).is_same(shop_class)) << "the same class each time";
  EXPECT_EQ(class_from(eval("__import__('collections').OrderedDict")).name().view(), "OrderedDict");
  EXPECT_EQ(outcome_text(class_of_python_type(eval("5").get())), "Error: Not a type.");
  EXPECT_EQ(outcome_text(class_of_python_type(nullptr)), "Error: Not a type.");
  EXPECT_TRUE(is_error_result(I_Callable_Generic::unchecked(class_from(eval("type('A', (), {})")))(1)));
}

TEST_F(PythonTypes, AreCalledAndUsed) {
  const PyObjectPtr type = run(shop);
  const Class_Generic shop_class = class_from(type);
  const Any kiosk = shop_class("kiosk");
  const auto call_named = [&](const char* name) {
    const named_argument named{name, 2};
    return shop_class.object().call_named(std::vector<Any>{"tower"}, {&named, 1});
  };
  const auto method = [&](const char* name) { return shop_class.definedMethod(meta_method_untyped(name)).value(); };
  const auto property = [&](const char* name) {
    return shop_class.definedProperty(meta_property_untyped(name)).value();
  };
  const auto attribute = [&](const char* name) { return property(name).read(shop_class); };
  const struct {
    Any answer;
    const char* expected;
  } rows[] = {
      {call_named("floor"), "tower on 2"},
      {call_named("roof"), "Error: …"},
      {shop_class(), "Error: …"},
      {shop_class.allocateInstance(), "Error: …"},
      {method("open")(), "new on 0"},
      {method("open")("own"), "own on 0"},
      {method("add")(2, 3), "5"},
      {property("label").write(kiosk, "stall"), "None"},
      {property("label").read(kiosk), "stall"},
      {property("fixed").read(kiosk), "Error: integer division or modulo by zero"},
      {attribute("limit"), "3"},
      {attribute("Shelf"), "<class Shelf>"},
  };
  EXPECT_EQ(outcome_text(kiosk), "stall on 0");
  for (const auto& each : rows) {
    const std::string answer = outcome_text(each.answer);
    EXPECT_TRUE(is_expected(answer, each.expected)) << answer << "\n  not " << each.expected;
  }
  EXPECT_TRUE(attribute("itself").is_same(shop_class));
  PyObject_SetAttrString(type.get(), "limit", eval("4").get());
  EXPECT_EQ(outcome_text(attribute("limit")), "4");
  for (std::size_t count = 0; count <= 13; ++count) {
    std::vector<Any> arguments(count, 1);
    if (count != 0) {
      arguments[0] = kiosk;
    }
    const std::string answer = outcome_text(method("count").callWith(arguments));
    EXPECT_TRUE(is_expected(answer, count == 0    ? "Error: Shop.count() missing 1 required positional argument…"
                                    : count == 13 ? "BadArgument: Bad call of 'Shop.count': …"
                                                  : std::to_string(count - 1)))
        << count << " " << answer;
  }
}

TEST_F(PythonTypes, DescendFromTheirBases) {
  const struct {
    const char* type;
    const char* ancestor;
    bool descends;
  } rows[] = {
      {"KeyError", "LookupError", true},          {"IndexError", "LookupError", true},
      {"LookupError", "KeyError", false},         {"type('Lost', (KeyError,), {})", "LookupError", true},
      {"UnicodeDecodeError", "ValueError", true}, {"KeyboardInterrupt", "Exception", false},
      {"type('Count', (int,), {})", "int", true}, {"list", "object", true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(class_from(eval(row.type)).is_ancestor(class_from(eval(row.ancestor))), row.descends) << row.type;
  }
  const PyObjectPtr type = run("try: {}['no']\nexcept Exception as e: result = e");
  const Any error = from_python(type.get());
  EXPECT_EQ(outcome_text(error), "Error: 'no'");
  const auto of_class = Class_Generic::cast(Error::cast(error)->value());
  EXPECT_TRUE(of_class && of_class->is_ancestor(class_from(eval("LookupError"))));
}

TEST_F(PythonTypes, MayHaveThousandsOfAncestors) {
  const PyObjectPtr type = run(R"(
class First:
    def first(self): return 'found'
result = First
for _ in range(1000): result = type('Next', (result,), {}))");
  const Class_Generic last = class_from(type);
  EXPECT_EQ(outcome_text(last.definedMethod(meta_method_untyped("first")).value()(last())), "found");
  EXPECT_GE(last.object().ancestors().size(), 1001u);
}

TEST_F(PythonTypes, MadeByEightThreadsAreOneClass) {
  for (int round = 0; round < 20; ++round) {
    const PyObjectPtr type = run(R"(
class Base: pass
class Meta(type):                 # every look at a member lets another thread in
    def __getattribute__(cls, name):
        __import__('time').sleep(0)
        return type.__getattribute__(cls, name)
class New(Base, metaclass=Meta):
    def method(self): return 1
result = New)");
    std::vector<Any> classes(8);
    on_eight_threads([&](int i) { classes[static_cast<std::size_t>(i)] = from_python(type.get()); });
    for (const Any& each : classes) {
      EXPECT_TRUE(each.is_same(classes[0]));
    }
  }
}

TEST_F(PythonTypes, SurviveHostileMetaclasses) {
  const PyObjectPtr types = run(R"(
class Interrupted(type):
    def __getattribute__(cls, name): raise KeyboardInterrupt(name)
class Members(type):
    @property
    def __dict__(cls): return {'a': 1}.items() and type('M', (), {'keys': lambda s: (), 'items': lambda s: [5, (), None]})()
    @property
    def __bases__(cls): return [1, None, cls]
result = [Interrupted('A', (), {}), Members('B', (), {}), type('', (), {'\ud800': 1, '': 2, 'a.b': 3})])");
  for (Py_ssize_t i = 0; i < PyList_Size(types.get()); ++i) {
    EXPECT_TRUE(Class_Generic::cast(from_python(PyList_GetItem(types.get(), i)))) << i;
    EXPECT_EQ(PyErr_Occurred(), nullptr) << i;
  }
}

}  // namespace
}  // namespace ling::cpython
