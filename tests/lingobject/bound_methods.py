"""A method that was read from a wrapper is made into a value only when somebody asks for one; nobody can tell."""

import copy
import inspect
import operator
import pickle
import sys
import weakref

import ling
from ling.drawing import Circle

shape, other = Circle(1), Circle(2)


def read():
    return shape.move


def made():
    return ling.List([shape.move])[0]


def outcome(ask, method):
    try:
        return ask(method)
    except Exception as e:
        return type(e), str(e)


# Each asks a method that has just been read, so that every way of asking is the first one.
ASKS = [
    *(type, repr, str, hash, callable, dir, sys.getsizeof, inspect.signature, iter, next, len, bool, abs),
    *(copy.copy, copy.deepcopy, pickle.dumps, weakref.ref, operator.neg, operator.invert, ling.qualname),
    *(lambda m, name=name: getattr(m, name) for name in (
        "__doc__", "__name__", "__module__", "__text_signature__", "__annotations__", "__code__", "__bytes__", "__dict__",
        "__bool__", "__self__", "__func__", "name", "doc", "nothing")),
    *(lambda m, name=name: getattr(operator, name)(m, 1) for name in (
        "add", "sub", "mul", "truediv", "and_", "or_", "xor", "iadd", "isub", "getitem", "contains", "lt", "ge", "eq")),
    lambda m: operator.setitem(m, 0, 1), lambda m: operator.delitem(m, 0), lambda m: setattr(m, "x", 1),
    lambda m: delattr(m, "x"), lambda m: 1 + m, lambda m: m == read(), lambda m: m == made(), lambda m: m != other.move,
    lambda m: read() == m, lambda m: m is m, lambda m: m is read(), lambda m: f"{m!r:>50}", lambda m: {m: 1}[read()],
    lambda m: ling.List([m, m])[1] == m, lambda m: ling.HashSet([m, read(), made()]), lambda m: ling.class_of(m).name,
    lambda m: isinstance(m, type(shape)), lambda m: type(m).__basicsize__, lambda m: ling.Tuple([m])[0] == m,
    lambda m: m(0), lambda m: m(0, 0), lambda m: m(0, y=0), lambda m: m(x=0), lambda m: m(y=0, x=0), lambda m: m(*[0]),
    lambda m: m(**{"x": 0}), lambda m: m(), lambda m: m(0, 0, 0), lambda m: m(0, x=0), lambda m: m(0, z=0),
    lambda m: m(y=0), lambda m: m("x"), lambda m: m(2**70), lambda m: m(0, y=2**70), lambda m: m(2**70, z="x"),
    lambda m: m(**{1: 2}), lambda m: m(0, **{"\ud800": 2}), lambda m: m(m), lambda m: m(x=m), lambda m: m(*range(20)),
    lambda m: m(OSError("x")), lambda m: m.__doc__ and m(0),
]  # fmt: skip
for i, ask in enumerate(ASKS):
    expected = outcome(ask, made())
    assert outcome(ask, read()) == expected, (i, outcome(ask, read()), expected)
assert type(read()) is type(made()) and shape.position == Circle(1).position

# Having become a value, it is the same value from then on, and works as before.
method = shape.move
values = ling.List([method, method])
assert ling.object_id(values[0]) == ling.object_id(values[1]) == ling.object_id(method)
method(0, 0)
values[1](0, y=0)

# The arguments are converted in their order, the positional ones to the end, even when one of them does not fit.
seen = []


class Odd:
    def __init__(self, name, result):
        self.name, self.result = name, result

    def __int__(self):
        seen.append(self.name)
        return self.result


for call in shape.move, made(), lambda *a, **k: ling.List([shape.move])[0](*a, **k):
    for arguments, keywords, error, told in [
        ((Odd("a", 0),), {"y": Odd("b", 0)}, None, ["a", "b"]),
        ((Odd("a", 2**70), Odd("b", 2**70)), {"y": Odd("c", 0)}, RuntimeError, ["a", "b"]),
        ((Odd("a", 0),), {"z": Odd("b", 2**70), "y": Odd("c", 0)}, RuntimeError, ["a", "b"]),
        ((Odd("a", 0),), {"z": Odd("b", 0), "y": Odd("c", 0)}, None, ["a", "b", "c"]),
    ]:
        seen.clear()
        try:
            call(*arguments, **keywords)
        except Exception as e:
            assert error is None or type(e) is error, e
        assert seen == told, (seen, told)


# --- names under which there is nothing ------------------------------------------------------------------------------


class Name(str):
    pass


def missing(value, name):
    try:
        getattr(value, name)
    except AttributeError as e:
        assert not hasattr(value, name) and getattr(value, name, 7) == 7
        return str(e), e
    raise AssertionError(f"{value} has {name}")


for name in "nothing", "", "ä", "a\0b", "\0", "x" * 1000, Name("x"), "{}", "area2", "append", "日本":
    for value, owner in [(shape, "ling.drawing.Circle"), (ling.List(), "ling.List"), (Circle, "ling.Class")]:
        if value is shape or name != "append":
            (text, first), (again, second) = missing(value, name), missing(value, name)
            shown = str(name)
            assert text == again and first is not second, (text, again)
            assert text.endswith(f" object has no attribute '{shown}'"), text
            assert value is not shape or text == f"'{owner}' object has no attribute '{shown}'", text
for name in "\ud800", "a\udcff":
    try:
        raise AssertionError(hasattr(shape, name))
    except UnicodeEncodeError:
        pass

# What is known of a name does not outlive it, and no text is kept for its own sake.
late = "late_" + str(id(shape))
assert not hasattr(shape, late) and not hasattr(other, late)
setattr(shape, late, 1)
assert getattr(shape, late) == 1 and not hasattr(other, late) and missing(other, late)
delattr(shape, late)
assert missing(shape, late)
long_name = "long" * 1000
count = sys.getrefcount(long_name)
assert missing(shape, long_name) and not hasattr(shape, "_" + long_name)
assert sys.getrefcount(long_name) == count


# --- callers that let go of what they call ----------------------------------------------------------------------------

import functools


class Dropping:
    def __init__(self, call):
        self.call = call

    def __int__(self):
        self.call.__setstate__((print, (), {}, None))  # the method and its receiver had their last reference there
        return 1


for make in (lambda: ling.List([5, 6]).at, lambda: ling.HashMap({1: 5}).get):
    partial = functools.partial(make())
    assert partial(Dropping(partial)) in (5, 6)
