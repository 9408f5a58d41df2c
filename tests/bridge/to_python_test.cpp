// Host values on their way to Python.
#include "bridge/python.h"
#include "ling/ling.h"
#include "lingobject/ling_object.h"
#include "lingobject/python_signature.h"
#include "proxies/cpython_object.h"

namespace ling::cpython {
namespace {

using ToPython = PythonTest;

// A value that is loaded by a function.
struct loaded_value final : object_value_external {
  explicit loaded_value(std::function<Any()> function) : load_value(std::move(function)) {}
  Any load() override { return load_value(); }

  std::function<Any()> load_value;
};

Any external(std::function<Any()> load) { return make<loaded_value>(std::move(load)); }

Any nested_tuple(int depth) {
  Any value = 1;
  for (int i = 0; i < depth; ++i) {
    value = Tuple_Generic({value});
  }
  return value;
}

TEST_F(ToPython, CopiesPlainValues) {
  const std::pair<Any, const char*> rows[] = {
      {INT64_MIN, "-9223372036854775808"},
      {UINT64_MAX, "18446744073709551615"},
      {std::string_view("a\0b", 3), "'a\\x00b'"},
      {ByteArray(std::string_view("\0\xff", 2)), "b'\\x00\\xff'"},
      {Tuple_Generic({1, "a", Tuple_Generic({2.5})}), "(1, 'a', (2.5,))"},
      {external([] { return external([] { return Any("loaded"); }); }), "'loaded'"},
  };
  for (const auto& [value, expected] : rows) {
    EXPECT_EQ(repr(to_python(value)), expected);
  }
}

TEST_F(ToPython, FailsAsAWholeWhenAPartFails) {
  const Any error = Error("broken");
  std::function<Any()> self_loading;
  self_loading = [&] { return external(self_loading); };
  const char* const too_deep = "RecursionError('The value is nested more than 500 levels deep.')";
  const std::pair<Any, const char*> rows[] = {
      {error, "RuntimeError('broken')"},
      {Tuple_Generic({1, Tuple_Generic({List_Generic(), error}), 2}), "RuntimeError('broken')"},
      {make<object_value_python_object>(cpython_object_class.required()), "RuntimeError('The object is null.')"},
      {Date::from(10000, 1, 1), "ValueError('year 10000 is out of range')"},
      {nested_tuple(maximum_conversion_depth + 1), too_deep},
      {nested_tuple(100'000), too_deep},
      {external(self_loading), too_deep},
  };
  for (const auto& [value, expected] : rows) {
    EXPECT_FALSE(to_python(value));
    EXPECT_EQ(repr(take_pending()), expected);
  }
  EXPECT_TRUE(to_python(nested_tuple(maximum_conversion_depth)));
}

TEST_F(ToPython, SpellsValuesAsCode) {
  const Any list = List_Generic({"a"});
  const std::pair<Any, const char*> rows[] = {
      {from_python(eval("{'a': [1]}").get()),                                 "{'a': [1]}"             },
      {Tuple_Generic({"a", Tuple_Generic(), Tuple_Generic({list, 2})}),       "('a', (), ([\"a\"], 2))"},
      {external([=] { return Any(Tuple_Generic({list})); }),                  "([\"a\"],)"             },
      {make_computed<Any>([=] { return list; }),                              "[\"a\"]"                },
      {Tuple_Generic({make_computed<Any>([] { return Any(1); }), Error("")}), ""                       },
      {nested_tuple(maximum_conversion_depth + 1),                            ""                       },
  };
  for (const auto& [value, expected] : rows) {
    EXPECT_EQ(display_text(to_code(value)).view(), expected);
    if (const PyObjectPtr object = to_python(value)) {
      EXPECT_EQ(repr(object), expected) << "the text is that of the object that arrives";
    }
    PyErr_Clear();
  }
}

// A value of each kind that becomes an object of Python's own type.
std::vector<Any> converted_kinds() {
  std::vector<Any> values = {Any(), true, 1, 2.5, "text", ByteArray("b"), Tuple_Generic({1})};
  for (const Any& other : {Any(Date::fromString("2020-02-29")), Any(Time::fromString("01:00")),
                           Any(DateTime::fromString("2020-02-29T01:00")), Any(Decimal::fromString("1.5"))}) {
    values.push_back(other);
  }
  return values;
}

TEST_F(ToPython, TellsBeforehandWhatItWraps) {
  const auto presented = [](const char* code) { return from_python(eval(code).get()); };
  for (const Any& value : {presented("len"), presented("object()"), presented("[1]"), presented("type('C', (), {})"),
                           Any(Undefined()), Any(List_Generic()), Any(List_Generic::getClass()),
                           external([] { return Any(1); }), Any(make_computed<Any>([] { return Any(1); }))}) {
    const PyObjectPtr object = to_python(value);
    const Any* const wrapped = wrapped_value(object.get());
    EXPECT_EQ(arrives_wrapped(value), wrapped != nullptr) << display_text(value).view();
    EXPECT_TRUE(wrapped == nullptr || wrapped->is_same(value)) << display_text(value).view();
  }
}

// Each place that knows a kind of value which becomes an object of Python's own type.
TEST_F(ToPython, KnowsConvertedKindsInEveryPlace) {
  const PyObjectPtr annotated = run("def result(T):\n  def f(x: T): pass\n  return f");
  for (const Any& value : converted_kinds()) {
    const Class_Generic of_class = class_of(value);
    PyObject* const type = reinterpret_cast<PyObject*>(Py_TYPE(to_python(value).get()));
    EXPECT_FALSE(arrives_wrapped(value)) << display_text(value).view();
    EXPECT_EQ(python_type_of(Type::of(of_class)).get(), type) << display_text(value).view();
    const auto back = builtin_class_of(type);
    EXPECT_TRUE(!back || *back == of_class) << display_text(value).view();
    const PyObjectPtr function(PyObject_CallFunctionObjArgs(annotated.get(), type, nullptr));
    const String signature = signature_text(I_Callable_Generic::unchecked(from_python(function.get())));
    const PyObjectPtr name(PyObject_GetAttrString(type, "__name__"));
    const String shown = value.empty() ? String("None") : String::unchecked(from_python(name.get()));
    EXPECT_EQ(signature, String("(x: {}) -> object").arg(shown));
  }
}

TEST_F(ToPython, KnowsNoPythonTypeOfAnyOtherType) {
  for (const Type& type : {Type::untyped(), I_Iterable_Generic::getType(), CPythonObject::getType()}) {
    EXPECT_EQ(repr(python_type_of(type)), "<class 'object'>");
  }
}

}  // namespace
}  // namespace ling::cpython
