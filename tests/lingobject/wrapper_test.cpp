// Wrapped host values as Python code sees them: attributes, calls, iteration, texts, order, types.
#include "bridge/error_bridge.h"
#include "bridge/python.h"
#include "ling/ling.h"
#include "lingobject/ling_object.h"
#include "lingobject/outcomes.h"

#include <array>
#include <stdexcept>

namespace ling::cpython {
namespace {

// --- classes of a host
// -------------------------------------------------------------------------------------------------

// The error for an exception that Python code of the host raised.
Any raised_by(const char* exception) {
  static_cast<void>(run(std::string("raise ") + exception));
  return capture_error_or("no exception");
}

struct Probe {
  std::int64_t count = 1;
};

String size_of_text(const Probe&, const String& text) { return String("text {}").arg(text); }
String size_of_number(const Probe&, std::int64_t number) { return String("number {}").arg(number); }
String size_of_nothing() { return "nothing"; }

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
      .method("everything", "", "As a method.", [](const Probe&) { return "method"; })
      .property("both", "As a property.", [](const Probe&) { return "property"; })
      .method("both", "", "As a method.", [](const Probe&) { return "method"; })
      .property(
          "count", "How many.", [](const Probe& self) { return self.count; },
          [](Probe& self, std::int64_t count) -> Any {
            if (count < 0) {
              return Error("too few");
            }
            self.count = count;
            return None();
          })
      .property("name", "What it is called.", [](const Probe&) { return "probe"; })
      .property("code", "How to make one.",
                [](const Probe&) { return make_computed<Any>([] { return Any("Probe()"); }); })
      .property("_hidden", "Not for Python.", [](const Probe&) { return 1; })
      .property("broken", "An error.", [](const Probe&) -> Any { return Error("no reading"); })
      .property("thrown", "A C++ exception.", [](const Probe&) -> Any { throw std::runtime_error("thrown"); })
      .property("python", "An exception of Python code.", [](const Probe&) { return raised_by("KeyError('k')"); })
      .property("interrupted", "A request to stop.", [](const Probe&) { return raised_by("KeyboardInterrupt()"); })
      .property(
          "stubborn", "Cannot be set.", [](const Probe&) { return 1; },
          [](const Probe&, const Any&) { return raised_by("SystemExit(3)"); })
      .property("loop", "Reads itself by way of Python.",
                [](const Any& self) {
                  const GilGuard gil;
                  const PyObjectPtr wrapper = to_python_locked(self);
                  const PyObjectPtr value(PyObject_GetAttrString(wrapper.get(), "loop"));
                  PyErr_Clear();
                  return value ? from_python_locked(value.get()) : Any("bounded");
                })
      .method("join", "first, second, rest...", "All of them.",
              [](const Probe& self, const String& first, const String& second, const Variadic& rest) {
                return String("{}{}{}{}").arg(self.count, first, second, rest.length());
              },
              {"b"})
      .method("clone", "", "A copy.", [](const Probe& self) { return self; })
      .method("deepClone", "", "A copy of all.", [](const Probe& self) { return Probe{self.count * 10}; })
      .method("size", "text", "", &size_of_text)
      .method("size", "number", "", &size_of_number)
      .class_method("size", "", "", &size_of_nothing)
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
        return String::getClass().is_same(to)      ? Any(String("rank {}").arg(self.rank))
               : ByteArray::getClass().is_same(to) ? Any(ByteArray("rank"))
                                                   : Any(Undefined());
      });
});

// Counts down to its end, which may be an error; belongs to no module.
struct Countdown {
  std::int64_t left = 0;
  const char* end = nullptr;
};
constinit const class_definition<Countdown> countdown_class("Countdown", [](class_builder<Countdown>& c) {
  c.parent(I_Iterator_Generic::getClass()).method("next", "", "", [](Countdown& self) -> Any {
    if (self.left > 0) {
      return make_computed<Any>([item = self.left--] { return Any(item); });
    }
    return self.end == nullptr                       ? Any(StopIteration())
           : std::string_view(self.end) == "stop me" ? raised_by("KeyboardInterrupt('stop me')")
                                                     : Any(Error(self.end));
  });
});
Any countdown(std::int64_t from, const char* end) {
  return make<object_value_native<Countdown>>(countdown_class.required(), Countdown{from, end});
}

