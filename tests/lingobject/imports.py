"""Host modules as Python modules: what is claimed, what they hold, what happens when it goes wrong."""

import importlib
import importlib.util
import sys

import ling.cpython

finder = sys.meta_path[0]
native = type(finder).find_spec.__globals__
has_module, create_module = native["_ling_has_module"], native["_ling_create_module"]

for name, claimed in [("ling", True), ("ling.cpython", True), ("ling.nothing", False), ("lingua", False), ("ling.", False),
                      ("", False), ("Ling", False), ("ling\0", False), (None, False), (b"ling", False), (["ling"], False)]:
    assert has_module(name) is claimed, name


def failure_of(call, *arguments):
    try:
        call(*arguments)
    except Exception as failure:
        return f"{type(failure).__name__}: {failure}"
    raise AssertionError(arguments)


for argument, expected in [(1, "TypeError: Ling module name must be a string."),
                           ("ling.nothing", "RuntimeError: [export_ling_module] Unable to import the module."),
                           ("os", "RuntimeError: [export_ling_module] Unable to import the module.")]:
    assert failure_of(create_module, argument) == expected
for function in has_module, create_module:
    assert failure_of(function, "\udc80").startswith("UnicodeEncodeError: 'utf-8' codec can't encode")
    assert function.__doc__ is None
assert failure_of(importlib.import_module, "lingua") == "ModuleNotFoundError: No module named 'lingua'"
assert failure_of(importlib.import_module, "ling.nothing") == "ModuleNotFoundError: No module named 'ling.nothing'"

# Packages, made once, and made anew only when they were forgotten.
assert ling.__spec__.loader is finder and ling.__path__ == [] and ling.cpython.__package__ == "ling.cpython"
assert ling is sys.modules["ling"] and ling.cpython is sys.modules["ling.cpython"]
assert importlib.import_module("ling.cpython") is ling.cpython
former = sys.modules.pop("ling.cpython")
again = importlib.import_module("ling.cpython")
assert again is not former and again.evaluate == former.evaluate
assert create_module("ling").__doc__ == ling.__doc__

# What they hold: callables, classes and properties of the module itself, as values.
assert type(ling.List).__name__ == "ling~ling`Class" and type(ling.object_id).__name__ == ">LingObject"
assert ling.List.__module__ == ling.object_id.__module__ == "ling"
assert not any(name.startswith("@") for name in vars(ling)) and "importance" not in vars(ling)
ling.mine = 1  # a Python module like any other
assert ling.mine == 1 and not hasattr(create_module("ling"), "mine")
