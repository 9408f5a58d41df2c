// Python types as classes of the host.
#include "language/evaluation.h"
#include "proxies/outcomes.h"
#include "proxies/python_type.h"

namespace ling::cpython {
namespace {

using PythonTypes = PythonTest;

Class_Generic class_from(const PyObjectPtr& type) { return Class_Generic::cast(from_python(type.get())).value(); }

constexpr const char* shop = R"(
class Shop:
    """Where things are sold."""
    limit = 3
    def __init__(self, name, *, floor=0): self.name, self.floor = name, floor
    def __str__(self): return f'{self.name} on {self.floor}'
    def count(self, *things):
        """How many."""
        return len(things)
    label = property(lambda self: self.name, lambda self, text: setattr(self, 'name', text), doc='What it says outside.')
    fixed = property(lambda self: 1 // self.floor)
Shop.itself = Shop
result = Shop)";

TEST_F(PythonTypes, TellAndDoWhatPythonDoes) {
  const PyObjectPtr type = run(shop);
  const Class_Generic shop_class = class_from(type);
  const Any kiosk = shop_class("kiosk");
  const named_argument floor{"floor", 2};
  const auto method = [&](const char* name) { return shop_class.definedMethod(meta_method_untyped(name)).value(); };
  const auto property = [&](const char* name) {
    return shop_class.definedProperty(meta_property_untyped(name)).value();
  };
  expect_outcomes({
      {shop_class.doc(), "Where things are sold."},
      {property("label").write(kiosk, "stall"), "None"},
      {property("label").read(kiosk), "stall"},
      {property("fixed").read(kiosk), "Error: integer division or modulo by zero"},
      {shop_class.object().call_named(std::vector<Any>{"tower"}, {&floor, 1}), "tower on 2"},
      {ask(shop_class, ".limit"), "3"},
      {method("count").callWith(std::vector<Any>(12, kiosk)), "11"},
  });
  EXPECT_EQ(outcome_text(method("count").callWith(std::vector<Any>(13, kiosk))).find("BadArgument: Bad call of "), 0u);
  EXPECT_TRUE(ask(shop_class, ".itself").is_same(shop_class) && from_python(type.get()).is_same(shop_class));
  PyObject_SetAttrString(type.get(), "limit", eval("4").get());
  expect_outcome(ask(shop_class, ".limit"), "4");
}

TEST_F(PythonTypes, DescendFromTheirBases) {
  const Class_Generic last = class_from(run(R"(
class First:
    def first(self): return 'found'
result = First
for _ in range(1000): result = type('Next', (result,), {}))"));
  expect_outcome(last.definedMethod(meta_method_untyped("first")).value()(last()), "found");
}

TEST_F(PythonTypes, MadeByEightThreadsAreOneClass) {
  for (int round = 0; round < 20; ++round) {
    const PyObjectPtr type = run(R"(
class Meta(type):                 # every look at a member lets another thread in
    def __getattribute__(cls, name):
        __import__('time').sleep(0)
        return type.__getattribute__(cls, name)
class New(type('Base', (), {}), metaclass=Meta):
    def method(self): return 1
result = New)");
    std::vector<Any> classes(8);
    on_eight_threads([&](int i) { classes[static_cast<std::size_t>(i)] = from_python(type.get()); });
    for (const Any& each : classes) {
      EXPECT_TRUE(each.is_same(classes[0]));
    }
  }
}

// All that a host can ask of something that has crossed.
void ask_everything(const Any& crossed) {
  const Any value = is_error_result(crossed) ? Error::unchecked(crossed).value() : crossed;
  if (const auto callable = I_Callable_Generic::cast(value)) {
    static_cast<void>(callable->signature());
  }
  if (const auto of_class = Class_Generic::cast(value)) {
    for (const class_member* member : of_class->object().members()) {
      static_cast<void>(ask(value, ("." + std::string(member->name->text)).c_str()));
    }
  }
}

TEST_F(PythonTypes, EndWithTheRunThatDefinedThem) {
  const HashMap_Generic variables;
  const PyObjectPtr references = eval("[]");
  variables.set("references", from_python(references.get()));
  for (const char* crossing : {"return C", "return [C]", "raise C('x')", "return C.method", "return D",
                               "def f(c: C) -> D: pass\nreturn f", "print(1 + C)"}) {
    const String code(std::string(R"(
import weakref
class C(Exception):
    limit = 3
    def method(self, other: 'C' = None): pass
    label = property(lambda self: 1)
class D(C): pass
C.itself = C
references.extend([weakref.ref(C), weakref.ref(D)])
)") + crossing);
    ask_everything(evaluate(code, EvaluationScope({}, {}, variables, {})));
  }
  EXPECT_EQ(PyList_Size(references.get()), 14);
  PyObject_CallMethod(PyImport_ImportModule("gc"), "collect", nullptr);
  for (Py_ssize_t i = 0; i < PyList_Size(references.get()); ++i) {
    EXPECT_EQ(PyObjectPtr(PyObject_CallNoArgs(PyList_GetItem(references.get(), i))).get(), Py_None) << i;
  }
}

TEST_F(PythonTypes, AreOneClassAsLongAsItHasAHandle) {
  const PyObjectPtr type = run(shop);
  Any first = from_python(type.get());
  const Type instances = Type::of(Class_Generic::unchecked(first));
  first = Any();
  EXPECT_TRUE(from_python(type.get()).is_same(instances.toClass())) << "a type keeps its class";
  // What belongs to a class leads back to it after the class has ended.
  const auto method = class_from(run(shop)).definedMethod(meta_method_untyped("count")).value();
  EXPECT_EQ(outcome_text(qualname(method)), "Shop.count");
}

TEST_F(PythonTypes, SurviveHostileMetaclasses) {
  const PyObjectPtr types = run(R"(
class Failing(type):
    def __getattribute__(cls, name): raise ValueError(name)
class Members(type):
    __dict__ = property(lambda cls: type('M', (), {'keys': lambda s: (), 'items': lambda s: [5, (), None]})())
    __bases__ = property(lambda cls: [1, None, cls])
result = [Failing('A', (), {}), Members('B', (), {}), type('', (), {'\ud800': 1, '': 2, 'a.b': 3})])");
  for (Py_ssize_t i = 0; i < PyList_Size(types.get()); ++i) {
    EXPECT_TRUE(Class_Generic::cast(from_python(PyList_GetItem(types.get(), i)))) << i;
  }
}

}  // namespace
}  // namespace ling::cpython
