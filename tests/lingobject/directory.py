"""What `dir` lists: the members of host objects, of callables, of classes, and what interfaces expect."""

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

# A class lists what it offers through its name, an interface all that its documentation speaks of.
assert {"parents", "name", "radius", "move"} <= set(dir(Circle))
# What is only expected is not there.
assert "get" in dir(ling.I_Map) and not hasattr(ling.I_Map, "get")
