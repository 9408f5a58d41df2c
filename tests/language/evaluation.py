"""The evaluation functions as a script sees them."""

import ling
import ling.cpython
from ling.cpython import evaluate, evaluate_expr

assert evaluate("return 1 + 2") == 3
assert evaluate("x = 1") is None
assert evaluate_expr("[1, 2, 3]") == [1, 2, 3]
assert ling.cpython.doc == "Interface to Python language."

# A scope built by a script: variables go in, those of outLocals come back.
local_variables, out_locals = ling.HashMap(), ling.HashMap()
local_variables.set("numbers", [1, 2, 3])
out_locals.set("total", 0)
scope = ling.EvaluationScope("me", None, local_variables, out_locals)
assert evaluate("for n in numbers: total += n\nreturn self", scope) == "me"
assert out_locals.get("total") == 6
assert evaluate_expr("len(numbers)", scope) == 3

# A failure inside arrives as an exception whose error says where.
try:
    evaluate("x = 1\nreturn x +* 2", scope)
except RuntimeError as failure:
    assert failure.ling.line == 2, failure.ling.line
    assert failure.ling.column == 11, failure.ling.column
else:
    raise AssertionError("a syntax error went unnoticed")

for bad in [(), (1,), ("x", None, 3)]:
    try:
        evaluate(*bad)
    except RuntimeError:
        pass
    else:
        raise AssertionError(bad)
