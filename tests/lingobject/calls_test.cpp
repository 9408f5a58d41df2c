// Methods read from wrappers and called: whom they keep alive, and what may happen to them meanwhile.
#include "bridge/python.h"
#include "ling/ling.h"
#include "lingobject/ling_object.h"
#include "lingobject/outcomes.h"

namespace ling::cpython {
namespace {

using Calls = PythonTest;

// Counts its lives.
struct Worker {
  inline static std::atomic<int> lives = 0;
  std::int64_t number = 1;
  explicit Worker(std::int64_t n = 1) : number(n) { ++lives; }
  Worker(const Worker& other) : number(other.number) { ++lives; }
  ~Worker() { --lives; }
};

constinit const class_definition<Worker> worker_class("Worker", [](class_builder<Worker>& c) {
  c.module("test.calls")
      .constructor("number", "", [](std::int64_t number) { return Worker(number); }, {1})
      .method("add", "number, more", "",
              [](const Worker& self, std::int64_t number, std::int64_t more) { return self.number + number + more; },
              {0})
      .method("ask", "function, arguments...", "",
              [](const Worker&, const I_Callable_Generic& function, const Variadic& arguments) {
                return function.callWith(std::vector<Any>(arguments.begin(), arguments.end()));
              })
      .method("replaced", "", "", [](const Worker&) { return "before"; })
      .class_method("independent", "", "", [] { return "no receiver"; })
      .method("show", "text", "", [](const Worker&, const String& text) { return text; })
      .method("show", "number", "", [](const Worker&, std::int64_t number) { return number; });
});

Any make_worker() { return Class_Generic(worker_class.required())(); }

TEST_F(Calls, KeepTheReceiverAliveAsLongAsTheMethod) {
  EXPECT_EQ(Worker::lives, 0);
  const PyObjectPtr use = run(R"(
import ling
def result(make):
  read, asked, stored = make().add, make().add, ling.List([make().add])
  assert asked.__doc__ and read(1) == asked(1) == stored[0](1) == 2
  w = make()
  kept = w.add
  del w
  return kept, kept, kept(1), repr(make().ask(make().add, 5)), make().show('a'), make().independent())");
  const PyObjectPtr make = to_python(make_function("make", "", "", [] { return make_worker(); }));
  PyObjectPtr kept(PyObject_CallFunctionObjArgs(use.get(), make.get(), nullptr));
  ASSERT_TRUE(kept);
  EXPECT_EQ(Worker::lives, 1);
  // The same one, whether asked for before or not, on the way to the host and back.
  const Any first = from_python(PyTuple_GetItem(kept.get(), 0));
  const Any second = from_python(PyTuple_GetItem(kept.get(), 1));
  EXPECT_TRUE(first.is_same(second));
  kept = PyObjectPtr();
  EXPECT_EQ(I_Callable_Generic::unchecked(first)(2).get(), Any(3).get());
}

TEST_F(Calls, EndWithTheLastReference) { EXPECT_EQ(Worker::lives, 0); }

// A method that takes its receiver.
template <class F>
I_Callable_Generic make_method(const char* name, const F& function) {
  const auto method = make_function(name, "self", "", function);
  method.setIndependent(false);
  return method;
}

TEST_F(Calls, GoToTheMethodThatWasRead) {
  const Any worker = make_worker();
  auto& instance = static_cast<object_value_instance&>(*worker.get());
  const meta_method_untyped own("own");
  instance.insert_own_method(own.entry(), make_method("own", [&](const Any&) {
                               return instance.remove_own_method(own.entry()) ? "removed" : "gone";
                             }));
  instance.insert_own_method(meta_method_untyped("replace").entry(), make_method("replace", [](const Any& self) {
                               class_of(self).object().add_method_unsafe(
                                   "replaced", make_method("replaced", [](const Any&) { return "after"; }));
                             }));
  expect_outcomes(worker, R"(
    m = w.replaced; a = m(); w.replace(); result = a, m(), repr(m) == repr(m), w.replaced() => ('before', 'before', True, 'after')
    m = w.own; result = m(), hasattr(w, 'own'), m() => ('removed', False, 'gone')
    m = w.ask; result = m(m, m, w.add, 4)  => 5
    m = w.ask; result = m(lambda: [m, str(m)][0])(w.add, 4) => 5)");
}

TEST_F(Calls, AreCountedAgainstTheRecursionLimit) {
  const PyObjectPtr recur = run(R"(
def result(w):
  read = lambda: w.ask(read)
  kept = w.ask
  again = lambda: kept(again)
  for f in read, again, lambda: w.ask(w.ask, again):
    try:
      f()
    except RuntimeError as e:
      assert 'recursion' in str(e), e
    else:
      assert False
  return w.ask(kept, w.add, 4))");
  const PyObjectPtr outcome(PyObject_CallFunctionObjArgs(recur.get(), to_python(make_worker()).get(), nullptr));
  EXPECT_EQ(repr(outcome), "5");
}

TEST_F(Calls, ComeFromSeveralThreads) {
  const PyObjectPtr work = run(R"(
def result(make):
  w = make()
  methods = []
  for i in range(2000):
    m = w.add
    assert m(i) == i + 1 == w.add(more=i, number=0)
    methods.append(m)
    if i % 7 == 0:
      assert hash(m) == hash(w.add) and w.ask(m, i) == i + 1
    if i % 100 == 0:
      methods.clear()
  return len(methods))");
  const PyObjectPtr make = to_python(make_function("make", "", "", [] { return make_worker(); }));
  allocated_blocks();  // collects what other cases have left in circles
  const int lives = Worker::lives;
  std::atomic<int> passed = 0;
  on_eight_threads([&](int) {
    const GilGuard lock;
    passed += PyObjectPtr(PyObject_CallFunctionObjArgs(work.get(), make.get(), nullptr)) ? 1 : 0;
    PyErr_Clear();
  });
  EXPECT_EQ(passed, 8);
  EXPECT_EQ(Worker::lives, lives);
}

TEST_F(Calls, LeaveNothingBehind) {
  const PyObjectPtr use = run(R"(
def result(w):
  w.add(1), w.add(number=1), repr(w.add), hasattr(w, 'nothing')
  for bad in lambda: w.add('x'), lambda: w.add(z=1), lambda: w.nothing:
    try: bad()
    except Exception: pass)");
  const PyObjectPtr worker = to_python(make_worker());
  expect_no_leak("calls", [&] {
    const PyObjectPtr done(PyObject_CallFunctionObjArgs(use.get(), worker.get(), nullptr));
    EXPECT_TRUE(done);
  });
}

// What is missing is told by the class's name, which may come to be another, as a name may come to be known.
TEST_F(Calls, OfMissingNamesAreToldWhatIsSo) {
  auto& of_class = *new object_value_class("Latecomer");
  const Any value = of_class.allocate_instance();
  constexpr const char* name = "is_not_known_yet";
  const auto told = [&] {
    const PyObjectPtr wrapper = to_python(value);
    const PyObjectPtr found(PyObject_GetAttrString(wrapper.get(), name));
    const PyObjectPtr error = take_pending();
    return error ? repr(error) : repr(found);
  };
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(told(), R"(AttributeError("'Latecomer' object has no attribute 'is_not_known_yet'"))");
  }
  of_class.set_declaring_context(Class_Generic(worker_class.required()));
  EXPECT_EQ(told(), R"(AttributeError("'test.calls.Worker.Latecomer' object has no attribute 'is_not_known_yet'"))");
  of_class.add_method_unsafe(name, make_function(name, "self", "", [](const Any&) { return 1; }));
  EXPECT_EQ(told().find("AttributeError"), std::string::npos) << told();
}

}  // namespace
}  // namespace ling::cpython
