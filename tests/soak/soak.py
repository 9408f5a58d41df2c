"""Mixed operations of both worlds on several threads; fails when one of them does, or when memory keeps growing.

    scripts/soak [OPERATIONS [THREADS [SEED]]]

Each operation makes what it needs, checks what comes of it, and leaves nothing behind but a few shared containers, in
which the threads find, change and drop each other's objects.
"""

import ctypes
import datetime
import decimal
import gc
import random
import sys
import threading
import time
import traceback

import ling
from ling.cpython import CPythonFunction, evaluate, evaluate_expr
from ling.drawing import Circle, Drawing, DrawingError, Rectangle, Vector

shared = ling.List([0] * 64)
shared_map = ling.HashMap()


def scope(values, outs=None, self=None):
    return ling.EvaluationScope(self, None, ling.HashMap(values), None if outs is None else ling.HashMap(outs))


def fails(action, *kinds):
    try:
        action()
    except kinds or Exception as failure:
        return failure
    raise AssertionError("nothing failed")


# --- operations: each takes a source of random numbers and a number that no other has ---------------------------------


def evaluate_with_variables(r, unique):
    given = scope({"y": unique}, {"x": None, "z": "kept"})
    assert evaluate("x = y + 1\nz += '!'\nreturn [x] * 3", given)[2] == unique + 1
    assert given.outLocals["x"] == unique + 1 and given.outLocals["z"] == "kept!"


def evaluate_one_expression(r, unique):
    assert evaluate_expr("{'a': (x, str(x))}", scope({"x": unique}))["a"] == (unique, str(unique))


def evaluate_failures(r, unique):
    code = r.choice([f"\nx = = {unique}", f"raise LookupError({unique})", "return 1 // 0", f"return name_{unique}",
                     "import no_such_module", "def f(): return f()\nf()", "raise KeyError from ValueError('x')"])
    error = fails(lambda: evaluate(code, None)).ling
    assert ling.display(error) and error.stack and issubclass(error.value, Exception)


def define_classes(r, unique):
    way = r.randrange(4)
    code = f"""
class Base(Exception):
    data = 'x' * 1000
    def method(self, other: 'Base' = None): return {unique}
    label = property(lambda self: self.data)
class Made(Base): pass
Made.itself = Made
def function(one: Made, two: Base = None) -> Made: return one
if {way} == 0: raise Made('thrown')
return [None, Made, function, [Made(), Base]][{way}]"""
    if way == 0:
        assert fails(lambda: evaluate(code, None)).ling.value.__name__ == "Made"
        return
    made = evaluate(code, None)
    if way == 1:
        assert made.itself is made and ling.HashMap({"class": made})["class"] is made


def functions_of_text(r, unique):
    function = CPythonFunction(r.choice([f"lambda x, y=2: x + y + {unique}", f"def f(x, y=2): return x + y + {unique}",
                                         f"return args[0] + 2 + {unique}"]))
    assert function(1) == 3 + unique
    assert ling.display(ling.List([function, function]))


def host_containers(r, unique):
    items = [r.choice([unique, str(unique), float(unique) + 0.5, (unique, "t"), {unique}, [unique], None, b"bytes"])
             for _ in range(r.randrange(12))]
    host = ling.List(items)
    host.extend(items)
    assert len(host) == 2 * len(items) and list(host[: len(items)]) == items
    for item in items:
        assert item in host and host.indexOf(item) >= 0 and host.removeOne(item)
    assert list(host) == items and str(host) and repr(host)
    keyed = ling.HashMap({unique: items, str(unique): host})
    assert keyed[unique] is items and keyed[str(unique)] == host and unique in keyed and len(keyed) == 2
    members = ling.HashSet([unique, unique, str(unique)])
    assert len(members) == 2 and members.remove(unique)
    del host[:], keyed[unique]


def attributes(r, unique):
    shape = Circle(1 + r.random(), position=Vector(1, 2))
    setattr(shape, f"note_{unique}", unique)
    assert getattr(shape, f"note_{unique}") == unique and f"note_{unique}" in shape.__dir__
    assert not hasattr(shape, f"missing_{unique}") and ling.property_of(shape, f"missing_{unique}") is None
    fails(lambda: setattr(5 + Vector(1, 1).x + ling.List(), f"refused_{unique}", 1))
    fails(lambda: ling.insert_property_value(5, f"refused_{unique}", 1), RuntimeError)
    if r.random() < 0.5:
        delattr(shape, f"note_{unique}")


