// The tables of what is tried.
#include "faults/allocation_faults.h"
#include "faults/scenario.h"
#include "ling/ling.h"
#include "python/convert.h"
#include "python/interpreter_lock.h"
#include "python/python_modules.h"

#include <stdexcept>
#include <thread>

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
      .property(
          "value", "A property.", [](const Thing& self) { return self.value; },
          [](Thing& self, std::int64_t value) { self.value = value; })
      .method("add", "amount, times", "Adds.",
              [](Thing& self, std::int64_t amount, std::int64_t times) { return self.value += amount * times; }, {1})
      .method("join", "separator, parts...", "Joins texts.",
              [](const Thing&, const String& separator, const Variadic& parts) {
                return String("{}{}").arg(separator, parts.length());
              })
      .method("show", "text", "An overload.", [](const Thing&, const String& text) { return text; })
      .method("show", "number", "Another.", [](const Thing&, std::int64_t number) { return number * 100'000; })
      .method("refuse", "", "Answers an error.", [](const Thing&) { return Error("A refusal that is long enough."); })
      .method("throw", "", "Throws.", [](const Thing&) { throw std::runtime_error("An exception of the host's."); })
      .method(Any::__compare__, "other",
              [](const Thing& self, const Any& other) -> Any {
                const Thing* there = native_cast<Thing>(other);
                return there == nullptr ? Any(Undefined()) : Any(Ordering::fromSign(self.value - there->value));
              })
      .method(Any::__hash__, "", [](const Thing& self) { return self.value; })
      .method(Any::__display__, "", [](const Thing& self) { return String("Thing number {}").arg(self.value); });
});

// What a host does with something of Python's, and with what else is given; it holds no lock.
const std::pair<const char*, Any (*)(const Any&, std::span<const Any>)> host_actions[] = {
    {"call",           [](const Any& f,     std::span<const Any> given) { return I_Callable_Generic::unchecked(f).callWith(given); }},
    {"call_by_name",
     [](const Any& f,                       std::span<const Any> given) {
       const named_argument by_name{"b", given[1]};
       return static_cast<const object_value_callable&>(*f.get()).call_named(given.first(1), {&by_name, 1});
     }                                                                                                         },
    {"ask",
     [](const Any& value,                   std::span<const Any> given) {
       return call_method(value, meta_method_untyped(String::unchecked(given[0]).view()), given.subspan(1));
     }                                                                                                     },
    {"read",
     [](const Any& value,                   std::span<const Any> given) {
       return value.propertyValue(meta_property_untyped(String::unchecked(given[0]).view()));
     }                                                                                                     },
    {"write",
     [](const Any& value,                   std::span<const Any> given) {
       return Any(value.setPropertyValue(meta_property_untyped(String::unchecked(given[0]).view()), given[1]));
     }                                                                                                     },
    {"signature",      [](const Any& f,     std::span<const Any>) { return Any(I_Callable_Generic::unchecked(f).signature()); }     },
    {"items",          [](const Any& all,   std::span<const Any>) { return Any(I_Iterable_Generic::unchecked(all).toList()); }      },
    {"export_module",
     [](const Any&,                         std::span<const Any>) {
       const GilGuard lock;
       const auto module = export_python_module("test.csv", "csv");
       return module ? Any(std::int64_t(class_of(module).object().properties().size())) : Any(module);
     }                                                                                                           },
    {"call_elsewhere", // on a thread that has never come before
     [](const Any& f, std::span<const Any>) {
       Any result;
       const exposure not_here(false);
       std::thread([&] {
         const exposure here(true);
         result = I_Callable_Generic::unchecked(f)();
       }).join();
       return result;
     }                                                                                   },
};

struct Host {};

constinit const class_definition<Host> host_class("Host", [](class_builder<Host>& c) {
  c.module("ling.faults");
  for (const auto& [name, action] : host_actions) {
    c.class_method(name, "value, given...", "", [act = action](const Any& value, const Variadic& given) {
      const lock_given_away by_now;
      return internal::guarded([&] { return act(value, std::vector<Any>(given.begin(), given.end())); });
    });
  }
});

// --- scenarios -------------------------------------------------------------------------------------------------------

// Where the interpreter has no memory for the frame in a traceback, it may clear the exception as well.
constexpr char loses_exception[] = "without an exception|without (setting an )?exception|Unknown error";
// Where it has none for the text of what code raises, even less is left.
constexpr char loses_all[] = "Unknown error|SystemError|without exception|<exception str\\(\\) failed>";
// Where it has none for the text of an exception, the exception comes without.
constexpr char loses_text[] = "^RuntimeError\\(\\)$";
// The import of a module hides what it has failed of.
constexpr char loses_reason[] = "Unable to access 'inspect.signature'";

constexpr char point[] = "p = Point(1)";

