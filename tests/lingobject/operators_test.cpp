// Operators of classes that keep their promises in odd ways, or not at all.
#include "lingobject/operators.h"

#include "ling/ling.h"
#include "lingobject/ling_object.h"
#include "lingobject/outcomes.h"
#include "python/error_bridge.h"

namespace ling::cpython {
namespace {

using OddOperators = PythonTest;

// A sequence by its flag, whose length is what a test wants and whose members take no receiver.
constinit thread_local const Any* told_length = nullptr;
constinit const class_definition<void> odd_class("Odd", [](class_builder<void>& c) {
  c.flags(class_flags::sequence)
      .property("__length__", "", [](const Any&) { return *told_length; })
      .class_method("at", "self, index", "", [](const Any&, std::int64_t index) { return index; })
      .class_method("set", "self, index, value", "",
                    [](const Any& self, const Any& index, const Any& value) -> Any {
                      return Error(String("{} {} {}").arg(class_of(self).name(), index, value));
                    })
      .method(Any::__add__, "other", [](const Any&, const Any&) -> Any { throw std::runtime_error("thrown"); });
});

TEST_F(OddOperators, TellLengthsThatAreNone) {
  const Any odd = odd_class.required().allocate_instance();
  const std::pair<Any, const char*> cases[] = {
      {make_computed<Any>([] { return Any(7); }), "len(w) => 7"                                                                      },
      {3,                                         "w[-1], w[5], bool(w) => (-1, 5, True)"                                            },
      {UINT64_MAX,                                "len(w) => RuntimeError: The length is not a number of items: 18446744073709551615"},
      {None(),                                    "bool(w) => TypeError: Object is not a Ling sequence."                             },
      {Error("uncounted"),                        "len(w) => RuntimeError: uncounted"                                                },
  };
  for (const auto& [length, rows] : cases) {
    told_length = &length;
    expect_outcomes(odd, rows);
  }
}

TEST_F(OddOperators, LetExceptionsThrough) {
  expect_outcomes(odd_class.required().allocate_instance(), R"(
    w[4]          => 4
    w[4] = 'x'    => RuntimeError: Odd 4 x
    w + 1         => RuntimeError: thrown)");
  expect_outcomes(make_computed<Any>([] { return Any(Error("never made")); }), R"(
    w + 1         => RuntimeError: never made
    ~w            => RuntimeError: never made)");
}

// Descendants of the runtime's containers with a `set` of their own, which goes before what the container does.
template <class Container>
Any make_echoing(const char* name) {
  auto* of_class = new object_value_class(name);
  of_class->add_parent_unsafe(Container::getClass().object());
  const Any made = static_cast<const I_Callable_Generic&>(Class_Generic(*of_class))();
  of_class->add_method_unsafe("set", method_builder_base("set", "self, key, value", "", {}, true)
                                         .body([](const Any& self, const Any& key, const Any& value) -> Any {
                                           return Error(String("{} {} {}").arg(self, key, value));
                                         }));
  return made;
}

TEST_F(OddOperators, GoBeforeWhatContainersDo) {
  expect_outcomes(make_echoing<HashMap_Generic>("EchoingMap"), R"(
    w['a'] = 1    => RuntimeError: {} a 1
    w[5] = 'x'    => RuntimeError: {} 5 x
    w[b'c'] = 1   => RuntimeError: {} b"c" 1
    w.update({'a': 1}), w['a'], 'a' in w, 'b' in w => (None, 1, True, False))");
  expect_outcomes(make_echoing<List_Generic>("EchoingList"), R"(
    w[7] = 1      => RuntimeError: [] 7 1)");
  const HashMap<String, Integer> typed;
  expect_outcomes(typed, R"(
    w['a'] = 1    => None
    w['a'] = 'x'  => RuntimeError: The value is not of the type Integer: x (String).
    w[1] = 1      => RuntimeError: The key is not of the type String: 1 (Integer).
    w['a'], 1 in w, len(w) => (1, False, 1))");
}

// A key that equals a number.
constinit thread_local int times_asked = 0;
constinit const class_definition<void> like_five_class("LikeFive", [](class_builder<void>& c) {
  c.parent(I_Immutable::getClass())
      .method(Any::__hash__, "", [](const Any&) { return 5; })
      .method(Any::__equals__, "other", [](const Any&, const Any& other) {
        ++times_asked;
        return Integer::matches(other.get()) && Integer::unchecked(other).value() == 5;
      });
});

TEST_F(OddOperators, OfKeysAreAskedOnce) {
  const HashMap_Generic map;
  map.set(like_five_class.required().allocate_instance(), "like five");
  const auto asked = [&](const char* rows) {
    times_asked = 0;
    expect_outcomes(map, rows);
    return times_asked;
  };
  EXPECT_EQ(asked("w[5] => 'like five'"), 1);
  EXPECT_EQ(asked("5 in w => True"), 1);
  EXPECT_EQ(asked("w.get(5) => 'like five'"), 1);
  EXPECT_EQ(asked("w[5] = 'changed' => None"), 1);
  EXPECT_EQ(asked("len(w), '5' in w, 6 in w => (1, False, False)"), 0);
}

}  // namespace
}  // namespace ling::cpython
