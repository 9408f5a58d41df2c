"""Code that comes again is compiled once, and nothing but the time tells."""

import builtins
import gc
import sys
import weakref

import ling
from ling.cpython import compile, evaluate, evaluate_expr

Scope = ling.EvaluationScope


def failure_of(action, *arguments):
    try:
        action(*arguments)
    except RuntimeError as failure:
        return failure
    raise AssertionError("nothing failed")


# --- what one text depends on ------------------------------------------------------------------------------------------

callers = []
for statement in ("from __future__ import annotations", "pass"):
    names = {"evaluate": evaluate}
    exec(statement + "\ndef run(code): return evaluate(code)", names)
    callers.append(names["run"])
annotated = "def f(x: nobody): pass\nreturn f.__annotations__['x']"
for later, at_once in (callers, callers):
    assert later(annotated) == "nobody"
    assert "'nobody' is not defined" in str(failure_of(at_once, annotated))

for _ in range(2):
    assert (evaluate("1"), evaluate_expr("1"), evaluate_expr(" \t1")) == (None, 1, 1)
    for name in ("x", "y"):
        out_locals = ling.HashMap({name: 0})
        assert evaluate("x = y = 7", Scope(None, None, None, out_locals)) is None
        assert out_locals[name] == 7 and len(out_locals) == 1
    error = failure_of(evaluate, "a = 1\nreturn a.nothing", Scope(None, None, None, ling.HashMap({"q": 1}))).ling
    assert error.line == 2 and "line 4, in <module>" not in error.stack and "in <module>" in error.stack, error.stack
    assert failure_of(evaluate, "\nx = = 1").ling.line == 2

# --- other functions in the places of the interpreter's own ------------------------------------------------------------

own_exec, own_eval, asked = builtins.exec, builtins.eval, []
try:
    builtins.exec = lambda source, names, locals: (asked.append(source), locals["ling_store_result"](len(names)))
    builtins.eval = lambda source, *names: asked.append(source)
    assert evaluate("return 1") > 1 and evaluate_expr(" 1") is None
    assert asked == ["def ling_outer():\n\treturn 1\nling_store_result( ling_outer() )\n", " 1"]
    del builtins.exec
    failure_of(evaluate, "return 1")
finally:
    builtins.exec, builtins.eval = own_exec, own_eval
assert evaluate("return 1") == 1

# --- what is kept ------------------------------------------------------------------------------------------------------

def code_of(text):
    return weakref.ref(evaluate("import sys\nreturn [sys._getframe().f_code]\n" + text)[0])


kept, large = code_of("# kept"), code_of("#" * 2**20)
assert kept() is code_of("# kept")() and large() is None
for number in range(600):
    evaluate_expr(str(number))
assert kept() is None

# Copying the kept names takes memory, at which a finaliser may replace them.
class Cycle:
    def __init__(self):
        self.itself = self

    def __del__(self):
        module.inlined = not module.inlined  # outdates the names, which the next evaluation makes anew
        evaluate_expr("1")


module = ling.find_module("ling.cpython")
spare = []
gc.disable()
for step in range(60):
    gc.collect()
    spare.extend({} for _ in range(300))  # none are left to be used again
    Cycle()
    gc.set_threshold(gc.get_count()[0] + step)
    gc.enable()
    length, items = evaluate_expr("(len(globals()), len(list(globals())))")
    gc.disable()
    assert length == items, step
gc.set_threshold(700)
gc.enable()
module.inlined = False

# --- code that the host keeps ------------------------------------------------------------------------------------------

run = compile("x += step\nif x > 2: raise ValueError(x)\nreturn x * 2", ("x",))
variables = ling.HashMap({"x": 0})
for step, expected in ((1, 2), (1, 4), (-1, 2)):
    assert run(Scope(None, None, ling.HashMap({"step": step}), variables)) == expected and variables["x"] == expected / 2
error = failure_of(run, Scope(None, None, ling.HashMap({"step": 9}), variables)).ling
assert (error.line, error.message, variables["x"]) == (2, "10", 1)
assert compile("return 3")() == 3
for action, arguments, message in (
    (run, (), "The code gives variables back, for which the scope has no outLocals."),
    (compile, ("x", [1]), "The names of variables must be texts, not 1."),
    (compile, ("x", 5), "5"),
    (compile, ("a\nb = = c",), "SyntaxError"),
):
    assert message in str(failure_of(action, *arguments)), (arguments, failure_of(action, *arguments))