// Answers for every member whose name begins with "any".
constinit const class_definition<void> dynamic_class("Dynamic", [](class_builder<void>& c) {
  static constexpr dynamic_member_hooks hooks{
      [](const Any&, const name_entry& name) -> Any {
        return name.text.starts_with("any") ? Any(make_function(name.text, "", "", [] { return "hook"; })) : Any();
      },
      [](const Any&, const name_entry&) -> Any { return Error("no property"); },
      [](const Any&, const name_entry&, const Any&) -> Any { return Error("no property"); }};
  c.hooks(hooks);
});
constinit const class_definition<void> asking_class("Asking", [](class_builder<void>& c) {
  c.method(Any::__property__, "name", [](const Any&, const String& name) -> Any {
     return name.view().starts_with("any") ? Any(Property::constant("meta")) : Any();
   }).method(Any::__insertProperty__, "name, property", [](const Any&, const String& name, const Any&) -> Any {
    return Error(String("{} is refused").arg(name));
  });
});

Any make_probe() { return Class_Generic(probe_class.required())(); }

using Wrapper = PythonTest;

TEST_F(Wrapper, ReadsMembersInOrder) {
  const Any probe = make_probe();
  static_cast<object_value_instance&>(*probe.get())
      .insert_own_method(meta_method_untyped("both").entry(), make_function("own", "", "", [] { return 1; }));
  EXPECT_EQ(wrong_outcomes(probe, R"(
    w.everything                          => 'field'
    w.both                                => 'property'
    w.note, w.count, w.LIMIT              => ('empty', 1, 100)
    w.count = 8; w.own = 9; result = w.count, w.own => (8, 9)
    w._hidden                             => AttributeError: 'ling~test`wrapped`Probe' object has no attribute '_hidden'
    w._own = 1; result = w._own           => AttributeError: 'ling~test`wrapped`Probe' object has no attribute '_own'
    w.nothing                             => AttributeError: 'test.wrapped.Probe' object has no attribute 'nothing'
    getattr(w, '')                        => AttributeError: 'test.wrapped.Probe' object has no attribute ''
    getattr(w, 'a\0{}')                   => AttributeError: 'test.wrapped.Probe' object has no attribute 'a<zero>{}'
    setattr(w, 'a\0b', 5) or getattr(w, 'a\0b') => 5
    getattr(w, '\ud800', 1)               => UnicodeEncodeError: 'utf-8' codec can't encode character '\ud800' in position 0: surrogates not allowed
    w.broken                              => RuntimeError: no reading
    w.thrown                              => RuntimeError: thrown
    w.python                              => RuntimeError: 'k'
    w.interrupted                         => KeyboardInterrupt:
    w.loop                                => 'bounded')"),
            "");
  EXPECT_EQ(wrong_outcomes(Class_Generic(probe_class.required()), R"(
    w.LIMIT, w.unit(), w.size()           => (100, 'm', 'nothing')
    w.join(w(4), 'a', 'b')                => '4ab0'
    w.name                                => 'Probe'
    w.note                                => AttributeError: 'ling.Class' object has no attribute 'note')"),
            "");
  EXPECT_EQ(wrong_outcomes(make_computed<Any>([&] { return probe; }), R"(
    w.count                               => AttributeError: 'test.wrapped.Probe' object has no attribute 'count')"),
            "");
}

TEST_F(Wrapper, ReadsMembersThroughHooksAndMetaMethods) {
  EXPECT_EQ(wrong_outcomes(dynamic_class.required().allocate_instance(), R"(
    w.anything()                          => 'hook'
    w.nothing                             => AttributeError: 'Dynamic' object has no attribute 'nothing')"),
            "");
  EXPECT_EQ(wrong_outcomes(asking_class.required().allocate_instance(), R"(
    w.anything                            => 'meta'
    w.nothing                             => AttributeError: 'Asking' object has no attribute 'nothing'
    w.nothing = 1                         => RuntimeError: nothing: nothing is refused)"),
            "");
}

