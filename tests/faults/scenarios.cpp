// The tables of what is tried.
#include "extension/search_paths.h"
#include "faults/scenario.h"
#include "language/evaluation.h"
#include "ling/ling.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/python_modules.h"

#include <stdexcept>

namespace faults {

namespace {

using namespace ling;
using namespace ling::cpython;

// --- classes of a host -----------------------------------------------------------------------------------------------

struct Thing {
  std::int64_t value = 0;
};

constinit const class_definition<Thing> thing_class("Thing", [](class_builder<Thing>& c) {
  c.module("ling.faults")
      .doc("Something with members of every kind.")
      .parent(I_Immutable::getClass())
      .constructor("value", "A thing.", [](std::int64_t value) { return Thing{value}; }, {0})
      .field("note", "A field.", "none")
      .property(
          "value", "A property.", [](const Thing& self) { return self.value; },
          [](Thing& self, std::int64_t value) { self.value = value; })
      .property(
          "computed", "A lazy value.",
          [](const Thing& self) { return make_computed<Any>([value = self.value] { return Any(value + 100'000); }); })
      .method("add", "amount, times", "Adds.",
              [](Thing& self, std::int64_t amount, std::int64_t times) { return self.value += amount * times; }, {1})
      .method("join", "separator, parts...", "Joins texts.",
              [](const Thing&, const String& separator, const Variadic& parts) {
                string_builder text;
                for (const Any& part : parts) {
                  text.append(text.empty() ? String() : separator).append(display_text(part));
                }
                return text.build();
              })
      .method("show", "text", "An overload.", [](const Thing&, const String& text) { return text; })
      .method("show", "number", "Another.", [](const Thing&, std::int64_t number) { return number * 100'000; })
      .method("refuse", "", "Answers an error.", [](const Thing&) { return Error("A refusal that is long enough."); })
      .method("throw", "", "Throws.", [](const Thing&) { throw std::runtime_error("An exception of the host's."); })
      .method("call", "function, value", "Calls.",
              [](const Thing&, const I_Callable_Generic& function, const Any& value) { return function(value); })
      .class_method("make", "value", "Makes one.", [](std::int64_t value) { return Thing{value}; })
      .method(Any::__sub__, "amount", [](const Thing& self, std::int64_t amount) { return Thing{self.value - amount}; })
      .method(Any::__compare__, "other",
              [](const Thing& self, const Any& other) -> Any {
                const Thing* there = native_cast<Thing>(other);
                return there == nullptr ? Any(Undefined()) : Any(Ordering::fromSign(self.value - there->value));
              })
      .method(Any::__hash__, "", [](const Thing& self) { return self.value; })
      .method(Any::__display__, "", [](const Thing& self) { return String("Thing number {}").arg(self.value); });
});

constinit const class_definition<Error> fault_class("Fault", [](class_builder<Error>& c) {
  c.module("ling.faults")
      .doc("An error of the host's.")
      .parent(Error::getClass())
      .constructor("message", "One.", [](const Class_Generic& self, const String& text) { return Error(self, text); });
});

// --- from Python -----------------------------------------------------------------------------------------------------

// Where the interpreter has no memory for the frame in a traceback, it may clear the exception as well.
constexpr char loses_exception[] = "without an exception|without (setting an )?exception|Unknown error";
// Where it has none for the text of what code raises, even less is left.
constexpr char loses_all[] = "Unknown error|SystemError|without exception|<exception str\\(\\) failed>";
// Where it has none for the text of an exception, the exception comes without.
constexpr char loses_text[] = "^Error: $";
// The import of a module hides what it has failed of.
constexpr char loses_reason[] = "Unable to access 'inspect.signature'";

constexpr python_row from_python_rows[] = {
    {"append many", "l = ling.List()", "for i in range(20): l.append(i * 100000)",
     "str(l) in [str(ling.List(i * 100000 for i in range(n))) for n in range(21)]"},
    {"extend", "l = ling.List([1, 2])", "l.extend([100000, 'b', (3, 4.5)])", "str(l)"},
    {"sort", "l = ling.List([500000, 'b' and 3, 200000, 9.5, 1])", "l.sort()", "str(l)"},
    {"index", "l = ling.List(range(5))", "result = (l[1], l[-1], len(l), str(l[1:3]), str(l[::2]))"},
    {"delete item", "l = ling.List(range(5))\nkept = l.iter()", "del l[1]", "str(l)"},
    {"set slice", "l = ling.List(range(5))", "l[1:3] = ['a', 'b', 'c', 'd', 'e', 'f']", "str(l)"},
    {"delete slice", "l = ling.List(range(9))\nkept = l.iter()", "del l[::2]", "str(l)"},
    {"iterate", "l = ling.List(range(5))", "result = [x for x in l]"},
    {"list of", "l = None", "l = ling.List([1.5, 'x', None, True, b'abc', 100000, (1, (2, 'y'))])", "str(l)"},

    {"map grows", "m = ling.HashMap()", "for i in range(20): m[i * 1000] = 'x'",
     "str(m) in [str(ling.HashMap({i * 1000: 'x' for i in range(n)})) for n in range(21)]"},
    {"map read", "m = ling.HashMap({'a': 1, 2.5: 3})",
     "result = (m['a'], m[2.5], m.get('b', 5), 'a' in m, len(m), list(m), list(m.keys))"},
    {"map by own keys", "m = ling.HashMap(); m[Thing(100000)] = 1", "result = (m[Thing(100000)], Thing(100001) in m)",
     "str(m)"},
    {"clone", "l = ling.List([1, [2], ling.HashMap({'a': ling.List([3])})])",
     "result = str(l.clone()) + str(l.deepClone())"},
    {"compare", "a, b = ling.List([1, (2, 'x')]), ling.List([1, (2, 'x')])",
     "result = (a == b, a != b, ling.HashMap({1: a}) == ling.HashMap({1: b}), Thing(1) < Thing(2), hash(Thing(1)))"},
    {"text", "l = ling.List([1, 'x', Thing(5), None])",
     "result = (str(l), repr(l), str(Thing(6)), repr(Thing(7)), f'{Thing(8)}')"},

    {"attribute", "t = Thing(100000)", "result = (t.value, t.note)"},
    {"new attribute name", "t = Thing(1)\nname = 'is not there ' + str(id(t))", "result = getattr(t, name, 'missing')"},
    {"missing attribute", "t = Thing(1)", "result = t.missing"},
    {"set attribute", "t = Thing(1)", "t.value = 100000", "t.value"},
    {"set field", "t = Thing(1)", "t.note = 'a text that is new'", "t.note"},
    {"own attribute", "t = Thing(1)", "t.added = 'a text that is new'", "getattr(t, 'added', None)"},
    {"delete attribute", "t = Thing(1); t.added = 1", "del t.added", "hasattr(t, 'added')"},
    {"computed", "t = Thing(1)", "result = (str(t.computed), ling.display(t.computed))"},
    {"special names", "t = Thing(1)",
     "result = (t.__doc__, t.add.__doc__, t.add.__name__, t.add.__annotations__, t.add.__text_signature__, "
     "Thing.__module__, Thing.__name__)"},
    {"dir", "t = Thing(1)", "result = dir(t)"},
    {"construct", "",
     "result = (Thing(100000).value, Thing().value, Thing(value=100001).value, Thing.make(100002).value)"},
    {"call", "t = Thing(1)", "result = t.add(100000, 2)", "t.value"},
    {"call named", "t = Thing(1)", "result = t.add(times=2, amount=100000)", "t.value"},
    {"call many", "t = Thing(1)", "result = t.join(', ', 1, 2.5, 'x', None, (1, 2), b'y', 7, 8, 9, 10, 11, 12)"},
    {"overloads", "t = Thing(1)", "result = (t.show('a text'), t.show(3), t.show(number=4))"},
    {"bad argument", "t = Thing(1)", "result = t.add('a text')"},
    {"refusal", "t = Thing(1)", "result = t.refuse()"},
    {"host exception", "t = Thing(1)", "result = t.throw()"},
    {"operators", "t = Thing(100000)", "result = str(t - 1)"},
    {"callback", "t = Thing(1)\ndef double(x): return x * 200000", "result = t.call(double, 3)"},
    {"callback raises", "t = Thing(1)\ndef fail(x): raise ValueError('a text that is long enough')",
     "result = t.call(fail, 3)", "None", loses_exception},
    {"error carried", "t = Thing(1)", "try: t.refuse()\nexcept RuntimeError as e: result = str(e.ling.message)"},
    {"wrapped error", "e = ling.List()", "result = Fault('a text')"},
    {"coerce", "",
     "result = (ling.Integer('100000'), ling.String(5), ling.Float('1.5'), ling.Decimal('1.25'), ling.Boolean([]))"},
    {"lookup", "t = Thing(1)",
     "result = (str(ling.own_properties_of(t)), str(ling.method_of(t, 'add')), str(ling.property_of(t, 'value')), "
     "str(ling.find_module('ling.faults')), str(ling.find_type('ling.faults.Thing')), "
     "str(ling.find_module('no.such.module')), str(ling.modules()[0]), str(ling.globals().get('missing', 'none')))"},
    {"dates", "import datetime as t, decimal\nd = t.datetime(2020, 1, 2, 3, 4, 5, 6, tzinfo=t.timezone.utc)",
     "result = ling.Tuple([d, d.date(), d.time(), t.time(1, 2, fold=1), decimal.Decimal('1.25')])"},
    {"import", "import sys\nsys.modules.pop('ling.faults', None)", "import ling.faults", "None",
     "can't allocate lock|SystemError\\(\\)"},
    {"evaluate", "out = ling.HashMap({'x': 1}); scope = ling.EvaluationScope(7, None, {'y': 100000}, out)",
     "result = ling.cpython.evaluate('x = y + 1\\nreturn [x, self]', scope)", "str(out)"},
    {"evaluate syntax error", "",
     "try: ling.cpython.evaluate('x = = 1')\n"
     "except RuntimeError as e: result = (str(e), getattr(e.ling, 'line', 0))", "None", loses_exception},
    {"evaluate raises", "",
     "try: ling.cpython.evaluate('x = 1\\nraise KeyError(x)')\n"
     "except RuntimeError as e: result = (str(e), getattr(e.ling, 'line', 0), e.ling.stack)", "None", loses_all},
    {"function from source", "",
     "result = (ling.cpython.CPythonFunction('lambda x: x + 1')(2), ling.cpython.CPythonFunction('def f(a: int): "
     "return a')(3), ling.cpython.CPythonFunction('return args[0]')(4))"},
    {"memory error comes home", "t = Thing(1)\ndef fail(x): raise MemoryError",
     "try: t.call(fail, 3)\nexcept MemoryError: result = 'caught'", "None", loses_exception},
    {"deep destruction", "l = ling.List()\nfor i in range(300): l = ling.List([l])", "l = None"},
};

// --- from the host ---------------------------------------------------------------------------------------------------

// Preparations. None of them may fail.

template <std::size_t N>
struct code {
  char text[N];
  constexpr code(const char (&given)[N]) { std::copy_n(given, N, text); }
};
template <code Code>
Any made_by() {
  return made_by_python(Code.text);
}
constexpr auto list_of_python = made_by<"return [1, 2, 3]">;
constexpr auto dict_of_python = made_by<"return {'a': 1, 'b': 2}">;
constexpr auto set_of_python = made_by<"return {1, 2}">;
Any class_of_python() {
  // The class of a type lives for ever.
  static const Any made = made_by_python(
      "class Point:\n"
      "  'A place.'\n"
      "  kind = 'place'\n"
      "  def __init__(self, x=1): self.x = x\n"
      "  def double(self, by=2): return self.x * by\n"
      "  @property\n"
      "  def size(self): return self.x + 100000\n"
      "  def __lt__(self, other): return self.x < other.x\n"
      "  def __gt__(self, other): return self.x > other.x\n"
      "  def __str__(self): return f'Point at {self.x}'\n"
      "return Point");
  return made;
}
Any object_of_python() { return I_Callable_Generic::unchecked(class_of_python())(); }
Any two_objects() { return List_Generic({object_of_python(), object_of_python()}); }
Any nothing() { return {}; }

// What is handed over, made before.
const Any text("a text that is long enough");
const Any number(100'000);
const Any pair = Tuple_Generic({number, text});
const named_argument by_name[] = {
    {"b", text}
};

// One value of each kind.
Any every_kind() {
  const Any day = Date::from(2020, 1, 2);
  const Any time = Time::from(1, 2, 3, 4'000);
  return List_Generic({Any(), Any(true), number, Any(2.0 + 1), Any(2.5), text, ByteArray("bytes"), pair, day, time,
                       DateTime(Date::unchecked(day), Time::unchecked(time)), Decimal::fromString("1.25"), Undefined(),
                       HashMap_Generic(), make<object_value_native<Thing>>(thing_class.required(), 5),
                       Class_Generic(thing_class.required())});
}

// Actions. What the runtime promises not to throw is done as it is; other functions throw std::bad_alloc, which a host
// catches where it likes.

template <auto Function>
Any caught(const Any& subject) {
  return internal::guarded([&]() -> Any { return Function(subject); });
}
auto method(std::string_view name, std::vector<Any> arguments = {}) {
  return [called = meta_method_untyped(name), arguments = std::move(arguments)](const Any& subject) {
    return internal::guarded([&]() -> Any { return call_method(subject, called, arguments); });
  };
}
auto property(std::string_view name) {
  return [read = meta_property_untyped(name)](const Any& subject) {
    return internal::guarded([&]() -> Any { return subject.propertyValue(read); });
  };
}
auto called_with(std::vector<Any> arguments) {
  return [arguments = std::move(arguments)](const Any& function) {
    return I_Callable_Generic::unchecked(function).callWith(arguments);
  };
}
template <code Code>
Any evaluated(const Any&) {
  return internal::guarded([]() -> Any { return evaluate(Code.text, {}); });
}

Any there_and_back(const Any& values) {
  std::vector<Any> all;
  for (const Any& each : List_Generic::unchecked(values).copyItems()) {
    const GilGuard lock;
    const PyObjectPtr object = to_python(each);
    all.push_back(object ? from_python(object.get()) : Any(capture_error_or("failed without an exception")));
    if (is_error_result(all.back())) {
      return all.back();
    }
  }
  return List_Generic(std::move(all));
}
Any exported_module(const Any&) {
  const GilGuard lock;
  const auto module = export_python_module("test.csv", "csv");
  return module ? Any(std::int64_t(class_of(module).object().properties().size())) : Any(module);
}

const host_row from_host_rows[] = {
    {"every kind there and back", every_kind, caught<there_and_back>},
    {"call Python", made_by<"return lambda a, b=2: [a, b]">, called_with({text})},
    {"call Python by name", made_by<"return lambda a, b=2: [a, b]">,
     [](const Any& f) {
       return static_cast<const object_value_callable&>(*f.get()).call_named(std::span(&number, 1), by_name);
     }},
    {"Python raises", made_by<"def f(): raise ValueError('a text that is long enough')\nreturn f">, called_with({})},
    {"Python has no memory", made_by<"def f(): raise MemoryError\nreturn f">, called_with({})},
    {"bad call", made_by<"return lambda a: a">, called_with({}), loses_text},
    {"signature", made_by<"def f(a: int, b: 'str' = 'x', *c) -> float: pass\nreturn f">,
     caught<[](const Any& f) { return I_Callable_Generic::unchecked(f).signature(); }>, loses_reason},
    {"sequence error", list_of_python, method("at", {number})},
    {"sequence or", list_of_python, method("atOr", {7, text})},
    {"sequence append", list_of_python, method("append", {text})},
    {"sequence slice", list_of_python, method("sliced", {1, 3})},
    {"sequence without a method", list_of_python, method("missing")},
    {"mapping keys", dict_of_python, property("keys")},
    {"set remove in vain", set_of_python, method("remove", {text})},
    {"iterate", list_of_python, caught<[](const Any& s) { return I_Iterable_Generic::unchecked(s).toList(); }>},
    {"proxy without", object_of_python, property("missing"), loses_text},
    {"proxy set", object_of_python,
     caught<[](const Any& o) { return o.setPropertyValue(meta_property_untyped("x"), number); }>},
    {"proxy method", object_of_python, method("double", {3})},
    {"proxy property described", object_of_python,
     caught<[](const Any& o) { return property_of(o, meta_property_untyped("size")); }>},
    {"proxy method described", object_of_python,
     caught<[](const Any& o) { return method_of(o, meta_method_untyped("double")); }>},
    {"proxy compared", two_objects, caught<[](const Any& l) {
       return compare_objects(List_Generic::unchecked(l).at(0), List_Generic::unchecked(l).at(1));
     }>},
    {"proxy text", object_of_python, caught<[](const Any& o) { return display(o); }>},
    {"code of a value", nothing, caught<[](const Any&) { return to_code(pair); }>},
    {"Python class", class_of_python, called_with({number})},
    {"Python class made", nothing,
     evaluated<"return type('Fresh', (dict,), {'a': 1, 'f': lambda self: 2, '__doc__': 'doc'})">, "", keeps_memory},
    {"resolve", nothing, caught<[](const Any&) { return resolve("os.path.sep"); }>},
    {"another thread", nothing, caught<[](const Any&) { return evaluate_expr("1 + 100000", {}); }>, "", on_new_thread},
    {"reference dies on another thread", two_objects, method("clear"), "", on_new_thread},
    {"evaluate in C++", nothing, evaluated<"x = [1, 'a']\nreturn x">},
    {"export", nothing, caught<exported_module>, "can't allocate"},
    {"search path", nothing, caught<[](const Any&) { return cpython_add_sys_path("/a/path/that/is/new"); }>},
};

const class_registration registered{thing_class, fault_class};

}  // namespace

std::span<const python_row> python_rows() { return from_python_rows; }
std::span<const host_row> host_rows() { return from_host_rows; }

Any made_by_python(const char* code) {
  const auto result = evaluate(code, {});
  if (result.is_error()) {
    std::fprintf(stderr, "%s\n%s\n", code, result.error().message().c_str());
    std::abort();
  }
  return result;
}

}  // namespace faults
