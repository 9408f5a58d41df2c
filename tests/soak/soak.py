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
import traceback

import ling
from ling.cpython import CPythonFunction, evaluate
from ling.drawing import Circle, Drawing, Vector

shared = ling.List([0] * 64)
shared_map = ling.HashMap()


def fails(action):
    try:
        action()
    except Exception as failure:
        return failure
    raise AssertionError("nothing failed")


# --- operations: each takes a source of random numbers and a number that no other has ---------------------------------


def evaluations(r, unique):
    given = ling.EvaluationScope(None, None, {"y": unique}, ling.HashMap({"x": None, "z": "kept"}))
    assert evaluate("x = y + 1\nz += '!'\nreturn [x] * 3", given)[2] == unique + 1
    assert given.outLocals["x"] == unique + 1 and given.outLocals["z"] == "kept!"
    function = CPythonFunction(f"lambda x, y=2: x + y + {unique}")
    assert function(1) == 3 + unique and ling.display(ling.List([function]))


def failures_of_evaluations(r, unique):
    code = r.choice([f"\nx = = {unique}", f"raise LookupError({unique})", "import no_such_module",
                     "def f(): return f()\nf()", "raise KeyError from ValueError('x')"])
    error = fails(lambda: evaluate(code)).ling
    assert ling.display(error) and error.stack and issubclass(error.value, Exception)


def classes_of_scripts(r, unique):
    code = f"""
class Made(Exception):
    data = 'x' * 1000
    def method(self, other: 'Made' = None): return {unique}
    label = property(lambda self: self.data)
Made.itself = Made
def function(one: Made) -> Made: return one
"""
    assert fails(lambda: evaluate(code + "raise Made('thrown')")).ling.value.__name__ == "Made"
    made = evaluate(code + r.choice(["return Made", "return [Made(), function]"]))
    if type(made) is type:
        assert made.itself is made and ling.HashMap({"class": made})["class"] is made


def containers(r, unique):
    items = [r.choice([unique, str(unique), float(unique) + 0.5, (unique, "t"), {unique}, [unique], None, b"bytes"])
             for _ in range(r.randrange(12))]
    host = ling.List(items)
    host.extend(items)
    assert list(host[: len(items)]) == items and all(host.removeOne(item) for item in items)
    assert list(host) == items and str(host) and repr(host)
    keyed = ling.HashMap({unique: items})
    assert keyed[unique] is items and ling.HashSet([unique, str(unique)]).remove(unique)
    moment = datetime.datetime(2020, 1, 1) + datetime.timedelta(seconds=unique % 10**9)
    for value in (moment, moment.date(), moment.time(), decimal.Decimal(unique) / 8, object(), len, {}, iter([])):
        assert ling.List([value])[0] == value


def host_objects(r, unique):
    house = Drawing(f"house {unique}", [Circle(1 + r.random())])
    house[0].scale(2, 1)
    house[0].tag("a", unique)
    setattr(house[0], f"note_{unique}", unique)
    assert getattr(house[0], f"note_{unique}") == unique and not hasattr(house[0], f"missing_{unique}")
    assert Vector(unique, 1) - Vector(unique, 1) == Vector() and hash(Vector(1, 2)) == hash(Vector(1, 2))
    assert ling.class_of(fails(lambda: Circle(-unique - 1)).ling).name == "DrawingError"


def exchanges_with_other_threads(r, unique):
    place = r.randrange(len(shared))
    former = shared[place]
    shared[place] = r.choice([lambda: [unique], lambda: Circle(2), lambda: {"a": {unique}}, lambda: (lambda: unique),
                              lambda: type("Dropped", (), {"unique": unique}), lambda: ling.List([object()])])()
    str(former)
    shared_map[place] = former


operations = [evaluations, failures_of_evaluations, classes_of_scripts, containers, host_objects,
              exchanges_with_other_threads]


# --- the run ----------------------------------------------------------------------------------------------------------


def resident_kilobytes():
    gc.collect()
    ctypes.CDLL(None).malloc_trim(0)  # what the allocator keeps for later is not growth
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
    failures, measured = [], []
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
        print(f"{(number + 1) * per_thread * threads:>9} operations  {measured[-1]:>8} KB", flush=True)
        if failures:
            return "\n".join(failures)
    # The first rounds fill caches; from the middle on nothing may be added but what one round leaves by chance.
    settled, end = max(measured[rounds // 4 : rounds // 2]), min(measured[-rounds // 4 :])
    if total >= 100_000 and end > settled * 1.02 + 256:
        return f"memory grows: {settled} KB in the first half, {end} KB at the end"


if __name__ == "__main__":
    sys.exit(main(*map(int, sys.argv[1:])))
