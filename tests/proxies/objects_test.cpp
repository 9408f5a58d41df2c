// Python objects in the host: members, order, identity and lives.
#include "bridge/error_bridge.h"
#include "proxies/cpython_object.h"
#include "proxies/object_members.h"
#include "proxies/outcomes.h"

#include <atomic>
#include <cstdlib>

namespace ling::cpython {
namespace {

using Objects = PythonTest;

// An object with one of each kind of member; `Account` is reachable as its attribute `kind`, wrapped from the host.
constexpr const char* account = R"(
class Descriptors:
    read_only = property(lambda self: 1)
    mended = property(lambda self: self.x, None)
    full = property(lambda self: self.x, lambda self, value: setattr(self, 'x', value))
    unreadable = property(None, lambda self, value: None)
class Account:
    """Money."""
    def __init__(self):
        self.balance = 5
        for name, each in vars(Descriptors).items():
            if isinstance(each, property): setattr(self, name, each)
    def add(self, amount): self.balance += amount; return self.balance
    @property
    def fails(self): raise KeyError('no')
    @property
    def interrupted(self): raise KeyboardInterrupt('stop')
    @property
    def fixed(self): return 3
    def __str__(self): return f'account {self.balance}'
result = Account())";

TEST_F(Objects, AnswerForTheirAttributes) {
  const Any object = from_python(run(account).get());
  const auto get = [&](const char* name) { return outcome_text(object.propertyValue(meta_property_untyped(name))); };
  const auto set = [&](const char* name, const Any& value) {
    return outcome_text(object.setPropertyValue(meta_property_untyped(name), value));
  };
  const struct {
    std::string answer;
    const char* expected;
  } rows[] = {
      {get("balance"), "5"},
      {get("nothing"), "Error: 'Account' object has no attribute 'nothing'"},
      {get("fails"), "Error: 'no'"},
      {get("interrupted"), "Error: stop"},
      {set("balance", 6), "None"},
      {get("balance"), "6"},
      {set("fixed", 1), "Error: …"},
      {set("balance", Error("refused")), "Error: refused"},
      {outcome_text(call_method(object, meta_method_untyped("add"), std::vector<Any>{10})), "16"},
      {outcome_text(display(object)), "account 16"},
      {outcome_text(remove_property(object, meta_property_untyped("balance"))), "false"},
      {outcome_text(remove_method(object, meta_method_untyped("add"))), "false"},
      {outcome_text(own_methods_of(object)), "{}"},
      {outcome_text(own_properties_of(object)), "{}"},
      {outcome_text(method_of(object, meta_method_untyped("balance"))), "None"},
      {outcome_text(own_method_of(object, meta_method_untyped("fails"))), "None"},
      {outcome_text(getter_hook(object, internal::intern("balance"))), "16"},
      {outcome_text(setter_hook(object, internal::intern("balance"), 17)), "None"},
      {outcome_text(I_Callable_Generic::cast(method_hook(object, internal::intern("add"))).value()(1)), "18"},
  };
  for (const auto& row : rows) {
    EXPECT_TRUE(is_expected(row.answer, row.expected)) << row.answer << "\n  not " << row.expected;
  }
  EXPECT_TRUE(cpython_object_class.required().has_flag(std::uint64_t{1} << 39));
}

TEST_F(Objects, DescribePropertiesTheyHold) {
  const PyObjectPtr owner = run(account);
  const Any object = from_python(owner.get());
  const auto described = [&](const char* name) { return property_of(object, meta_property_untyped(name)); };
  for (const char* name : {"balance", "nothing", "add", "unreadable", "interrupted"}) {
    EXPECT_FALSE(described(name)) << name;
  }
  EXPECT_FALSE(described("read_only").value().hasSetter());
  EXPECT_FALSE(described("mended").value().hasSetter());
  const Any other = from_python(run("class Other: x = 2\nresult = Other()").get());
  const Property full = described("full").value();
  EXPECT_EQ(outcome_text(full.read(other)), "2");
  EXPECT_EQ(outcome_text(full.write(other, 4)), "None");
  EXPECT_EQ(outcome_text(own_property_of(object, meta_property_untyped("full")).value().read(other)), "4");

  // A function of the host's that serves as an accessor stays what it is.
  const I_Callable_Generic host =
      make_function("text", "value", "", [](const Any& value) { return display_text(value); });
  const PyObjectPtr property(
      PyObject_CallFunctionObjArgs(reinterpret_cast<PyObject*>(&PyProperty_Type), to_python(host).get(), nullptr));
  PyObject_SetAttrString(owner.get(), "shown", property.get());
  EXPECT_EQ(outcome_text(described("shown").value().read(7)), "7");
  EXPECT_TRUE(host.isIndependent());
}

TEST_F(Objects, TakeInsertedMembers) {
  const PyObjectPtr owner = run(account);
  const Any object = from_python(owner.get());
  const I_Callable_Generic method = make_function("say", "who", "", [](const Any& who) { return display_text(who); });
  EXPECT_FALSE(insert_method(object, meta_method_untyped("free"), method).is_error());
  method.setIndependent(false);
  EXPECT_FALSE(insert_method(object, meta_method_untyped("bound"), method).is_error());
  EXPECT_FALSE(insert_property_value(object, meta_property_untyped("note"), "text").is_error());
  EXPECT_EQ(repr(PyObjectPtr(PyObject_CallMethod(owner.get(), "free", "s", "you"))), "'you'");
  EXPECT_EQ(repr(PyObjectPtr(PyObject_CallMethod(owner.get(), "bound", nullptr))), "'account 5'");
  EXPECT_EQ(outcome_text(object.propertyValue(meta_property_untyped("note"))), "text");
  const Property computed(make_function("", "", "", [] { return 1; }), String());
  EXPECT_EQ(outcome_text(insert_object_property(CPythonObject::unchecked(object), "n", computed)),
            "Error: Unable to insert non-value property to a python object, use 'raw_insert_property' instead.");
}

TEST_F(Objects, WithoutAnObjectSayThatThereIsNone) {
  const Any empty = Class_Generic(cpython_object_class.required())();
  const CPythonObject self = CPythonObject::unchecked(empty);
  for (const Any& answer : {Any(object_property_value(self, "x")), Any(set_object_property(self, "x", 1)),
                            Any(display(empty)), Any(insert_object_property(self, "x", Property::constant(1)))}) {
    EXPECT_EQ(outcome_text(answer), "Error: The object is null.");
  }
  EXPECT_FALSE(method_of(empty, meta_method_untyped("x")));
  EXPECT_FALSE(to_python(empty));
  EXPECT_EQ(outcome_text(capture_error_or("nothing")), "Error: The object is null.");
}

TEST_F(Objects, CompareByTheirOwnOperatorsInAFixedOrder) {
  const PyObjectPtr make = run(R"(
def result(**answers):
    class Spy:
        log = ''
        def ask(self, op):
            Spy.log += op
            answer = answers.get({'<': 'lt', '>': 'gt', '=': 'eq'}[op], NotImplemented)
            if isinstance(answer, type): raise answer(op)
            return answer
        __lt__ = lambda self, other: self.ask('<')
        __gt__ = lambda self, other: self.ask('>')
        __eq__ = lambda self, other: self.ask('=')
        __str__ = lambda self: self.log
    return Spy())");
  const struct {
    const char* answers;
    const char* order;
    const char* asked;
  } rows[] = {
      {"dict(lt=True)", "Less", "<"},
      {"dict(lt=False, gt=True)", "Greater", "<>"},
      {"dict(lt=False, gt=False, eq=True)", "Equal", "<>="},
      {"dict(eq=True)", "Equal", "<>="},
      {"dict(lt=False, gt=False, eq=False)", "Equal", "<>=><"},
      {"dict(lt=1, gt=False)", "Less", "<>=><"},
      {"dict(lt=False, gt=[0])", "Greater", "<>=>"},
      {"dict()", "Error: '>' not supported between instances of 'Spy' and 'object'", "<>=>"},
      {"dict(lt=False, gt=ValueError)", "Error: >", "<>"},
      {"dict(lt=KeyboardInterrupt)", "Error: <", "<"},
      {"dict(lt=False, gt=False, eq=SystemExit)", "Error: =", "<>="},
  };
  const Any plain = from_python(eval("object()").get());
  for (const auto& row : rows) {
    const PyObjectPtr no_arguments(PyTuple_New(0));
    const Any spy =
        from_python(PyObjectPtr(PyObject_Call(make.get(), no_arguments.get(), eval(row.answers).get())).get());
    EXPECT_EQ(outcome_text(compare_objects(spy, spy)), "Equal");
    const Any other = 1;
    const auto by_identity = outcome_text(compare_objects(spy, other));
    EXPECT_NE(by_identity, "Equal");
    EXPECT_EQ(outcome_text(compare_objects(spy, other)), by_identity);
    EXPECT_EQ(outcome_text(display(spy)), "") << "nothing was asked yet";
    EXPECT_EQ(outcome_text(compare_objects(spy, plain)), row.order) << row.answers;
    EXPECT_EQ(outcome_text(display(spy)), row.asked) << row.answers;
  }
}

TEST_F(Objects, ComeHomeAsTheVeryObject) {
  const PyObjectPtr objects = run(R"(
import array, collections, enum, fractions, sys, types, weakref
class Class: method = lambda self: None
class Meta(type): pass
def generator(): yield
instance = Class()
result = [object(), [], (), (1,), {}, {1}, frozenset(), iter([]), range(3), memoryview(b'x'), collections.deque(),
          collections.OrderedDict(), collections.namedtuple('P', 'x')(1), array.array('i', [1]), generator(), len,
          generator, instance, instance.method, [].append, Class, Meta('M', (), {}), enum.Enum('E', 'a'),
          enum.Enum('E', 'a').a, LookupError, OSError, object, dict, list, sys, types.SimpleNamespace(), ...,
          slice(1), weakref.ref(instance), KeyboardInterrupt(), property(), __import__('re').compile('x')])");
  const Py_ssize_t count = PyList_Size(objects.get());
  std::vector<Py_ssize_t> references;
  for (Py_ssize_t i = 0; i < count; ++i) {
    from_python(PyList_GetItem(objects.get(), i));  // classes are made and kept on first sight
    references.push_back(Py_REFCNT(PyList_GetItem(objects.get(), i)));
  }
  on_eight_threads([&](int) {
    for (Py_ssize_t i = 0; i < count; ++i) {
      Any value;
      {
        const GilGuard gil;
        value = from_python(PyList_GetItem(objects.get(), i));
      }
      const PyObjectPtr home = to_python(value);
      const GilGuard gil;
      EXPECT_EQ(home.get(), PyList_GetItem(objects.get(), i)) << i << " " << repr(home);
    }
  });
  for (Py_ssize_t i = 0; i < count; ++i) {
    EXPECT_EQ(Py_REFCNT(PyList_GetItem(objects.get(), i)), references[static_cast<std::size_t>(i)]) << i;
  }
}

// A Python object, presented, and a weak reference to it that tells whether it is alive. Nothing else holds the object.
struct mortal {
  PyObjectPtr weak;
  Any value;