constexpr scenario rows[] = {
    {"index", "l = ling.List(range(5))", "result = (l[1], l[-1], len(l), str(l[1:3]), str(l[::2]))"},
    {"set slice", "l = ling.List(range(5))", "l[1:3] = ['a', 'b', 'c', 'd', 'e', 'f']", "str(l)"},
    {"delete slice", "l = ling.List(range(9))\nkept = l.iter()", "del l[::2]", "str(l)"},
    {"iterate", "l = ling.List(range(5))", "result = [x for x in l]"},

    {"every kind", "import datetime as t, decimal\nd = t.datetime(2020, 1, 2, 3, 4, 5, 6, tzinfo=t.timezone.utc)",
     "result = [*ling.Tuple([None, True, 1.5, 'x', b'abc', 100000, (1, (2, 'y')), [1], {1: 2}, Thing(1), Thing, d, "
     "d.date(), d.time(), t.time(1, 2, fold=1), decimal.Decimal('1.25')])]"},

    {"map grows", "m = ling.HashMap()", "for i in range(20): m[i * 1000] = 'x'",
     "str(m) in [str(ling.HashMap({i * 1000: 'x' for i in range(n)})) for n in range(21)]"},
    {"map by own keys", "m = ling.HashMap(); m[Thing(100000)] = 1", "result = (m[Thing(100000)], Thing(100001) in m)",
     "str(m)"},
    {"compare", "a, b = ling.List([1, (2, 'x')]), ling.List([1, (2, 'x')])",
     "result = (a == b, a != b, ling.HashMap({1: a}) == ling.HashMap({1: b}), Thing(1) < Thing(2), hash(Thing(1)))"},
    {"text", "l = ling.List([1, 'x', Thing(5), None])",
     "result = (str(l), repr(l), str(Thing(6)), repr(Thing(7)), f'{Thing(8)}')"},

    {"new attribute name", "t = Thing(1)\nname = 'is not there ' + str(id(t))", "result = getattr(t, name, 'missing')"},
    {"set attribute", "t = Thing(1)", "t.value = 100000", "t.value"},
    {"own attribute", "t = Thing(1)", "t.added = 'a text that is new'", "getattr(t, 'added', None)"},
    {"special names", "t = Thing(1)",
     "result = (t.__doc__, t.add.__doc__, t.add.__name__, t.add.__annotations__, t.add.__text_signature__, "
     "Thing.__module__, Thing.__name__)"},
    {"dir", "t = Thing(1)", "result = dir(t)"},
    {"construct", "", "result = (Thing(100000).value, Thing().value, Thing(value=100001).value)"},
    {"call named", "t = Thing(1)", "result = t.add(times=2, amount=100000)", "t.value"},
    {"method read", "t = Thing(1)",
     "result = (str(t.join), t.join == t.join, ling.List([t.join])[0](', '), t.join(*[text]), Host.call(t.join, '-'))"},
    {"missing attribute", "t = Thing(1)\nname = 'is not there either ' + str(id(t))",
     "try: getattr(t, name)\nexcept AttributeError as e: result = str(e).replace(name, '')"},
    {"call many", "t = Thing(1)", "result = t.join(', ', 1, 2.5, 'x', None, (1, 2), b'y', 7, 8, 9, 10, 11, 12)"},
    {"overloads", "t = Thing(1)", "result = (t.show('a text'), t.show(3), t.show(number=4))"},
    {"bad argument", "t = Thing(1)", "result = t.add('a text')"},
    {"host exception", "t = Thing(1)", "result = t.throw()"},
    {"callback raises", "def fail(x): raise ValueError('a text that is long enough')", "result = Host.call(fail, 3)",
     "None", loses_exception},
    {"error carried", "t = Thing(1)", "try: t.refuse()\nexcept RuntimeError as e: result = str(e.ling.message)"},
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
    {"deep destruction", "l = ling.List()\nfor i in range(300): l = ling.List([l])", "l = None"},

 // What the host does with Python's objects.
    {"call Python by name", "def f(a, b=2): return [a, b]", "result = Host.call_by_name(f, 100000, text)"},
    {"Python has no memory", "def f(): raise MemoryError", "try: Host.call(f)\nexcept MemoryError: result = 'caught'",
     "None", loses_exception},
    {"bad call", "def f(a): return a", "result = Host.call(f)", "None", loses_text},
    {"signature", "def f(a: int, b: 'str' = 'x', *c) -> float: pass", "result = str(Host.signature(f))", "None",
     loses_reason},
    {"sequence error", "l = [1, 2, 3]", "result = Host.ask(l, 'at', 100000)"},
    {"sequence or", "l = [1, 2, 3]", "result = Host.ask(l, 'atOr', 7, text)"},
    {"mapping keys", "d = {'a': 1, 'b': 2}", "result = list(Host.read(d, 'keys'))"},
    {"set remove in vain", "s = {1, 2}", "result = Host.ask(s, 'remove', text)", "s"},
    {"items", "l = [1, 2, 3]", "result = list(Host.items(l))"},
    {"proxy without", point, "result = Host.read(p, 'missing')", "None", loses_text},
    {"proxy set", point, "Host.write(p, 'x', 100000)", "p.x"},
    {"proxy method", point, "result = Host.ask(p, 'double', 3)"},
    {"proxy described", point, "result = str(ling.property_of(p, 'size')), ling.method_of(p, 'double')(3)"},
    {"proxy compared", point, "result = str(ling.compare_objects(p, Point(2)))"},
    {"Python class", point, "result = Host.call(Point, 100000).x"},
    {"Python class made", "", "result = str(ling.List([type('Fresh', (dict,), {'a': 1, 'f': lambda self: 2})]))"},
    {"another thread", "def f(): return 1 + 100000", "result = Host.call_elsewhere(f)"},
    {"reference dies on another thread", "l = ling.List([Point(1)])", "Host.call_elsewhere(l.clear)", "str(l)"},
    {"export", "", "result = Host.export_module(None)", "None", "can't allocate"},
};

const class_registration registered{thing_class, host_class};

}  // namespace

std::span<const scenario> scenarios() { return rows; }

}  // namespace faults
