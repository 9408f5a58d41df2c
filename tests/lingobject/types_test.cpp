// The type objects of wrappers: how one is chosen, what it shows, and how wrappers live and die.
#include "bridge/python.h"
#include "ling/ling.h"
#include "lingobject/ling_object.h"
#include "lingobject/outcomes.h"
#include "python/error_bridge.h"

#include <algorithm>

namespace ling::cpython {
namespace {

using Types = PythonTest;

template <std::uint64_t Flags>
constinit const class_definition<void> flagged_class("Flagged", [](class_builder<void>& c) { c.flags(Flags); });

struct Sample {};
constinit const class_definition<Sample> sample_class("Sample",
                                                      [](class_builder<Sample>& c) { c.module("test.types"); });

std::string name_of(PyTypeObject* type) {
  const PyObjectPtr name(PyObject_GetAttrString(reinterpret_cast<PyObject*>(type), "__name__"));
  return repr(name);
}

TEST_F(Types, AreSharedByFlagsWhereNobodyDeclaresTheClass) {
  using namespace class_flags;
  PyTypeObject* const types[] = {wrapper_type_of(flagged_class<0>.required()),
                                 wrapper_type_of(flagged_class<sequence>.required()),
                                 wrapper_type_of(flagged_class<collection>.required()),
                                 wrapper_type_of(flagged_class<sequence | collection>.required()),
                                 wrapper_type_of(flagged_class<callable>.required())};
  for (PyTypeObject* const& type : types) {
    EXPECT_EQ(std::count(std::begin(types), std::end(types), type), 1);
    EXPECT_GE(Py_REFCNT(type), 2) << "nobody can release the last reference";
  }
  EXPECT_EQ(wrapper_type_of(flagged_class<callable | sequence | collection>.required()), types[4]);
}

TEST_F(Types, AreMadeForDeclaredClasses) {
  object_value_class& late = *new object_value_class("Late.One");
  EXPECT_EQ(name_of(wrapper_type_of(late)), "'>LingObject'");
  late.set_declaring_context(Class_Generic(sample_class.required()));
  EXPECT_EQ(name_of(wrapper_type_of(late)), "'ling~test`types`Sample`Late`One'");
}

// Its type cannot be made in one go: showing the default of a parameter lets other threads run.
constinit const class_definition<Sample> slow_class("Slow", [](class_builder<Sample>& c) {
  const PyObjectPtr slow =
      run("import time\nclass Slow:\n  def __repr__(self):\n    time.sleep(0.001)\n    return 'slow'\nresult = Slow()");
  c.module("test.types")
      .method("wait", "for", "", [](const Sample&, const Any& value) { return value; }, {from_python(slow.get())});
});

TEST_F(Types, AreTheSameForThreadsThatAskAtOnce) {
  const Any values[] = {slow_class.required().allocate_instance(), flagged_class<0>.required().allocate_instance(),
                        make_function("f", "", "", [] {})};
  std::vector<PyTypeObject*> types[8];
  on_eight_threads([&](int thread) {
    for (const Any& value : values) {
      const PyObjectPtr wrapper = wrap(value);
      types[thread].push_back(Py_TYPE(wrapper.get()));
    }
  });
  for (const auto& seen : types) {
    EXPECT_EQ(seen, types[0]);
  }
  EXPECT_EQ(types[0][0], wrapper_type_of(slow_class.required())) << "what is remembered is what is in the table";
}

// Its texts cannot be told without looking at an instance of it.
struct Curious {};
Any curious_default;
constinit const class_definition<Curious> curious_class("Curious", [](class_builder<Curious>& c) {
  c.module("test.types")
      .doc("Shows itself.")
      .method("shown", "value", "", [](const Curious&, const Any&) {}, {curious_default});
});

TEST_F(Types, MayBeLookedAtWhileTheirTextsAreMade) {
  const auto make = make_function("make", "", "", [] { return curious_class.required().allocate_instance(); });
  const PyObjectPtr make_curious = run(R"(
def result(make):
  class Curious:
    looks = 0
    def __repr__(self):
      Curious.looks += 1
      return f'{type(make()) is type(make())} {Curious.looks}'
  return Curious())");
  const PyObjectPtr curious(PyObject_CallFunctionObjArgs(make_curious.get(), to_python(make).get(), nullptr));
  curious_default = from_python(curious.get());
  expect_outcomes(curious_class.required().allocate_instance(), R"(
    t.shown.__doc__, t.__doc__ => ('(self: test.types.Curious, value=True 1) -> None\n\n-', 'Shows itself.'))");
  curious_default = {};
}

// Its end runs Python code that fails.
struct Mortal {
  inline static std::atomic<int> lives = 0;
  Mortal() { ++lives; }
  Mortal(const Mortal&) = delete;
  ~Mortal() {
    --lives;
    const GilGuard gil;
    static_cast<void>(run("raise KeyError('at the end')"));
    static_cast<void>(capture_error());
  }
};
constinit const class_definition<Mortal> mortal_class("Mortal",
                                                      [](class_builder<Mortal>& c) { c.module("test.types"); });

TEST_F(Types, LetWrappersDieOnAnyThreadAndWhileAnExceptionIsOnItsWay) {
  std::vector<PyObjectPtr> wrappers[8];
  for (int i = 0; i < 8 * 200; ++i) {
    wrappers[i % 8].push_back(to_python(mortal_class.required().allocate_instance()));
  }
  on_eight_threads([&](int thread) { wrappers[thread].clear(); });
  PyObjectPtr wrapper = to_python(mortal_class.required().allocate_instance());
  PyErr_SetString(PyExc_LookupError, "on its way");
  wrapper = PyObjectPtr();
  EXPECT_EQ(Mortal::lives, 0);
  EXPECT_EQ(capture_error_or("nothing").message(), "on its way");
}

}  // namespace
}  // namespace ling::cpython
