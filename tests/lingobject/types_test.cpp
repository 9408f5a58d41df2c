// The type objects of wrappers: how one is chosen, what it shows, and how wrappers live and die.
#include "bridge/error_bridge.h"
#include "bridge/python.h"
#include "ling/ling.h"
#include "lingobject/ling_object.h"
#include "lingobject/members.h"
#include "lingobject/outcomes.h"

#include <algorithm>

namespace ling::cpython {
namespace {

using Types = PythonTest;

template <std::uint64_t Flags>
constinit const class_definition<void> flagged_class("Flagged", [](class_builder<void>& c) { c.flags(Flags); });

struct Sample {
  std::int64_t level = 1;
};
constinit const class_definition<Sample> sample_class("Sample", [](class_builder<Sample>& c) {
  c.module("test.types")
      .doc("Stands for others.")
      .parent(I_Cloneable::getClass())
      .property(
          "level", "How high.", [](const Sample& self) { return self.level; },
          [](Sample& self, std::int64_t level) -> Any {
            self.level = level;
            return level < 0 ? Any(Error("too low")) : Any();
          })
      .property("fixed", "Never changes.", [](const Sample&) { return 5; })
      .property("_own", "Not for Python.", [](const Sample&) { return 6; })
      .method("act", "how, rest...", "Acts.", [](const Sample&, const String& how, const Variadic&) { return how; })
      .method("_act", "", "Not for Python.", [](const Sample&) {})
      .method("clone", "", "", [](const Sample& self) { return self; })
      .method("fail", "", "", [](const Sample&) -> Any { return Error("failed"); });
});

std::string name_of(PyTypeObject* type) {
  const PyObjectPtr name(PyObject_GetAttrString(reinterpret_cast<PyObject*>(type), "__name__"));
  return repr(name);
}

// What an exception that is pending says; clears it.
std::string take_exception() {
  const auto error = capture_error();
  return error ? std::string(error.value().message().view()) : "";
}

TEST_F(Types, AreSharedByFlagsWhereNobodyDeclaresTheClass) {
  using namespace class_flags;
  PyTypeObject* const types[] = {wrapper_type_of(flagged_class<0>.required()),
                                 wrapper_type_of(flagged_class<sequence>.required()),
                                 wrapper_type_of(flagged_class<collection>.required()),
                                 wrapper_type_of(flagged_class<sequence | collection>.required()),
                                 wrapper_type_of(flagged_class<callable>.required())};
  for (PyTypeObject* const& type : types) {
    EXPECT_EQ(name_of(type), "'>LingObject'");
    EXPECT_EQ(std::count(std::begin(types), std::end(types), type), 1);
    EXPECT_GE(Py_REFCNT(type), 2) << "nobody can release the last reference";
  }
  EXPECT_EQ(wrapper_type_of(flagged_class<callable | sequence | collection>.required()), types[4]);
  const Any values[] = {flagged_class<0>.required().allocate_instance(),
                        flagged_class<callable>.required().allocate_instance()};
  EXPECT_FALSE(PyCallable_Check(to_python(values[0]).get()));
  EXPECT_TRUE(PyCallable_Check(to_python(values[1]).get()));
}

TEST_F(Types, AreMadeForDeclaredClasses) {
  object_value_class& late = *new object_value_class("Late.One");
  EXPECT_EQ(name_of(wrapper_type_of(late)), "'>LingObject'");
  late.set_declaring_context(Class_Generic(sample_class.required()));
  object_value_class& of_module = *new object_value_class("Modular");
  of_module.add_parent_unsafe(Module::getClass().object());
  const Type integer[] = {Integer::getType()};
  const struct {
    Class_Generic of;
    const char* name;
  } rows[] = {
      {sample_class.required(), "'ling~test`types`Sample'"},
      {late, "'ling~test`types`Sample`Late`One'"},
      {of_module, "'ling~Modular'"},
      {generic_instance(List_Generic::getClass(), integer), "'ling~List<Integer>'"},
  };
  for (const auto& each : rows) {
    EXPECT_EQ(name_of(wrapper_type_of(each.of)), each.name);
    EXPECT_EQ(wrapper_type_of(each.of), wrapper_type_of(each.of));
  }
}

TEST_F(Types, ShowWhatTheClassDeclares) {
  EXPECT_EQ(wrong_outcomes(sample_class.required().allocate_instance(), R"(
    t.__doc__, t.__base__.__name__        => ('Stands for others.', '>LingObject')
    sorted(n for n in vars(t) if n[0] != '_') => ['act', 'clone', 'fail', 'fixed', 'level']
    t.act.__doc__                         => '(self: test.types.Sample, how: str, *rest) -> str\n\n-'
    t.level.__doc__, t.fixed.__doc__      => ('How high.', 'Never changes.')
    t.level.__get__(w), t.fixed.__get__(w) => (1, 5)
    t.level.__set__(w, 7), w.level        => (None, 7)
    t.level.__set__(w, -1)                => RuntimeError: too low
    t.level.__delete__(w)                 => AttributeError: Attribute cannot be deleted: level.
    t.fixed.__set__(w, 1)                 => AttributeError: attribute 'fixed' of 'ling~test`types`Sample' objects is not writable
    t.act(w, 'x')                         => TypeError: Methods of Ling objects are called on the object.
    import pydoc; result = 'act(...)' in pydoc.plain(pydoc.render_doc(t)), 'How high.' in pydoc.plain(pydoc.render_doc(w)) => (True, True)
    t()                                   => TypeError: cannot create 'ling~test`types`Sample' instances
    type('Derived', (t,), {})             => TypeError: type 'ling~test`types`Sample' is not an acceptable base type
    import pickle; pickle.dumps(w)        => TypeError: cannot pickle 'ling~test`types`Sample' object
    import weakref; weakref.ref(w)        => TypeError: cannot create weak reference to 'ling~test`types`Sample' object)"),
            "");
}

TEST_F(Types, CheckTheNamesOfTheirEntries) {
  const name_entry& missing = meta_property_untyped("missing").entry();
  const name_entry& empty = meta_property_untyped("").entry();
  const struct {
    const name_entry* name;
    const char* message;
  } rows[] = {
      {nullptr,  "Invalid Ling property name."  },
      {&empty,   "Invalid Ling property name."  },
      {&missing, "Attribute not found: missing."},
  };
  const Any sample = sample_class.required().allocate_instance();
  for (const auto& each : rows) {
    EXPECT_EQ(get_property(sample, each.name).to_object(), nullptr);
    EXPECT_EQ(take_exception(), each.message);
    EXPECT_EQ(set_property(sample, each.name, Py_None).to_status(), -1);
    EXPECT_EQ(take_exception(), each.message);
  }
}

TEST_F(Types, AreTheMarkOfAWrapper) {
  for (const char* stranger : {"type('>LingObject', (), {})()", "type('ling~x', (), {})()", "1", "None", "type(1)"}) {
    EXPECT_EQ(wrapped_value(eval(stranger).get()), nullptr) << stranger;
  }
  const PyObjectPtr emptied = to_python(sample_class.required().allocate_instance());
  Any*& value = reinterpret_cast<wrapper_object*>(emptied.get())->value;
  Any* const kept = std::exchange(value, nullptr);
  EXPECT_EQ(wrapped_value(emptied.get()), nullptr);
  value = kept;
  EXPECT_NE(native_cast<Sample>(from_python(emptied.get())), nullptr);
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

// Counts lives; its end runs Python code that fails.
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

TEST_F(Types, LetWrappersDieOnAnyThread) {
  std::vector<PyObjectPtr> wrappers[8];
  const Any shared = sample_class.required().allocate_instance();
  for (auto& row : wrappers) {
    for (int i = 0; i < 200; ++i) {
      row.push_back(to_python(mortal_class.required().allocate_instance()));
      row.push_back(to_python(shared));
    }
  }
  EXPECT_EQ(Mortal::lives, 8 * 200);
  on_eight_threads([&](int thread) { wrappers[thread].clear(); });
  EXPECT_EQ(Mortal::lives, 0);
  EXPECT_EQ(shared.get()->reference_count(), 1u);
}

TEST_F(Types, LetAWrapperDieWhileAnExceptionIsOnItsWay) {
  PyObjectPtr wrapper = to_python(mortal_class.required().allocate_instance());
  PyErr_SetString(PyExc_LookupError, "on its way");
  wrapper = PyObjectPtr();
  EXPECT_EQ(Mortal::lives, 0);
  EXPECT_EQ(take_exception(), "on its way");
}

TEST_F(Types, LeakNothing) {
  const PyObjectPtr leaks = run(R"(
import gc, sys
operations = 'w.level', 'w.act("a", w)', 'w.act(how="a")', 'w.nothing', 'w.fail()', 'w.level = "x"', 'w.level = 3', \
  'w.added = i', 'del w.added', 'str(w); repr(w); hash(w)', 'w == w; w < 3', 'iter(w)', 'w()', 'w.__doc__', 'w.__dir__', \
  'w.__copy__()', 'w.act.__annotations__', 'w.act.__text_signature__', 'w.__bytes__', 'getattr(w, f"name{i}")', \
  't.level.__get__(w)', 't.level.__set__(w, -1)'
def result(w):
  leaks = []
  for operation in operations:
    names = {}
    exec(f'def f(w, t, n):\n  for i in range(n):\n    try:\n      {operation}\n    except Exception: pass', names)
    blocks = []
    for rounds in 2000, 100_000 if sys.getallocatedblocks() else 2000:  # another allocator counts nothing
      names['f'](w, type(w), rounds)
      gc.collect()
      blocks.append(sys.getallocatedblocks())
    if blocks[1] - blocks[0] > 100:
      leaks.append((operation, blocks))
  return leaks)");
  const Any sample = sample_class.required().allocate_instance();
  PyObjectPtr wrapper = to_python(sample);
  EXPECT_EQ(repr(PyObjectPtr(PyObject_CallFunctionObjArgs(leaks.get(), wrapper.get(), nullptr))), "[]");
  wrapper = PyObjectPtr();
  EXPECT_EQ(sample.get()->reference_count(), 1u);
}

}  // namespace
}  // namespace ling::cpython
