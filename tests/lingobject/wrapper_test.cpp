// Wrapped host values as Python code sees them: attributes, calls, iteration, texts, order, types.
#include "bridge/python.h"
#include "ling/ling.h"
#include "lingobject/ling_object.h"
#include "lingobject/outcomes.h"
#include "python/error_bridge.h"

namespace ling::cpython {
namespace {

// --- classes of a host -----------------------------------------------------------------------------------------------

// The error for an exception that Python code of the host raised.
Any raised_by(const char* exception) {
  static_cast<void>(run(std::string("raise ") + exception));
  return capture_error_or("no exception");
}

// What Python says of an attribute whose value is asked for just now.
Any asked_by_way_of_python(const Any& self, const char* name) {
  const GilGuard gil;
  const PyObjectPtr wrapper = to_python_locked(self);
  const PyObjectPtr value(PyObject_GetAttrString(wrapper.get(), name));
  PyErr_Clear();
  return value ? from_python_locked(value.get()) : Any("bounded");
}

struct Probe {
  std::int64_t count = 1;
};

constinit const class_definition<Probe> probe_class("Probe", [](class_builder<Probe>& c) {
  c.module("test.wrapped")
      .doc("Measures things.")
      .parent(I_HasName::getClass())
      .parent(I_HasCode::getClass())
      .parent(I_Cloneable::getClass())
      .constructor("count", "A probe.", [](std::int64_t count) { return Probe{count}; }, {1})
      .field("note", "A remark.", "empty")
      .field("everything", "As a field.", "field")
      .property("everything", "As a property.", [](const Probe&) { return "property"; })
      .property("both", "As a property.", [](const Probe&) { return "property"; })
      .method("both", "", "As a method.", [](const Probe&) { return "method"; })
      .property(
          "count", "How many.", [](const Probe& self) { return self.count; },
          [](Probe& self, std::int64_t count) -> Any {
            self.count = count;
            return count < 0 ? Any(Error("too few")) : Any();
          })
      .property("name", "What it is called.", [](const Probe&) { return "probe"; })
      .property("code", "Asks for itself.", [](const Any& self) { return asked_by_way_of_python(self, "__code__"); })
      .property("loop", "Asks for itself.", [](const Any& self) { return asked_by_way_of_python(self, "loop"); })
      .property("_hidden", "Not for Python.", [](const Probe&) { return 1; })
      .property("broken", "An error.", [](const Probe&) -> Any { return Error("no reading"); })
      .property(
          "stubborn", "Requests to stop.", [](const Probe&) { return raised_by("KeyboardInterrupt()"); },
          [](const Probe&, const Any&) { return raised_by("SystemExit(3)"); })
      .method("join", "first, second, rest...", "All of them.",
              [](const Probe& self, const String& first, const String& second, const Variadic& rest) {
                return String("{}{}{}{}").arg(self.count, first, second, rest.length());
              },
              {"b"})
      .method("clone", "", "A copy.", [](const Probe& self) { return self; })
      .method("deepClone", "", "A copy of all.", [](const Probe& self) { return Probe{self.count * 10}; })
      .class_method("unit", "", "The unit.", [] { return "m"; })
      .constant("LIMIT", 100, "Never more.");
});

// Compares by a number; an odd other one is an error, a text cannot be compared.
struct Rank {
  std::int64_t rank = 0;
};
constinit const class_definition<Rank> rank_class("Rank", [](class_builder<Rank>& c) {
  c.module("test.wrapped")
      .parent(I_Immutable::getClass())
      .constructor("rank", "", [](std::int64_t rank) { return Rank{rank}; })
      .method(Any::__compare__, "other",
              [](const Rank& self, const Any& other) -> Any {
                const auto number = Integer::cast(other);
                if (!number) {
                  return Undefined();
                }
                const std::int64_t value = number.value().value();
                return value % 2 != 0 ? Any(Error("odd")) : Any(Ordering::fromSign(self.rank - value));
              })
      .method(Any::__hash__, "", [](const Rank&) { return std::uint64_t{7}; })
      .method(Any::__coerce__, "class", [](const Rank& self, const Any& to) -> Any {
        return !String::getClass().is_same(to) ? Any(Undefined())
               : self.rank == -1               ? Any(Error("no rank"))
               : self.rank == -2               ? raised_by("KeyboardInterrupt('stop')")
                                               : Any(String("rank {}").arg(self.rank));
      });
});

// Counts down to its end; belongs to no module.
struct Countdown {
  std::int64_t left;
  Any end;
};
constinit const class_definition<Countdown> countdown_class("Countdown", [](class_builder<Countdown>& c) {
  c.parent(I_Iterator_Generic::getClass()).method("next", "", "", [](Countdown& self) -> Any {
    return self.left == 0 ? self.end : make_computed<Any>([item = self.left--] { return Any(item); });
  });
});
Any countdown(const Any& end) {
  return make<object_value_native<Countdown>>(countdown_class.required(), Countdown{2, end});
}

Any make_probe() { return Class_Generic(probe_class.required())(); }

using Wrapper = PythonTest;

TEST_F(Wrapper, ReadsMembersInOrder) {
  const Any probe = make_probe();
  static_cast<object_value_instance&>(*probe.get())
      .insert_own_method(meta_method_untyped("both").entry(), make_function("own", "", "", [] { return 1; }));
  expect_outcomes(probe, R"(
    w.everything, w.both                  => ('field', 'property')
    w._hidden                             => AttributeError: 'ling~test`wrapped`Probe' object has no attribute '_hidden'
    w.nothing                             => AttributeError: 'test.wrapped.Probe' object has no attribute 'nothing'
    getattr(w, 'a\0{}')                   => AttributeError: 'test.wrapped.Probe' object has no attribute 'a<zero>{}'
    setattr(w, 'a\0b', 5) or getattr(w, 'a\0b') => 5
    getattr(w, '\ud800', 1)               => UnicodeEncodeError: 'utf-8' codec can't encode character '\ud800' in position 0: surrogates not allowed
    w.broken                              => RuntimeError: no reading
    w.stubborn                            => KeyboardInterrupt:
    w.loop                                => 'bounded')");
  expect_outcomes(Class_Generic(probe_class.required()), R"(
    w.join(w(4), 'a', 'b'), w.LIMIT       => ('4ab0', 100)
    w.name                                => 'Probe')");
}

TEST_F(Wrapper, HasTheAttributesOfWhatALazyValueYields) {
  const auto lazy = [](Any yielded) { return make_computed<Any>([yielded] { return yielded; }); };
  const Any probe = make_probe();
  PyObject_SetAttrString(to_python(probe).get(), "own", Py_True);
  expect_outcomes(lazy(lazy(probe)), R"(
    w.count, w.note, w.own, w.unit()      => (1, 'empty', True, 'm')
    w.__doc__, w.__name__, 'own' in w.__dir__ => ('Measures things.', 'probe', True)
    w.count = 7; w.added = 9; w.note = 'x'; result = w.count, w.added, w.note => (7, 9, 'x')
    del w.added; result = hasattr(w, 'added') => False
    t.count.__set__(w, 8), t.count.__get__(w) => (None, 8)
    w == w.clone(), w.join == w.join      => (False, True))");
  EXPECT_EQ(PyObject_Hash(to_python(lazy(probe)).get()), PyObject_Hash(to_python(probe).get()));
  expect_outcomes(lazy(5), R"(
    w.real, w.bit_length(), w.__bool__    => (5, 3, True)
    w == 5, {5: 'found'}[w]               => (True, 'found')
    w.real = 1                            => AttributeError: attribute 'real' of 'int' objects is not writable)");
  expect_outcomes(lazy(Error("not computed")), R"(
    hasattr(w, 'nothing')                 => RuntimeError: not computed
    w.x = 1                               => RuntimeError: not computed
    t.message.__get__(w)                  => RuntimeError: not computed
    hash(w)                               => RuntimeError: not computed)");
}

TEST_F(Wrapper, AnswersSpecialNames) {
  const Any probe = make_probe();
  expect_outcomes(probe, R"(
    w.__doc__, w.__name__, w.__bool__     => ('Measures things.', 'probe', True)
    w.__code__                            => 'bounded'
    import copy; w.count = 5; result = w.__copy__().count, copy.deepcopy(w).count => (5, 50)
    w.__bytes__                           => RuntimeError: Unable to convert '<test.wrapped.Probe>' to ByteArray.
    w.own = 1; result = [n for n in w.__dir__ if n in ('own', 'unit', 'count', 'note')] => ['note', 'unit', 'count', 'own']
    '_hidden' in w.__dir__, '_hidden' in dir(w) => (True, False))");
  expect_outcomes(Class_Generic(probe_class.required()), R"(
    w.__doc__                             => '(count: int = 1) -> test.wrapped.Probe\n\nMeasures things.'
    w.__name__, w.__module__              => ('Probe', 'test.wrapped'))");
  expect_outcomes(probe.boundMethod(meta_method_untyped("join")), R"(
    w.__doc__                             => "(first: str, second: str = 'b', *rest) -> str\n\nAll of them."
    w.__code__                            => AttributeError: '>LingObject' object has no attribute '__code__')");
  using several = Union<Integer, String, Computed<Any>, Error>;
  expect_outcomes(make_function("f", "", "", []() -> several { return Integer(1); }), R"(
    w.__text_signature__, w.__annotations__ => ('() -> int | str', {'return': <class 'object'>}))");
}

TEST_F(Wrapper, SetsInOrder) {
  expect_outcomes(make_probe(), R"(
    w.count = 7; w.own = 9; result = w.count, w.own => (7, 9)
    w.count = -1                          => RuntimeError: count: too few.
    w.count = 'x'                         => RuntimeError: count: Bad call of 'count': the argument 'value' must be Integer, not String: x.
    w.stubborn = 1                        => SystemExit: 3
    w.both = 1                            => RuntimeError: Read-only attribute: both.
    w.everything = 1                      => RuntimeError: Read-only attribute: everything.
    w.note = [1]; result = w.note         => [1]
    del w.note                            => AttributeError: Attribute cannot be deleted: note.
    del w.both                            => AttributeError: Attribute cannot be deleted: both.)");
  expect_outcomes(List_Generic(), R"(
    w.x = 1                               => RuntimeError: x: The property 'x' cannot be added to a value of class List.)");
}

TEST_F(Wrapper, Calls) {
  expect_outcomes(make_probe(), R"(
    w.join('a'), w.join('a', 'c', None, []) => ('1ab0', '1ac2')
    w.join('a', third=1)                  => BadArgument: Bad call of 'test.wrapped.Probe.join': no parameter is named 'third'.
    w.join(**{1: 2})                      => TypeError: keywords must be strings
    [w.join(*'abcdefghi'[:n]) for n in (8, 9)] => ['1ab6', '1ab7']
    w()                                   => RuntimeError: Non-callable object: <test.wrapped.Probe>)");
  const Any fails = make_function("f", "", "", []() -> Any { return Error("failed"); });
  expect_outcomes(make_computed<Any>([&] { return fails; }), "w() => RuntimeError: failed");
}

TEST_F(Wrapper, Iterates) {
  expect_outcomes(make_computed<Any>([] { return countdown(StopIteration()); }), "[*w] => [2, 1]");
  expect_outcomes(countdown(Error("broke")), "list(w) => RuntimeError: broke");
  expect_outcomes(countdown(raised_by("KeyboardInterrupt('stop me')")), "list(w) => KeyboardInterrupt: stop me");
  expect_outcomes(make_probe(), R"(
    iter(w)                               => TypeError: '<class test.wrapped.Probe>' object is not iterable.
    next(w)                               => TypeError: '<class test.wrapped.Probe>' object is not an iterator.)");
}

TEST_F(Wrapper, HasTextsAHashAndAnOrder) {
  const Any probe = make_probe();
  const Any rank = Class_Generic(rank_class.required())(2);
  EXPECT_EQ(PyObject_Hash(to_python(probe).get()), static_cast<Py_hash_t>(object_id(probe)));
  EXPECT_EQ(PyObject_Hash(to_python(rank).get()), static_cast<Py_hash_t>(hash_of(rank)));
  expect_outcomes(Class_Generic(rank_class.required())(-1), "str(w) => '<test.wrapped.Rank>'");
  expect_outcomes(Class_Generic(rank_class.required())(-2), "str(w) => KeyboardInterrupt: stop");
  expect_outcomes(rank, R"(
    str(w), repr(w)                       => ('rank 2', '<test.wrapped.Rank>')
    x = 2; result = w < x, w <= x, w == x, w != x, w > x, w >= x     => (False, True, True, False, False, True)
    x = 4; result = w < x, w <= x, w == x, w != x, w > x, w >= x     => (True, True, False, True, False, False)
    x = 'x'; result = w < x, w <= x, w == x, w != x, w > x, w >= x   => (False, False, False, True, False, False)
    w == 3                                => RuntimeError: odd)");
}

TEST_F(Wrapper, HasATypeThatShowsWhatTheClassDeclares) {
  expect_outcomes(make_probe(), R"(
    t.__doc__, t.__base__.__name__        => ('Measures things.', '>LingObject')
    t.join.__doc__                        => "(self: test.wrapped.Probe, first: str, second: str = 'b', *rest) -> str\n\n-"
    t.count.__set__(w, 7), t.count.__get__(w) => (None, 7)
    t.count.__set__(w, -1)                => RuntimeError: too few
    t.count.__delete__(w)                 => AttributeError: Attribute cannot be deleted: count.
    t.broken.__set__(w, 1)                => AttributeError: attribute 'broken' of 'ling~test`wrapped`Probe' objects is not writable
    t.join(w, 'x')                        => TypeError: Methods of Ling objects are called on the object.
    t()                                   => TypeError: cannot create 'ling~test`wrapped`Probe' instances
    type('Derived', (t,), {})             => TypeError: type 'ling~test`wrapped`Probe' is not an acceptable base type)");
}

}  // namespace
}  // namespace ling::cpython
