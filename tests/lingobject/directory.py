"""What `dir` lists: the members of host objects, of callables, of classes, and what interfaces expect."""

import re

import ling
from ling.drawing import Circle, Drawing, Vector

circle = Circle(2.5)
circle.own = 1

# Each value lists what it lists under `__dir__`, as far as it can be read, and what any Python object has.
values = {
    "an object": circle,
    "a list": ling.List([1]),
    "a map": ling.HashMap(),
    "a module": ling.find_module("ling.drawing"),
    "a function": ling.get_logger,
    "a bound method": circle.move,
    "a class": Circle,
    "an interface": ling.I_Map,
    "a lazy value": Drawing("house", [circle]).center,
}
for what, value in values.items():
    listed = dir(value)
    assert listed == sorted(set(listed)), what
    assert set(dir(object())) <= set(listed), what
    missing = {name for name in value.__dir__ if not name.startswith("_")} - set(listed)
    assert not missing, (what, missing)
    assert "__dir__" not in vars(type(value)) or type(value).__name__ == ">LingObject", what

assert "own" in dir(circle) and "own" not in dir(Circle(1)) and {"radius", "move"} <= set(dir(circle))
assert {"signature", "name"} <= set(dir(circle.move)) & set(dir(ling.get_logger))
assert isinstance(circle.__dir__, list), "what it was for whoever asks for it by name"

# Whatever is listed of an object can be read.
for value in (circle, Vector(1, 2), ling.List([1]), circle.move):
    unreadable = [name for name in dir(value) if not name.startswith("_") and not hasattr(value, name)]
    assert not unreadable, unreadable

# A class lists what it offers through its name, an interface all that its documentation speaks of.
assert {"parents", "name"} <= set(dir(Circle)) and {"radius", "move"} <= set(dir(Circle))
assert "append" in dir(ling.List) and "append" not in dir(ling.HashMap)
interfaces = [value for name, value in vars(ling).items() if name.startswith("I_")]
assert len(interfaces) > 15
for interface in interfaces:
    named = {*re.findall(r"(\w+)\(", interface.doc), *re.findall(r"Property: (\w+)", interface.doc)}
    for row in re.findall(r"Properties: ([\w, ]+)", interface.doc):
        named.update(re.findall(r"\w+", row))
    for of in (interface, *interface.parents):
        assert named <= set(dir(interface)), (interface.name, named - set(dir(interface)))
        assert set(dir(of)) <= set(dir(interface)), (interface.name, of.name)

# What is only expected is not there.
for name in ("get", "keys", "__length__"):
    assert name in dir(ling.I_Map) and not hasattr(ling.I_Map, name), name
