// Python objects on their way to the host.
#include "bridge/python.h"
#include "ling/ling.h"
#include "lingobject/ling_object.h"
#include "proxies/cpython_object.h"

#include <cmath>

namespace ling::cpython {
namespace {

using FromPython = PythonTest;

// "Kind text", with the class instead of the kind for instances.
std::string describe(const Any& value) {
  return std::string(is_none(value) ? "None" : qualname(value).view()) + " " + std::string(display_text(value).view());
}

TEST_F(FromPython, TestsInOrder) {
  const std::pair<const char*, const char*> rows[] = {
      {"NotImplemented",                                                           "ling.Undefined Undefined"                             },
      {"-2**63",                                                                   "ling.Integer -9223372036854775808"                    },
      {"2.0**63",                                                                  "ling.Integer -9223372036854775808"                    },
      {"__import__('fractions').Fraction(7, 2)",                                   "ling.Integer 3"                                       },
      {"'\\ud800'",                                                                "ling.String "                                         },
      {"type('S', (str,), {})('derived')",                                         "ling.String derived"                                  },
      {"[1, 2]",                                                                   "ling.cpython.CPythonProxySequence [1, 2]"             },
      {"type('D', (dict,), {})(a=1)",                                              "ling.cpython.CPythonProxyMapping {'a': 1}"            },
      {"len",                                                                      "len <function len>"                                   },
      {"dict",                                                                     "python.builtins.dict <class python.builtins.dict>"    },
      {"__import__('datetime').date",                                              "ling.Date <class ling.Date>"                          },
      {"type('B', (bytes,), {})(b'a\\0b')",                                        "ling.ByteArray b\"a\\x00b\""                          },
      {"KeyboardInterrupt()",                                                      "ling.cpython.CPythonObject "                          },
      {"ValueError('bad')",                                                        "ling.Error Error: bad"                                },
 // Objects that claim to be what they are not, or raise when they are asked.
      {"type('C', (), {'__class__': ValueError, '__str__': lambda s: 'claim'})()", "ling.Error Error: claim"                              },
      {"type('C', (), {'__getattribute__': len, '__str__': lambda s: 'c'})()",     "ling.cpython.CPythonObject c"                         },
      {"2**63",                                                                    "ling.Error Error: int too big to convert"             },
      {"type('N', (), {'__int__': lambda s: 1 // 0})()",                           "ling.Error Error: integer division or modulo by zero" },
      {"type('N', (), {'__int__': lambda s: 'text'})()",                           "ling.Error Error: __int__ returned non-int (type str)"},
  };
  for (const auto& [expression, expected] : rows) {
    EXPECT_EQ(describe(from_python(eval(expression).get())), expected) << expression;
  }
  EXPECT_TRUE(from_python(nullptr).empty());
  const auto nan = Float::cast(from_python(eval("float('nan')").get()));
  EXPECT_TRUE(nan && std::isnan(nan->value()));
}

TEST_F(FromPython, LeavesAPendingExceptionAlone) {
  for (const char* expression :
       {"-1", "2**63", "1j", "2.5", "'\\ud800'", "b''", "[]", "SyntaxError('x')",
        "__import__('decimal').Decimal('1.50')", "__import__('datetime').datetime(2020, 2, 29)",
        "type('N', (), {'__int__': lambda s: 1 // 0})()"}) {
    const PyObjectPtr object = eval(expression);
    const std::string expected = describe(from_python(object.get()));
    const PyObjectPtr mine = eval("KeyError('mine')");
    PyErr_SetObject(PyExc_KeyError, mine.get());
    EXPECT_EQ(describe(from_python(object.get())), expected);
    EXPECT_EQ(take_pending().get(), mine.get()) << expression;
  }
}

TEST_F(FromPython, LeaksNothingThereAndBack) {
  for (const char* expression : {"2**40", "2.5", "'some text'", "b'bytes'", "[1]", "(1000, 'a')", "len", "int",
                                 "__import__('fractions').Fraction(7, 2)", "__import__('decimal').Decimal('1.50')",
                                 "__import__('datetime').datetime.now(__import__('datetime').timezone.utc)"}) {
    const PyObjectPtr object = eval(expression);
    const Py_ssize_t references = Py_REFCNT(object.get());
    expect_no_leak(expression, [&] { static_cast<void>(to_python_locked(from_python_locked(object.get()))); });
    EXPECT_EQ(Py_REFCNT(object.get()), references) << expression;
  }
}

}  // namespace
}  // namespace ling::cpython
