// Types and signatures, and the shared objects among them that are made on first need.
#include "ling/testing.h"

namespace {

using namespace ling::testing;

Type union_of(std::initializer_list<Type> types) {
  return type_union_of_unsafe(std::span<const Type>(types.begin(), types.size()));
}

TEST(Type, TellsWhatItAccepts) {
  const Type integer = Integer::getType();
  const Type result = union_of({integer, Computed<Integer>::getType(), Error::getType()});
  // Whether it takes 1, takes None, and is immutable.
  const std::tuple<Type, const char*, const char*, bool, bool, bool> cases[] = {
      {integer,                                                   "Integer",                    "Integer", true, false, true },
      {Type::untyped(),                                           "Any",                        "None",    true, true,  false},
      {union_of({integer, integer}),                              "Integer",                    "Integer", true, false, true },
      {union_of({integer, List_Generic::getType()}),              "Integer | List",             "None",    true, false, false},
      {union_of({union_of({None::getType(), integer}), integer}), "None | Integer",             "None",    true, true,  true },
      {union_of({integer, Type::untyped()}),                      "Any",                        "None",    true, true,  false},
      {result,                                                    "Integer | Computed | Error", "None",    true, false, false},
      {unwrapped_type(result),                                    "Integer",                    "Integer", true, false, true },
      {unwrapped_type(union_of({integer, Error::getType()})),     "Integer | Error",            "None",    true, false, false},
  };
  for (const auto& [type, name, to_class, takes_one, takes_none, is_immutable] : cases) {
    EXPECT_EQ(type.name(), name);
    EXPECT_EQ(type.toClass() ? type.toClass().value().name() : String("None"), to_class) << name;
    EXPECT_EQ(type.matches(Any(1)), takes_one) << name;
    EXPECT_EQ(type.matches(Any()), takes_none) << name;
    EXPECT_EQ(type.conformsTo(I_Immutable::getClass()), is_immutable) << name;
  }
  EXPECT_FALSE(integer.matches(make_computed<Any>([] { return Any(1); }))) << "a lazy value is not forced";
  const Type same = union_of({integer, Computed<Integer>::getType(), Error::getType()});
  EXPECT_EQ(text(equal_objects(same, result)), "true");
  EXPECT_EQ(text(equal_objects(same, integer)), "false");
  EXPECT_EQ(hash_of(same), hash_of(result));
}

TEST(Signature, IsShownAsItIsDeclared) {
  const auto declared = [](const char* names, auto function, std::vector<Any> defaults = {}) {
    return make_function("f", names, "", function, std::move(defaults)).signature().value();
  };
  const Signature nothing = declared("", [] {});
  const Signature plain = declared("a, b", [](const Any&, std::optional<int>) { return 1.5; }, {None()});
  const Signature rest =
      declared("path, flags, rest...", [](String, int, const Variadic&) -> Result<Boolean> { return true; }, {"x", 0});
  const Signature lazy = declared("a", [](const Result<Integer>&) { return Any(); });
  const Signature only_rest = declared("all ...", [](const Variadic&) { return List<Integer>(); });
  // As it is, and as that of a bound method.
  const std::tuple<Signature, const char*, const char*> cases[] = {
      {nothing,   "() -> None",                                                     "() -> None"                         },
      {plain,     "(a, b: Integer | None = None) -> Float",                         "(b: Integer | None = None) -> Float"},
      {rest,      "(path: String = \"x\", flags: Integer = 0, rest...) -> Boolean",
       "(flags: Integer = 0, rest...) -> Boolean"                                                                        },
      {lazy,      "(a: Integer | Computed | Error)",                                "()"                                 },
      {only_rest, "(all...) -> List<Integer>",                                      "(all...) -> List<Integer>"          },
  };
  for (const auto& [signature, shown, bound] : cases) {
    EXPECT_EQ(signature.toString(), shown);
    EXPECT_EQ(signature.withoutReceiver().toString(), bound);
    EXPECT_EQ(signature.defaultOf(signature.parameterCount()), nullptr);
  }
  EXPECT_EQ(text(*rest.defaultOf(1)), "0");
  const I_Callable_Generic wrong = make_function("wrong", "a, b", "", [](int a) { return a; });
  EXPECT_TRUE(wrong.signature().is_error());
  EXPECT_EQ(wrong.parameterCount(), 0u);
  EXPECT_EQ(rest.defaultOf(2), nullptr);
  const signature_style style{[](const Type&) { return String(); }, [](const Any&) { return String("..."); }, "*", ""};
  EXPECT_EQ(rest.toString(style), "(path=..., flags=..., *rest)");
}

constinit const class_definition<void> fresh_parent("FreshParent",
                                                    [](class_builder<void>& c) { c.module("test.fresh"); });

// C++ data whose class is first asked for by eight threads.
template <int>
struct Fresh {
  int value = 1;
};
template <int round>
constinit const class_definition<Fresh<round>> fresh_class("Fresh", [](class_builder<Fresh<round>>& c) {
  std::this_thread::yield();
  c.module("test.fresh").parent(fresh_parent.required()).property("value", "", [](const Fresh<round>& self) {
    return self.value;
  });
});

template <int round>
void use_fresh_objects() {
  object_value_class& definition = *new object_value_class("Definition");
  const I_Callable_Generic make_fresh = make_function("make", "count", "", [](int) { return Fresh<round>(); });
  Any seen[8][7];
  on_eight_threads([&](int thread) {
    object_value_class& of_class = fresh_class<round>.required();
    const Any made = make_fresh(1);
    EXPECT_EQ(text(property(made, "value")), "1") << "whoever sees the class finds it by the C++ type";
    const Type argument[] = {Type::of(of_class)};
    const Any objects[] = {
        Class_Generic(of_class),
        argument[0],
        generic_instance(definition, argument),
        make_fresh.signature(),
        meta_method_untyped(String("name{}").arg(round)).name(),
        Ordering(ordering_value::Greater),
        get_logger(),
    };
    std::copy(std::begin(objects), std::end(objects), seen[thread]);
  });
  for (const auto& row : seen) {
    for (std::size_t i = 0; i < std::size(row); ++i) {
      EXPECT_TRUE(row[i].is_same(seen[0][i])) << i;
    }
  }
  EXPECT_TRUE(find_module("test.fresh").value().classes().get("Fresh").is_same(seen[0][0]));
}

TEST(SharedObjects, AreMadeOnceForEightThreads) {
  [&]<int... round>(std::integer_sequence<int, round...>) {
    (use_fresh_objects<round>(), ...);
  }(std::make_integer_sequence<int, 20>());
}

}  // namespace
