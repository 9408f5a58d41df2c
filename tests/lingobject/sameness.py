"""Equality, identity and texts of structures that lead through both worlds."""

import ling
import ling.drawing as drawing


def outcome_of(action):
    try:
        return action()
    except BaseException as failure:
        return f"{type(failure).__name__}: {failure}"


# What contains the objects goes by Python's `==`; what Python cannot order is a member, or none, all the same.
thing = object()
for items, there, elsewhere in [([{1}, {5}], {5}, {2}), ([object(), thing], thing, object()), ([object(), [1]], [1], [2])]:
    found, first = ling.List(items), ling.List(items)
    assert there in found and elsewhere not in found
    assert found.indexOf(there) == 1 and found.indexOf(elsewhere) == -1
    assert not found.removeOne(elsewhere) and found == first
    assert found.removeOne(there) and found != first and len(found) == 1


class Broken:
    def __eq__(self, other):
        raise self.failure


for failure in (ValueError("no comparison"), KeyboardInterrupt("stop")):
    Broken.failure = failure
    broken = ling.List([Broken()])
    for ask in (
        lambda: Broken() in broken,
        lambda: broken.indexOf(Broken()),
        lambda: broken.removeOne(Broken()),
        lambda: broken == ling.List([Broken()]),
    ):
        assert outcome_of(ask).endswith(f": {failure}"), outcome_of(ask)


def wrap(value):
    values = ling.HashMap()
    values.set("value", value)
    return values


for build in (lambda item: ling.List([item]), wrap, lambda item: ling.List([ling.List([item])]), lambda item: wrap((item,))):
    assert build({1}) == build({1}) and not build({1}) != build({1})
    assert build({1}) != build({2}) and build(thing) != build(object())
    assert build(thing) == build(thing)
assert ling.equal_objects({1}, {1}) and not ling.equal_objects({1}, {2})
assert str(ling.compare_objects({1}, {2})) == "Equal"  # neither comes before the other
assert ling.List([{1}]) < ling.List([{1, 2}]) and not ling.List([{1}]) <= ling.List([{2}])
numbers = ling.List([[3], [1], [2]])
numbers.sort()
assert list(numbers) == [[1], [2], [3]]

# A listener is taken away by asking for it again.
shape, other = drawing.Circle(1), drawing.Circle(1)


class Listener:
    def hear(self):
        pass


listener = Listener()
for get, foreign in [
    (lambda: shape.move, other.move),
    (lambda: shape.scale, other.scale),
    (lambda: listener.hear, Listener().hear),
    (lambda: len, ord),
]:
    assert get() == get() and get() != foreign and hash(get()) == hash(get())
    listeners, names = ling.HashSet(), wrap(0)
    assert listeners.insert(get()) and not listeners.insert(get()) and listeners.insert(foreign)
    assert listeners.remove(get()) and list(listeners) == [foreign]
    names.set(get(), "listener")
    assert names.get(get()) == "listener" and foreign not in names
    row = ling.List([foreign, get()])
    assert row.removeOne(get()) and list(row) == [foreign] and {get(): 1}[get()] == 1

# The text of each part is asked for once, whether it can be told or not.
shown = 0


class Leaf:
    def __init__(self, failure):
        self.failure = failure

    def __str__(self):
        global shown
        shown += 1
        if self.failure:
            raise self.failure
        return "leaf"


def list_of(part):
    made = ling.List()
    made.append(part)  # exceptions, too, which the constructor would raise
    return made


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


for node in (Node, Code):
    for failure in (None, ValueError("no text")):
        part = Leaf(failure)
        for _ in range(30):
            part = node(part)
        shown = 0
        text = outcome_of(lambda: str(part))
        assert shown == 1, shown
        assert text == ("RuntimeError: no text" if failure else "[" * 30 + "leaf" + "]" * 30), text
part = Leaf(None)
for _ in range(30):
    part = Failure(part)
shown = 0
assert str(part).endswith("[leaf" + "]" * 30) and shown < 100, shown

# What holds itself has a text, too, by whatever way it comes back to itself.
class Circle:
    def __str__(self):
        return str(list_of(self))


class Endless:
    def __str__(self):
        return str(list_of(Endless()))


class SelfMade(Exception):
    __str__ = lambda self: str(list_of(self))


class Misfit:
    def __str__(self):
        return drawing.Circle(self)  # an error that shows what does not fit


class Named:
    __call__ = lambda self: None

    def __getattr__(self, name):
        if name not in ("__name__", "__qualname__"):
            raise AttributeError(name)
        return str(list_of(self))


for node in (Circle(), Endless(), SelfMade()):
    assert str(node).startswith("[") and str(list_of(Node(node))).startswith("[["), str(node)
assert str(list_of(Named())).startswith("[<")
assert outcome_of(lambda: drawing.Circle(Misfit())).count("must be Float") == 2

# A value that is computed later has the attributes of what it turns out to be.
house = drawing.Drawing("house", [drawing.Circle(1, drawing.Vector(2, 4)), drawing.Rectangle(1, 1, drawing.Vector(4, 8))])
assert (house.center.x, house.center.y) == (3, 6) and house.center + drawing.Vector(1, 1) == drawing.Vector(4, 7)
assert house.center == drawing.Vector(3, 6) and {house.center: "here"}[drawing.Vector(3, 6)] == "here"
assert outcome_of(lambda: drawing.Drawing("empty").center.x) == "DrawingError: An empty drawing has no center."
