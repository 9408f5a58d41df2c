"""What `dir` lists: the members of host objects, of callables, of classes, and what interfaces expect."""

import re

import ling
from ling.drawing import Circle, Drawing

circle = Circle(2.5)
circle.own = 1

# Each value lists what it lists under `__dir__`, as far as it can be read, and what any Python object has.
for value in circle, ling.List([1]), circle.move, Circle, Drawing("house", [circle]).center:
    listed = dir(value)
    assert listed == sorted(set(listed)) and set(dir(object())) <= set(listed), value
    assert {name for name in value.__dir__ if not name.startswith("_")} <= set(listed), value
assert "own" in dir(circle) and "own" not in dir(Circle(1)) and {"radius", "move"} <= set(dir(circle))
assert {"signature", "name"} <= set(dir(circle.move)) and isinstance(circle.__dir__, list)

# A class lists what it offers through its name, an interface all that its documentation speaks of.
assert {"parents", "name", "radius", "move"} <= set(dir(Circle))
assert "append" in dir(ling.List) and "append" not in dir(ling.HashMap)
for interface in [value for name, value in vars(ling).items() if name.startswith("I_")]:
    named = {*re.findall(r"(\w+)\(", interface.doc), *re.findall(r"Property: (\w+)", interface.doc)}
    for row in re.findall(r"Properties: ([\w, ]+)", interface.doc):
        named.update(re.findall(r"\w+", row))
    assert named <= set(dir(interface)), (interface.name, named - set(dir(interface)))
    for parent in interface.parents:
        assert set(dir(parent)) <= set(dir(interface)), (interface.name, parent.name)

# What is only expected is not there.
assert "get" in dir(ling.I_Map) and not hasattr(ling.I_Map, "get")
