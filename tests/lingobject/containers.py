"""The host's own containers as wrappers: help, iteration, deep structures, threads."""

import copy
import inspect
import pydoc
import threading

import ling

numbers = ling.List()
for number in range(3):
    numbers.append(number)

# What introspection shows, of the object and of its type.
assert type(numbers).__name__ == "ling~ling`List" and type(numbers).__mro__[1].__name__ == ">LingObject"
assert {"append", "elementsType"} <= {*dir(numbers)} & {*dir(type(numbers))} & {*numbers.__dir__}
assert inspect.getdoc(numbers) == numbers.__doc__ == ling.List.__doc__.split("\n\n")[-1]
assert numbers.append.__doc__.startswith(numbers.append.__text_signature__ + "\n\n")
for shown in numbers, type(numbers), numbers.append, ling.List, ling:
    assert pydoc.plain(pydoc.render_doc(shown))

# Iterators are independent of each other and of changes, and end for good.
first, second = iter(numbers), iter(numbers)
numbers.append(10)
assert next(first) == 0 and [*first] == [1, 2] and [*second] == [0, 1, 2] and [*first] == []

# Equal in content, different in identity; never a TypeError.
twin = copy.deepcopy(numbers)
assert twin == numbers and not twin != numbers and hash(twin) != hash(numbers)
assert not any((twin < "x", twin <= "x", twin > "x", twin >= "x", twin == "x")) and twin != "x"

# A host list in a Python list in a host list: dropped however deep, shown and compared in a circle.
deep = ling.List()
for _ in range(100_000):
    outer = ling.List()
    outer.append([deep])
    deep = outer
del deep, outer
circle = ling.List()
circle.append([circle])
assert "..." in repr(circle) and "..." in str(circle) and circle == circle and circle != numbers
circle.clear()


def on_eight_threads(work):
    failures = []
    barrier = threading.Barrier(8)

    def run(index):
        barrier.wait()
        try:
            work(index)
        except BaseException as failure:
            failures.append(failure)

    threads = [threading.Thread(target=run, args=(index,)) for index in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not failures, failures


# Eight threads use the same wrappers, and drop what others made.
shared = ling.List()
record = ling.LogRecord(20, "shared")
made = [[] for _ in range(8)]


def use(index):
    for i in range(500):
        shared.append((index, i))
        setattr(record, f"note{index}", i)
        assert getattr(record, f"note{index}") == i and record.message == "shared"
        made[index].append(shared.append)


on_eight_threads(use)
assert sorted(shared) == [(index, i) for index in range(8) for i in range(500)]
on_eight_threads(lambda index: made[7 - index].clear())