def host_objects(r, unique):
    house = Drawing(f"house {unique}", [Rectangle(r.randrange(1, 9), 4), Circle(2)])
    house.append(Circle.unit())
    house[0].scale(2, 1)
    house[0].tag("a", unique)
    assert [shape.area > 0 for shape in house] == [True] * 3 and house[0] in house
    assert (Vector(unique, 1) + Vector(y=2) - Vector(unique, 3)) == Vector() and hash(Vector(1, 2)) == hash(Vector(1, 2))
    failure = fails(lambda: Circle(-unique - 1), RuntimeError)
    assert ling.class_of(failure.ling).name == "DrawingError"
    fails(lambda: DrawingError("thrown"), RuntimeError)


def values_there_and_back(r, unique):
    moment = datetime.datetime(2020, 1, 1) + datetime.timedelta(seconds=unique % 10**9)
    for value in (moment, moment.date(), moment.time(), decimal.Decimal(unique) / 8, b"%d" % unique, "\u20ac" * 9,
                  -unique, 2.5, (1, (2, (unique,))), None, NotImplemented, object(), len, {}, iter([])):
        assert ling.List([value])[0] == value
    fails(lambda: ling.List([2**70]))


def exchange_with_others(r, unique):
    value = r.choice([lambda: [unique], lambda: Circle(2), lambda: {"a": {unique}}, lambda: (lambda: unique),
                      lambda: type("Dropped", (), {"unique": unique}), lambda: ling.List([object()]),
                      lambda: iter([unique]), lambda: ValueError(unique)])()
    place = r.randrange(len(shared))
    former = shared[place]
    shared[place] = value if not isinstance(value, BaseException) else repr(value)
    str(former)
    shared_map[place] = former
    if r.random() < 0.1:
        shared_map.clear()


def sort_and_search(r, unique):
    numbers = ling.List([r.randrange(100) for _ in range(20)])
    assert sorted(numbers) == list(evaluate("return sorted(numbers)", scope({"numbers": numbers})))
    texts = ling.List([str(r.random()) for _ in range(5)])
    assert ling.compare_objects(texts, ling.List(list(texts))).value == 0


def hostile_objects(r, unique):
    class Hostile:
        def __eq__(self, other): raise ZeroDivisionError
        def __hash__(self): return 1
        def __str__(self): raise OSError(unique)
        def __getattr__(self, name): raise AttributeError(name)
    hostile = Hostile()
    fails(lambda: ling.display(hostile))
    fails(lambda: [hostile] == ling.List([Hostile()]) or hostile in ling.List([Hostile()]))
    circle = ling.List([hostile])
    assert circle[0] is hostile
    fails(lambda: repr(circle), RuntimeError)


operations = [evaluate_with_variables, evaluate_one_expression, evaluate_failures, define_classes, functions_of_text,
              host_containers, attributes, host_objects, values_there_and_back, exchange_with_others, sort_and_search,
              hostile_objects]


# --- the run ----------------------------------------------------------------------------------------------------------


def resident_kilobytes():
    gc.collect()
    try:
        ctypes.CDLL(None).malloc_trim(0)  # what the allocator keeps for later is not growth
    except AttributeError:
        pass
    with open("/proc/self/status") as status:
        return next(int(line.split()[1]) for line in status if line.startswith("VmRSS"))


def work(thread, first, count, seed, failures):
    r = random.Random(f"{seed} {thread} {first}")
    for unique in range(first, first + count):
        operation = r.choice(operations)
        try:
            operation(r, unique)
        except BaseException:
            failures.append(f"{operation.__name__}({unique}): {traceback.format_exc()}")
            return


def main(total=1_000_000, threads=4, seed=1):
    rounds = 20
    per_thread = total // rounds // threads
    failures, measured, start = [], [], time.monotonic()
    for number in range(rounds):
        workers = [threading.Thread(target=work, args=(t, (number * threads + t) * per_thread, per_thread, seed, failures))
                   for t in range(threads)]
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
        for i in range(len(shared)):
            shared[i] = 0
        shared_map.clear()
        measured.append(resident_kilobytes())
        print(f"{(number + 1) * per_thread * threads:>9} operations  {measured[-1]:>8} KB  "
              f"{sys.getallocatedblocks():>8} blocks of Python  {time.monotonic() - start:6.0f} s", flush=True)
        if failures:
            return "\n".join(failures)
    # The first rounds fill caches; from the middle on nothing may be added but what one round leaves by chance.
    settled, end = max(measured[rounds // 4 : rounds // 2]), min(measured[-rounds // 4 :])
    if total >= 100_000 and end > settled * 1.02 + 256:
        return f"memory grows: {settled} KB in the first half, {end} KB at the end"


if __name__ == "__main__":
    sys.exit(main(*map(int, sys.argv[1:])))
