// Rows of Python code about a wrapped value, and what comes of them.
#pragma once

#include "bridge/python.h"

namespace ling::cpython {

// Each row is `code => outcome`: the `repr` of an expression, or of what statements leave in `result`; "Type: text" of
// an exception. The code calls the wrapper `w` and its type `t`. The interpreter itself objects to a slot that fails
// without an exception; the look behind each row finds the one that a slot left behind a success.
inline void expect_outcomes(const Any& value, const char* rows) {
  const PyObjectPtr evaluate = run(R"(
import builtins, ctypes
def result(w, rows):
  wrong = []
  for row in rows.strip().splitlines():
    code, expected = (part.strip() for part in row.split(' => '))
    names = {'w': w, 't': type(w), '__builtins__': builtins}
    try:
      try:
        outcome = repr(eval(code, names))
      except SyntaxError:
        exec(code, names)
        outcome = repr(names.get('result'))
      ctypes.pythonapi.PyErr_Occurred()  # ctypes raises what it finds
    except BaseException as e:
      outcome = f'{type(e).__name__}: {e}'.replace('\0', '<zero>').strip()
    if outcome != expected:
      wrong.append(f'{code}\n  gives {outcome}\n  not   {expected}')
  return '\n'.join(wrong))");
  const PyObjectPtr wrapper = to_python(value);
  const PyObjectPtr wrong(PyObject_CallFunction(evaluate.get(), "Os", wrapper.get(), rows));
  const PyObjectPtr text(wrong ? PyUnicode_AsUTF8String(wrong.get()) : nullptr);
  EXPECT_STREQ(text ? PyBytes_AsString(text.get()) : "not evaluated", "");
}

}  // namespace ling::cpython
