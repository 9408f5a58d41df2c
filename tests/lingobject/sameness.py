"""Equality, identity and texts of structures that lead through both worlds."""

import ling
from ling.drawing import Circle


def list_of(part):
    made = ling.List()
    made.append(part)  # exceptions, too, which the constructor would raise
    return made


# What Python cannot order is a member, or none, all the same, and has a place in an order of lists.
found = ling.List([{1}, {5}])
assert {2} not in found and not found.removeOne({2}) and found.removeOne({5}) and len(found) == 1
assert ling.List([{1}]) < ling.List([{1, 2}]) and not ling.List([{1}]) <= ling.List([{2}])


class Broken:
    def __eq__(self, other):
        raise KeyboardInterrupt("stop")


class Unreadable:
    def __iter__(self):
        raise KeyboardInterrupt("stop")


stopper, broken, unreadable = Broken(), list_of(Broken()), Unreadable()
for ask in (
    lambda: stopper in broken,
    lambda: broken.removeOne(stopper),
    lambda: broken == list_of(stopper),
    lambda: broken == unreadable,
    lambda: broken < unreadable,
):
    try:
        raise AssertionError(ask())
    except KeyboardInterrupt:
        pass

# A listener is taken away by asking for it again.
shape = Circle(1)
for get, foreign in [(lambda: shape.move, Circle(1).move), (lambda: stopper.__eq__, Broken().__eq__)]:
    listeners = ling.HashSet([foreign, get()])
    assert {get(): 1}[get()] == 1 and listeners.remove(get()) and list(listeners) == [foreign]


# The text of each part is asked for once, whether it can be told or not.
class Leaf:
    shown = 0

    def __init__(self, failure):
        self.failure = failure

    def __str__(self):
        Leaf.shown += 1
        if self.failure:
            raise self.failure
        return "leaf"


class Node:
    def __init__(self, part):
        self.part = part

    def __str__(self):
        return str(list_of(self.part))


def text_of_nested(failure):
    part, Leaf.shown = Leaf(failure), 0
    for _ in range(30):
        part = Node(part)
    try:
        return str(part)
    except RuntimeError as failed:
        return str(failed)


assert text_of_nested(None) == "[" * 30 + "leaf" + "]" * 30 and Leaf.shown == 1
assert text_of_nested(ValueError("no text")) == "no text" and Leaf.shown == 1


# What holds itself has a text, too, by whatever way it comes back to itself.
class Endless:
    def __str__(self):
        return str(list_of(Endless()))


class Named:
    __call__ = lambda self: None

    def __getattr__(self, name):
        if name not in ("__name__", "__qualname__"):
            raise AttributeError(name)
        return str(list_of(self))


assert str(Endless()).startswith("[") and str(list_of(Node(Endless()))).startswith("[[")
assert str(list_of(Named())).startswith("[<")
