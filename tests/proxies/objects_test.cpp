// Python objects in the host: members, order, identity and lives.
#include "proxies/object_members.h"
#include "proxies/outcomes.h"
#include "python/error_bridge.h"

namespace ling::cpython {
namespace {

using Objects = PythonTest;

constexpr const char* account = R"(
class Account:
    def __init__(self):
        self.balance, self.read_only = 5, property(lambda self: 1)
        self.full = property(lambda self: self.x, lambda self, value: setattr(self, 'x', value))
        self.unreadable = property(None, lambda self, value: None)
    def add(self, amount): self.balance += amount; return self.balance
    fails = property(lambda self: {}['no'])
    interrupted = property(lambda self: exec('raise KeyboardInterrupt("stop")'))
    def __str__(self): return f'account {self.balance}'
result = Account())";

TEST_F(Objects, AnswerForTheirAttributes) {
  const Any object = from_python(run(account).get());
  const meta_property_untyped balance("balance");
  const Any null = Class_Generic(cpython_object_class.required())();
  expect_outcomes({
      {ask(object, ".nothing"), "Error: 'Account' object has no attribute 'nothing'"},
      {ask(object, ".fails"), "Error: 'no'"},
      {ask(object, ".interrupted"), "Error: stop"},
      {object.setPropertyValue(balance, 6), "None"},
      {object.setPropertyValue(balance, Error("refused")), "Error: refused"},
      {ask(object, "add", {10}), "16"},
      {I_Callable_Generic::cast(method_hook(object, internal::intern("add"))).value()(1), "17"},
      {ask(null, ".balance"), "Error: The object is null."},
  });
}

TEST_F(Objects, DescribePropertiesTheyHold) {
  const Any object = from_python(run(account).get());
  const auto described = [&](const char* name) { return property_of(object, meta_property_untyped(name)); };
  for (const char* name : {"balance", "nothing", "unreadable"}) {
    EXPECT_FALSE(described(name)) << name;
  }
  EXPECT_FALSE(described("read_only").value().hasSetter());
  const Property full = described("full").value();
  expect_outcome(full.write(object, 4), "None");
  expect_outcome(full.read(object), "4");
}

TEST_F(Objects, TakeInsertedMembers) {
  const PyObjectPtr owner = run(account);
  const Any object = from_python(owner.get());
  const I_Callable_Generic method = make_function("say", "who", "", [](const Any& who) { return display_text(who); });
  expect_outcome(insert_method(object, meta_method_untyped("free"), method), "None");
  method.setIndependent(false);
  expect_outcome(insert_method(object, meta_method_untyped("bound"), method), "None");
  expect_outcome(insert_property_value(object, meta_property_untyped("note"), "text"), "None");
  EXPECT_EQ(repr(PyObjectPtr(PyObject_CallMethod(owner.get(), "free", "s", "you"))), "'you'");
  EXPECT_EQ(repr(PyObjectPtr(PyObject_CallMethod(owner.get(), "bound", nullptr))), "'account 5'");
  const Property computed(make_function("", "", "", [] { return 1; }), String());
  expect_outcome(insert_object_property(CPythonObject::unchecked(object), meta_property_untyped("n").entry(), computed),
                 "Error: Unable to insert non-value property to a python object, use 'raw_insert_property' instead.");
}

TEST_F(Objects, HaveMembersOfTheHostsPastTheObject) {
  const Any object = from_python(run(account).get());
  std::int64_t level = 1;
  const Property computed = property_builder_base("level", "")
                                .getter([&](const Any&) { return level; })
                                .setter([&](const Any&, std::int64_t value) { level = value; })
                                .build()
                                .value();
  const meta_property_untyped level_name("level");
  const meta_method_untyped add("add");
  expect_outcome(raw_insert_property(object, level_name, computed), "None");
  const I_Callable_Generic twice = make_function("twice", "self, text", "", [](const Any& self, const String& text) {
    return String("{}{}{}").arg(text, text, display_text(self));
  });
  twice.setIndependent(false);
  static_cast<object_value_instance&>(*object.get()).insert_own_method(add.entry(), twice);
  expect_outcomes({
      {property_of(object, level_name).value().read(object), "1"},
      {object.setPropertyValue(level_name, 2), "None"},
      {ask(object, ".level"), "2"},
      {object.boundMethod(add).value()("y"), "yyaccount 5"},
      {ask(object, "add", {"z"}), "zzaccount 5"},
      {own_properties_of(object), "{}"},
  });
  EXPECT_TRUE(method_hook(object, add.entry()).is_same(twice));
  EXPECT_FALSE(twice.isIndependent()) << "only what Python has bound takes no receiver";
}

TEST_F(Objects, CompareByTheirOwnOperatorsInAFixedOrder) {
  const PyObjectPtr make = run(R"(
def result(answers):
    class Spy:
        log = ''
        def ask(self, op):
            Spy.log += op
            answer = answers.get(op, NotImplemented)
            if isinstance(answer, type): raise answer(op)
            return answer
        __lt__, __gt__, __eq__ = (lambda self, other, op=op: self.ask(op) for op in '<>=')
        __str__ = lambda self: self.log
    return Spy())");
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"{'<': True}",                          "Less",                                                             "<"    },
      {"{'=': True}",                          "Equal",                                                            "<>="  },
      {"{'<': False, '>': False, '=': False}", "Equal",                                                            "<>=><"},
      {"{}",                                   "Error: '>' not supported between instances of 'Spy' and 'object'", "<>=>" },
      {"{'<': KeyboardInterrupt}",             "Error: <",                                                         "<"    },
  };
  const Any plain = from_python(eval("object()").get());
  for (const auto& [answers, order, asked] : rows) {
    const PyObjectPtr object(PyObject_CallFunctionObjArgs(make.get(), eval(answers).get(), nullptr));
    const Any spy = from_python(object.get());
    expect_outcome(compare_objects(spy, spy), "Equal");
    EXPECT_NE(outcome_text(compare_objects(spy, 1)), "Equal");
    expect_outcome(compare_objects(spy, plain), order, answers);
    expect_outcome(display(spy), asked, answers);
  }
}

