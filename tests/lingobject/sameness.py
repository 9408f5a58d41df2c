"""Equality, identity and texts of structures that lead through both worlds."""

import ling
from ling.drawing import Circle


def outcome_of(action):
    try:
        return action()
    except BaseException as failure:
        return f"{type(failure).__name__}: {failure}"


def map_of(value):
    values = ling.HashMap()
    values.set("value", value)
    return values


def list_of(part):
    made = ling.List()
    made.append(part)  # exceptions, too, which the constructor would raise
    return made


# What Python cannot order is a member, or none, all the same, and has a place in an order of lists.
for items, there, elsewhere in [([{1}, {5}], {5}, {2}), ([[1], list_of], list_of, outcome_of)]:
    found = ling.List(items)
    assert there in found and elsewhere not in found and found != ling.List(items[:1])
    assert found.indexOf(there) == 1 and not found.removeOne(elsewhere) and found == ling.List(items)
    assert found.removeOne(there) and len(found) == 1
assert map_of((list_of({1}),)) == map_of((list_of({1}),)) != map_of((list_of({2}),))
assert str(ling.compare_objects({1}, {2})) == "Equal"  # neither comes before the other
assert ling.List([{1}]) < ling.List([{1, 2}]) and not ling.List([{1}]) <= ling.List([{2}])


class Broken:
    def __eq__(self, other):
        raise KeyboardInterrupt("stop")


stopper, broken = Broken(), list_of(Broken())
for ask in (lambda: stopper in broken, lambda: broken.removeOne(stopper), lambda: broken == list_of(stopper)):
    assert outcome_of(ask) == "KeyboardInterrupt: stop", outcome_of(ask)

# A listener is taken away by asking for it again.
shape, other = Circle(1), Circle(1)
for get, foreign in [
    (lambda: shape.move, other.move),
    (lambda: stopper.__eq__, Broken().__eq__),
    (lambda: len, ord),
]:
    assert get() == get() and get() != foreign and hash(get()) == hash(get())
    listeners = ling.HashSet()
    assert listeners.insert(get()) and not listeners.insert(get()) and listeners.insert(foreign)
    assert listeners.remove(get()) and list(listeners) == [foreign]
    row = ling.List([foreign, get()])
    assert row.removeOne(get()) and list(row) == [foreign] and {get(): 1}[get()] == 1


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


class Code(Node):
    def __str__(self):
        return repr(list_of(self.part))


class Failure(Exception):
    def __str__(self):
        return str(list_of(self.args[0]))


def text_of_nested(node, failure):
    part, Leaf.shown = Leaf(failure), 0
    for _ in range(30):
        part = node(part)
    return outcome_of(lambda: str(part))


for node in (Node, Code):
    assert text_of_nested(node, None) == "[" * 30 + "leaf" + "]" * 30 and Leaf.shown == 1
    assert text_of_nested(node, ValueError("no text")) == "RuntimeError: no text" and Leaf.shown == 1
assert text_of_nested(Failure, None).endswith("[leaf" + "]" * 30) and Leaf.shown < 100, Leaf.shown


# What holds itself has a text, too, by whatever way it comes back to itself.
class Endless:
    def __str__(self):
        return str(list_of(Endless()))


class SelfMade(Exception):
    __str__ = lambda self: str(list_of(self))


class Misfit:
    def __str__(self):
        return Circle(self)  # an error that shows what does not fit


class Named:
    __call__ = lambda self: None

    def __getattr__(self, name):
        if name not in ("__name__", "__qualname__"):
            raise AttributeError(name)
        return str(list_of(self))


for node in (Endless(), SelfMade()):
    assert str(node).startswith("[") and str(list_of(Node(node))).startswith("[["), str(node)
assert str(list_of(Named())).startswith("[<")
assert outcome_of(lambda: Circle(Misfit())).count("must be Float") == 2