TEST_F(Wrapper, AnswersSpecialNames) {
  const Any probe = make_probe();
  EXPECT_EQ(wrong_outcomes(probe, R"(
    w.__doc__                             => 'Measures things.'
    w.__name__, w.__code__, w.__bool__    => ('probe', 'Probe()', True)
    w.count = 5; result = w.__copy__().count, w.__deepcopy__({}).count => (5, 50)
    import copy; result = copy.deepcopy(w).count => 50
    w.__annotations__                     => AttributeError: 'ling~test`wrapped`Probe' object has no attribute '__annotations__'
    w.__module__                          => AttributeError: 'ling~test`wrapped`Probe' object has no attribute '__module__'
    w.__text_signature__                  => AttributeError: 'ling~test`wrapped`Probe' object has no attribute '__text_signature__'
    w.__bytes__                           => RuntimeError: Unable to convert '<test.wrapped.Probe>' to ByteArray.
    w.__class__ is type(w)                => True
    w.own = 1; result = [n for n in w.__dir__ if n in ('own', 'unit', 'count', 'note')] => ['note', 'unit', 'count', 'own'])"),
            "");
  EXPECT_EQ(wrong_outcomes(Class_Generic(probe_class.required()), R"(
    w.__doc__                             => '(count: int = 1) -> test.wrapped.Probe\n\nMeasures things.'
    w.__name__, w.__module__              => ('Probe', 'test.wrapped'))"),
            "");
  EXPECT_EQ(wrong_outcomes(probe.boundMethod(meta_method_untyped("join")), R"(
    w.__doc__                             => "(first: str, second: str = 'b', *rest) -> str\n\nAll of them."
    w.__text_signature__                  => "(first: str, second: str = 'b', *rest) -> str"
    [*w.__annotations__.items()][::3]     => [('first', <class 'str'>), ('return', <class 'str'>)]
    w.__copy__                            => AttributeError: '>LingObject' object has no attribute '__copy__'
    w.__code__                            => AttributeError: '>LingObject' object has no attribute '__code__')"),
            "");
}

