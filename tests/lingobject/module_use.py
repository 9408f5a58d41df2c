"""Host modules as a Python user meets them: every way to import, to look around, to import anew."""

import importlib
import importlib.util
import pydoc
import sys

import ling
import ling.drawing
import ling.drawing as drawing
from ling import List, cpython
from ling.drawing import Circle

assert drawing is ling.drawing is sys.modules["ling.drawing"] and Circle is drawing.Circle and List is ling.List

# A child that nobody has imported is an attribute all the same: the host's module.
assert "ling.cpython" not in sys.modules and cpython.evaluate_expr("1 + 2") == 3 and cpython.name == "ling.cpython"

# What the importer claims, and what it says when it cannot make a module.
finder = sys.meta_path[0]
native = type(finder).find_spec.__globals__
has_module, create_module = native["_ling_has_module"], native["_ling_create_module"]
assert has_module("ling") is has_module("ling.cpython") is True
assert not any(map(has_module, ("ling.nothing", "lingua", "ling.", "", "ling\0", b"ling")))

unable = "RuntimeError: [export_ling_module] Unable to import the module."
surrogate = "UnicodeEncodeError: 'utf-8' codec can't encode character '\\udc80' in position 0: surrogates not allowed"
for statement, expected in [
    ("import ling.drawing.Circle", "ModuleNotFoundError: No module named 'ling.drawing.Circle'"),
    ("create_module(1)", "TypeError: Ling module name must be a string."),
    ("create_module('ling.nothing')", unable),
    ("create_module('\\udc80')", surrogate),
]:
    try:
        exec(statement)
    except Exception as failure:
        assert f"{type(failure).__name__}: {failure}" == expected, failure
    else:
        raise AssertionError(statement)

# Looking around imports nothing and changes nothing.
spec = importlib.util.find_spec("ling.drawing")
assert spec.submodule_search_locations == [] and spec.origin is None and spec.loader is finder and ling.__path__ == []
assert importlib.util.find_spec("ling.nothing") is None
for shown in Circle, Circle(1).move, type(List()), ling:
    assert pydoc.plain(pydoc.render_doc(shown))

# A reload keeps the module, its values and what was put into it; one that was forgotten is made anew.
drawing.mine = 1
before = dict(vars(drawing))
assert importlib.reload(drawing) is drawing and {**vars(drawing), "__spec__": spec} == {**before, "__spec__": spec}
former = sys.modules.pop("ling.drawing")
again = importlib.import_module("ling.drawing")
assert again is not former and again.distance == former.distance and not hasattr(again, "mine")
