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

}  // namespace
}  // namespace ling::cpython