TEST_F(Objects, AreEqualWhenPythonSaysSo) {
  // Python asks the one, then the other; the host asks for no order.
  const PyObjectPtr objects = run(R"(
import unittest.mock
class Same:
    __eq__ = lambda self, other: True if isinstance(other, Same) else NotImplemented
    __hash__ = lambda self: 1
class Called(Same):
    __call__ = lambda self: None
class Broken:
    __eq__ = lambda self, other: 1 / 0
class Interrupted:
    def __eq__(self, other): raise KeyboardInterrupt('stop')
result = [unittest.mock.ANY, Broken(), Interrupted(), {1}, {1}, frozenset({1}), {2}, Same(), Called(), Same, (1,), [1]])");
  const Py_ssize_t count = PyList_Size(objects.get());
  const auto python = [&](Py_ssize_t i) { return PyList_GetItem(objects.get(), i); };
  const auto object = [&](Py_ssize_t i) { return from_python(python(i)); };
  for (Py_ssize_t i = 0; i < count; ++i) {
    for (Py_ssize_t j = 0; j < count; ++j) {
      SCOPED_TRACE(testing::Message() << i << " == " << j);
      const int says = PyObject_RichCompareBool(python(i), python(j), Py_EQ);
      const std::string expected = says < 0 ? outcome_text(capture_error_or("")) : says > 0 ? "true" : "false";
      const Any a = object(i), b = object(j);
      expect_outcome(equal_objects(a, b), expected);
      expect_outcome(ask(List_Generic{a}, "contains", {b}), expected);
    }
  }
  EXPECT_EQ(hash_of(object(7)), hash_of(object(8)));
  expect_outcome(equal_objects(object(0), 1), "false", "it is asked about Python objects only");
}

TEST_F(Objects, AreOrderedAmongValuesByTheirIdentity) {
  const PyObjectPtr made = run("class A: pass\nresult = A()");
  const Any object = from_python(made.get()), number = 5;
  EXPECT_EQ(object_id(object), reinterpret_cast<std::uintptr_t>(made.get()));
  EXPECT_EQ(hash_of(object), hash_of(from_python(made.get())));
  const bool is_below = object_id(object) < object_id(number);
  expect_outcome(compare_objects(object, number), is_below ? "Less" : "Greater");
  expect_outcome(compare_objects(number, object), is_below ? "Greater" : "Less");
}

TEST_F(Objects, ComeHomeAsTheVeryObject) {
  const PyObjectPtr objects = run(R"(
class Class: method = lambda self: None
one = Class()
result = [object(), [], (1,), {}, {1}, iter([]), range(3), ..., len, lambda: 1, one, one.method, [].append, Class,
          KeyboardInterrupt(), __import__('sys'), property()])");
  for (Py_ssize_t i = 0; i < PyList_Size(objects.get()); ++i) {
    PyObject* const item = PyList_GetItem(objects.get(), i);
    from_python(item);  // classes are made and kept on first sight
    const Py_ssize_t references = Py_REFCNT(item);
    EXPECT_EQ(to_python(from_python(item)).get(), item) << i;
    EXPECT_EQ(Py_REFCNT(item), references) << i;
  }
}

TEST_F(Objects, DieWithTheLastHandleOnAThreadThatNeverSawPython) {
  const PyObjectPtr both =
      run("import weakref\nclass Mortal: pass\nresult = [Mortal()]\nresult.append(weakref.ref(result[0]))");
  Any last = from_python(PyList_GetItem(both.get(), 0));
  PyList_SetItem(both.get(), 0, PyObjectPtr::share(Py_None).release());
  const auto is_alive = [&] {
    return PyObjectPtr(PyObject_CallObject(PyList_GetItem(both.get(), 1), nullptr)).get() != Py_None;
  };
  std::thread stranger([&] { last = Any(); });
  EXPECT_TRUE(is_alive()) << "there is a handle, and this thread has the lock";
  PyThreadState* const state = PyEval_SaveThread();
  stranger.join();
  PyEval_RestoreThread(state);
  EXPECT_FALSE(is_alive());
}

}  // namespace
}  // namespace ling::cpython
