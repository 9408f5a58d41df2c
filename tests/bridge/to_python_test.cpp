// Host values on their way to Python.
#include "bridge/python.h"
#include "ling/ling.h"
#include "lingobject/ling_object.h"
#include "lingobject/python_signature.h"
#include "proxies/cpython_object.h"

#include <algorithm>

namespace ling::cpython {
namespace {

using ToPython = PythonTest;

// A value that is loaded by a function.
class loaded_value final : public object_value_external {
 public:
  explicit loaded_value(std::function<Any()> load) : load_(std::move(load)) {}
  Any load() override { return load_(); }

 private:
  std::function<Any()> load_;
};

Any external(std::function<Any()> load) { return make<loaded_value>(std::move(load)); }

Any nested_tuple(int depth) {
  Any value = 1;
  for (int i = 0; i < depth; ++i) {
    value = Tuple_Generic({value});
  }
  return value;
}

// The exception that is pending, as Python shows it; clears it.
std::string take_exception() {
  const PyObjectPtr exception = take_pending();
  return exception ? repr(exception) : "";
}

TEST_F(ToPython, CopiesPlainValues) {
  const std::pair<Any, const char*> rows[] = {
      {INT64_MIN, "-9223372036854775808"},
      {UINT64_MAX, "18446744073709551615"},
      {"gr\xc3\xbc\xc3\x9f \xf0\x9f\x90\x8d", "'gr\xc3\xbc\xc3\x9f \xf0\x9f\x90\x8d'"},
      {std::string_view("a\0b", 3), "'a\\x00b'"},
      {ByteArray(std::string_view("\0\xff", 2)), "b'\\x00\\xff'"},
      {Tuple_Generic({1, "a", Tuple_Generic({2.5})}), "(1, 'a', (2.5,))"},
      {Tuple_Generic({Any(), Undefined(), true}), "(None, NotImplemented, True)"},
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
      {external([]() -> Any { throw std::runtime_error("no file"); }), "RuntimeError('no file')"},
      {external([&] { return error; }), "RuntimeError('broken')"},
      {make<object_value_python_object>(cpython_object_class.required()), "RuntimeError('The object is null.')"},
      {Date::from(10000, 1, 1), "ValueError('year 10000 is out of range')"},
      {nested_tuple(maximum_conversion_depth + 1), too_deep},
      {nested_tuple(100'000), too_deep},
      {external(self_loading), too_deep},
  };
  for (const auto& [value, expected] : rows) {
    EXPECT_FALSE(to_python(value));
    EXPECT_EQ(take_exception(), expected);
  }
  EXPECT_TRUE(to_python(nested_tuple(maximum_conversion_depth)));
}

TEST_F(ToPython, PinsTheSingletonsItDoesNotCount) {
  for (PyObject* singleton : {Py_None, Py_NotImplemented, Py_True, Py_False}) {
    EXPECT_GE(Py_REFCNT(singleton), Py_ssize_t{1} << 29);
  }
}

TEST_F(ToPython, LeaksNothing) {
  for (const Any& value :
       {nested_tuple(20), Any(List_Generic({1})), Any(DateTime::fromString("2020-02-29T10:20+02:00")),
        Any(Date::fromString("+10000-01-01")), Any(Tuple_Generic({1000, Error("broken")}))}) {
    const auto references = value.get()->reference_count();
    expect_no_leak(display_text(value).c_str(), [&] {
      static_cast<void>(to_python_locked(value));
      PyErr_Clear();
    });
    EXPECT_EQ(value.get()->reference_count(), references) << display_text(value).view();
  }
}

TEST_F(ToPython, SpellsValuesAsCode) {
  const Any list = List_Generic({"a"});
  const std::pair<Any, const char*> rows[] = {
      {Any(),                                                                 "None"                   },
      {from_python(eval("{'a': [1]}").get()),                                 "{'a': [1]}"             },
      {Tuple_Generic({list}),                                                 "([\"a\"],)"             },
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
  const Any hostile = from_python(run("class C:\n  def __repr__(self): raise KeyError('r')\nresult = C()").get());
  EXPECT_TRUE(to_code(Tuple_Generic({1, hostile})).is_error());
}

// Values of expressions, which may speak of the host's and of dates.
std::vector<Any> values_of(const std::vector<std::string>& expressions) {
  std::vector<Any> values;
  for (const std::string& each : expressions) {
    values.push_back(from_python(run("import datetime, decimal, ling\nresult = " + each).get()));
  }
  return values;
}

// A value of each kind that becomes an object of Python's own type.
std::vector<Any> converted_kinds() {
  std::vector<Any> values = values_of({"None", "True", "1", "2.5", "'text'", "b'b'", "datetime.date(2020, 2, 29)",
                                       "datetime.time(1)", "datetime.datetime(2020, 2, 29)", "decimal.Decimal('1.5')"});
  values.push_back(Tuple_Generic({1}));
  return values;
}

TEST_F(ToPython, TellsBeforehandWhatItWraps) {
  std::vector<Any> values = values_of({"len", "object()", "[1]", "type('C', (), {})", "NotImplemented", "ling.List()",
                                       "ling.List", "ling.get_logger()", "ling.get_logger"});
  std::ranges::copy(converted_kinds(), std::back_inserter(values));
  values.push_back(external([] { return Any(1); }));
  values.push_back(make_computed<Any>([] { return Any(1); }));
  for (const Any& value : values) {
    const PyObjectPtr object = to_python(value);
    ASSERT_TRUE(object) << display_text(value).view();
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

TEST_F(ToPython, KnowsThePythonTypeOfAnyOtherType) {
  for (const Type& type : {Type::untyped(), I_Iterable_Generic::getType(), CPythonObject::getType()}) {
    EXPECT_EQ(repr(python_type_of(type)), "<class 'object'>");
  }
  EXPECT_EQ(python_type_of(List_Generic::getType()).get(),
            reinterpret_cast<PyObject*>(wrapper_type_of(List_Generic::getClass())));
  const PyObjectPtr own = run("class result: pass");
  const Any presented = from_python(own.get());
  EXPECT_EQ(python_type_of(Type::of(Class_Generic::unchecked(presented))).get(), own.get()) << "no wrapper type for it";
}

}  // namespace
}  // namespace ling::cpython