  explicit mortal(const char* when_dead = "None") {
    const PyObjectPtr both = run(std::string("import os, weakref\nclass Mortal: pass\nresult = [Mortal()]\n") +
                                 "result.append(weakref.ref(result[0], " + when_dead + "))");
    value = from_python(PyList_GetItem(both.get(), 0));
    weak = PyObjectPtr::share(PyList_GetItem(both.get(), 1));
    PyList_SetItem(both.get(), 0, PyObjectPtr::share(Py_None).release());
  }
  bool is_alive() const { return PyObjectPtr(PyObject_CallObject(weak.get(), nullptr)).get() != Py_None; }
};

TEST_F(Objects, DieWithTheLastHandleAndNotEarlier) {
  mortal one;
  Any second = one.value;
  one.value = Any();
  EXPECT_TRUE(one.is_alive());
  second = Any();
  EXPECT_FALSE(one.is_alive());
}

TEST_F(Objects, DieOnAThreadThatNeverSawPythonOnceItGetsTheLock) {
  mortal one;
  std::atomic<bool> dropping = false;
  std::thread stranger([&, last = std::move(one.value)]() mutable {
    dropping = true;
    last = Any();
  });
  while (!dropping) {
    std::this_thread::yield();
  }
  EXPECT_TRUE(one.is_alive()) << "this thread has the lock";
  PyThreadState* const state = PyEval_SaveThread();
  stranger.join();
  PyEval_RestoreThread(state);
  EXPECT_FALSE(one.is_alive());
}

TEST_F(Objects, DieAtTheEndOfTheProcess) {
  EXPECT_EXIT(
      {
        const static mortal last("lambda weak: os.write(2, b'released')");
        const PyThreadState* const state = PyEval_SaveThread();
        std::exit(state == nullptr);
      },
      testing::ExitedWithCode(0), "^released$");
}

}  // namespace
}  // namespace ling::cpython