TEST_F(Wrapper, SetsInOrder) {
  EXPECT_EQ(wrong_outcomes(make_probe(), R"(
    w.count = 7; result = w.count         => 7
    w.count = -1                          => RuntimeError: count: too few.
    w.count = 'x'                         => RuntimeError: count: Bad call of 'count': the argument 'value' must be Integer, not String: x.
    w.stubborn = 1                        => SystemExit: 3
    w.both = 1                            => RuntimeError: Read-only attribute: both.
    w.everything = 1                      => RuntimeError: Read-only attribute: everything.
    w.note = [1]; result = w.note         => [1]
    w.added = 3; result = w.added         => 3
    w.added = 4; del w.added; result = hasattr(w, 'added') => False
    del w.note                            => AttributeError: Attribute cannot be deleted: note.
    setattr(w, '\ud800', 1)               => UnicodeEncodeError: 'utf-8' codec can't encode character '\ud800' in position 0: surrogates not allowed)"),
            "");
  EXPECT_EQ(wrong_outcomes(List_Generic(), R"(
    w.x = 1                               => RuntimeError: x: The property 'x' cannot be added to a value of class List.)"),
            "");
}

TEST_F(Wrapper, Calls) {
  EXPECT_EQ(wrong_outcomes(make_probe(), R"(
    w.join('a'), w.join('a', 'c', None, []) => ('1ab0', '1ac2')
    w.join(second='c', first='a'), w.join('a', second='d') => ('1ac0', '1ad0')
    w.join(*['a'], **{})                  => '1ab0'
    w.join('a', third=1)                  => BadArgument: Bad call of 'test.wrapped.Probe.join': no parameter is named 'third'.
    w.join(**{1: 2})                      => TypeError: keywords must be strings
    w.size('t'), w.size(4), w.size(), w.unit() => ('text t', 'number 4', 'nothing', 'm')
    [w.join(*'abcdefghij'[:n]) for n in (8, 9)] => ['1ab6', '1ab7']
    w()                                   => RuntimeError: Non-callable object: <test.wrapped.Probe>)"),
            "");
  EXPECT_EQ(wrong_outcomes(countdown(2, nullptr), "w() => TypeError: '>LingObject' object is not callable"), "");
  EXPECT_EQ(wrong_outcomes(make_computed<Any>([] { return make_function("f", "", "", [] { return 1; }); }), "w() => 1"),
            "");
  const Any fails = make_function("fail", "", "", []() -> Any { return Error("failed"); });
  EXPECT_EQ(wrong_outcomes(fails, "w() => RuntimeError: failed"), "");
}

TEST_F(Wrapper, Iterates) {
  EXPECT_EQ(wrong_outcomes(countdown(2, nullptr), "list(w), next(w, 'end') => ([2, 1], 'end')"), "");
  EXPECT_EQ(wrong_outcomes(countdown(2, "broke"), "list(w) => RuntimeError: broke"), "");
  EXPECT_EQ(wrong_outcomes(countdown(2, "stop me"), "list(w) => KeyboardInterrupt: stop me"), "");
  EXPECT_EQ(wrong_outcomes(make_computed<Any>([] { return countdown(2, nullptr); }), "[*w] => [2, 1]"), "");
  EXPECT_EQ(wrong_outcomes(List_Generic({1, "a"}), "[*w], [*iter(iter(w))] => ([1, 'a'], [1, 'a'])"), "");
  EXPECT_EQ(wrong_outcomes(make_probe(), R"(
    iter(w)                               => TypeError: '<class test.wrapped.Probe>' object is not iterable.
    next(w)                               => TypeError: '<class test.wrapped.Probe>' object is not an iterator.)"),
            "");
}

TEST_F(Wrapper, HasTextsAHashAndAnOrder) {
  const Any probe = make_probe();
  const Any rank = Class_Generic(rank_class.required())(2);
  EXPECT_EQ(PyObject_Hash(to_python(probe).get()), static_cast<Py_hash_t>(object_id(probe)));
  EXPECT_EQ(PyObject_Hash(to_python(rank).get()), static_cast<Py_hash_t>(hash_of(rank)));
  EXPECT_EQ(wrong_outcomes(probe, "str(w), repr(w) => ('<test.wrapped.Probe>', '<test.wrapped.Probe>')"), "");
  EXPECT_EQ(wrong_outcomes(rank, R"(
    str(w), repr(w), w.__bytes__          => ('rank 2', '<test.wrapped.Rank>', b'rank')
    x = 2; result = w < x, w <= x, w == x, w != x, w > x, w >= x     => (False, True, True, False, False, True)
    x = 0; result = w < x, w <= x, w == x, w != x, w > x, w >= x     => (False, False, False, True, True, True)
    x = 4; result = w < x, w <= x, w == x, w != x, w > x, w >= x     => (True, True, False, True, False, False)
    x = 'x'; result = w < x, w <= x, w == x, w != x, w > x, w >= x   => (False, False, False, True, False, False)
    x = 2**70; result = w < x, w <= x, w == x, w != x, w > x, w >= x => (False, False, False, True, False, False)
    w == 3                                => RuntimeError: odd)"),
            "");
}

TEST_F(Wrapper, SetsAnExceptionExactlyWhenASlotFails) {
  const PyObjectPtr probe = to_python(make_probe());
  const PyObjectPtr rank = to_python(Class_Generic(rank_class.required())(2));
  const PyObjectPtr odd = eval("3");
  const PyObjectPtr none(PyTuple_New(0));
  const auto made = [](PyObject* object) { return static_cast<bool>(PyObjectPtr(object)); };
  using objects = const PyObjectPtr[2];  // of a call that succeeds, of one that fails
  objects iterators = {to_python(countdown(0, nullptr)), to_python(countdown(0, "broke"))};
  objects functions = {to_python(make_function("f", "", "", [] {})), to_python(make_probe())};
  const std::function<bool(int)> slots[] = {
      [&](int i) {
        return made(PyObject_GetAttrString(probe.get(), std::array{"count", "broken"}[i]));
      },
      [&](int i) {
        return made(PyObject_GetAttrString(probe.get(), std::array{"__name__", "_no"}[i]));
      },
      [&](int i) {
        return PyObject_SetAttrString(probe.get(), std::array{"note", "both"}[i], odd.get()) == 0;
      },
      [&](int i) { return !made(PyIter_Next(iterators[i].get())) && PyErr_Occurred() == nullptr; },
      [&](int i) {
        return made(PyObject_GetIter(std::array{iterators, functions}[i]->get()));
      },
      [&](int i) {
        return made(PyObject_RichCompare(rank.get(), std::array{Py_None, odd.get()}[i], Py_LT));
      },
      [&](int i) { return made(PyObject_Call(functions[i].get(), none.get(), nullptr)); },
  };
  for (const auto& slot : slots) {
    for (const int i : {0, 1}) {
      EXPECT_EQ(slot(i), i == 0) << &slot - slots;
      EXPECT_EQ(PyErr_Occurred() == nullptr, i == 0) << &slot - slots;
      PyErr_Clear();
    }
  }
}

}  // namespace
}  // namespace ling::cpython
