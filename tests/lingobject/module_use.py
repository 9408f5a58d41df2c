"""Host modules as a Python user meets them: every way to import, to look around, to import anew."""

import importlib
import importlib.util
import inspect
import pkgutil
import pydoc
import sys
import threading

import ling
import ling.drawing
import ling.drawing as drawing
from ling import List, cpython
from ling.drawing import Circle, distance

assert drawing is ling.drawing is sys.modules["ling.drawing"] and Circle is drawing.Circle
assert List is ling.List and distance(drawing.Vector(), drawing.Vector(3, 4)) == 5

# A child that nobody has imported is an attribute all the same: the host's module.
assert "ling.cpython" not in sys.modules and cpython.evaluate_expr("1 + 2") == 3 and cpython.name == "ling.cpython"
import ling.cpython  # noqa: E402

assert inspect.ismodule(ling.cpython) and ling.cpython.evaluate == cpython.evaluate

# What is not there is missed in Python's own words.
for statement, expected in [
    ("from ling.drawing import Piano", "ImportError: cannot import name 'Piano' from 'ling.drawing' (unknown location)"),
    ("import ling.drawing.Circle", "ModuleNotFoundError: No module named 'ling.drawing.Circle'"),
    ("import ling.nothing.at_all", "ModuleNotFoundError: No module named 'ling.nothing'"),
    ("drawing.Piano", "AttributeError: module 'ling.drawing' has no attribute 'Piano'"),
]:
    try:
        exec(statement)
    except Exception as failure:
        assert f"{type(failure).__name__}: {failure}" == expected, failure
    else:
        raise AssertionError(statement)
assert not {"ling.nothing", "ling.drawing.Circle"} & {*sys.modules}

# Looking around imports nothing and changes nothing.
spec = importlib.util.find_spec("ling.drawing")
assert spec.name == "ling.drawing" and spec.submodule_search_locations == [] and spec.origin is None
assert importlib.util.find_spec("ling.nothing") is None and not [*pkgutil.iter_modules(ling.__path__)]
assert {"Circle", "distance", "__doc__"} <= {*dir(drawing)} and inspect.ismodule(drawing)
assert inspect.getdoc(drawing) == "Shapes and what to do with them."
text = pydoc.plain(pydoc.render_doc(drawing))
assert "ling.drawing - Shapes and what to do with them." in text and "Circle = <class ling.drawing.Circle>" in text
for shown in Circle, drawing.Circle(1), drawing.Circle(1).move, distance:
    assert pydoc.plain(pydoc.render_doc(shown))

# Star-imports take what has no underscore.
names = {}
exec("from ling.drawing import *", names)
assert {name for name in names if name[0] != "_"} == {name for name in vars(drawing) if name[0] != "_"} >= {"Grid", "distance"}

# A reload keeps the module, its values and what was put into it.
drawing.mine = 1
before = dict(vars(drawing))
assert importlib.reload(drawing) is drawing and {**vars(drawing), "__spec__": spec} == {**before, "__spec__": spec}

# Threads that import at once get one module, filled to the end.
for _ in range(20):
    for name in "ling.drawing", "ling":
        sys.modules.pop(name)
    seen = []
    barrier = threading.Barrier(8)

    def work():
        barrier.wait()
        module = importlib.import_module("ling.drawing")
        seen.append((module, module.distance, sys.modules["ling"].drawing is module))

    threads = [threading.Thread(target=work) for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(seen) == 8 and len({id(module) for module, _, _ in seen}) == 1 and all(linked for _, _, linked in seen)
