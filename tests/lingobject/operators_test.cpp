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
constinit const class_definition<void> bare_class("Bare", [](class_builder<void>& c) {
  c.flags(class_flags::sequence | class_flags::collection);
});

// A sequence of ten that tells what slice it is asked for.
constinit const class_definition<void> telling_class("Telling", [](class_builder<void>& c) {
  c.parent(I_Sequence_Generic::getClass())
      .property("__length__", "", [](const Any&) { return 10; })
      .method("sliced", "start, stop", "", [](const Any&, std::int64_t start, std::int64_t stop) {
        return Tuple_Generic({start, stop});
      });
});

// A map that computes its values.
Any later(const Any&, const Any& key, const Any& otherwise) {
  return make_computed<Any>([=] { return is_none(key) ? otherwise : Any(Error("not today")); });
}
constinit const class_definition<void> lazy_map_class("LazyMap", [](class_builder<void>& c) {
  c.parent(I_Map_Generic::getClass()).method("get", "key, default", "", &later);
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
  told_length = nullptr;
  expect_outcomes(bare_class.required().allocate_instance(), R"(
    len(w) => TypeError: Object is not a Ling sequence.
    w[0] => RuntimeError: The method 'at' is missing in 'Bare'.
    del w[0] => RuntimeError: The method 'removeAt' is missing in 'Bare'.)");
}

TEST_F(OddOperators, HandSlicesOnAsPythonClampsThem) {
  expect_outcomes(telling_class.required().allocate_instance(), R"(
    w[:], w[2:5], w[-3:-1], w[-99:99]     => ((0, 10), (2, 5), (7, 9), (0, 10))
    w[2:1], w[-1:-3], w[99:], w[5:-99]    => ((2, 1), (9, 7), (10, 10), (5, 0)))");
  expect_outcomes(List_Generic({1, 2, 3}), "[[*w[2:1]], [*w[99:]], [*w[-1:0]]] => [[], [], []]");
  const PyObjectPtr list = eval("[1, 2, 3]");
  const auto sequence = I_Sequence_Generic::cast(from_python(list.get()));
  EXPECT_EQ(display_text(sequence->sliced(2, 1)), "[]");
}

TEST_F(OddOperators, LetExceptionsThrough) {
  expect_outcomes(odd_class.required().allocate_instance(), R"(
    w[4]          => 4
    w[4] = 'x'    => RuntimeError: Odd 4 x
    w + 1         => RuntimeError: thrown)");
  expect_outcomes(make_computed<Any>([] { return Any(Error("never made")); }), R"(
    w + 1         => RuntimeError: never made
    ~w            => RuntimeError: never made)");
  expect_outcomes(lazy_map_class.required().allocate_instance(), R"(
    w[None]       => RuntimeError: Key not found: None.
    w['yes']      => RuntimeError: not today)");
}

}  // namespace
}  // namespace ling::cpython
