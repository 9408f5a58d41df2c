"""The host's own containers as wrappers: iteration, deep structures, threads."""

import threading
from concurrent.futures import ThreadPoolExecutor

import ling

numbers = ling.List(range(3))

# A host list in a Python list in a host list: dropped however deep, shown and compared in a circle.
deep = ling.List()
for _ in range(100_000):
    deep = ling.List([[deep]])
del deep
circle = ling.List()
circle.append([circle])
assert "..." in repr(circle) and "..." in str(circle) and circle == circle and circle != numbers
circle.clear()

# Eight threads use the same wrappers, and drop what others made.
shared, made, barrier = ling.List(), [[] for _ in range(8)], threading.Barrier(8)
record = ling.LogRecord(20, "shared")


def use(index):
    barrier.wait()
    for i in range(500):
        shared.append((index, i))
        setattr(record, f"note{index}", i)
        assert getattr(record, f"note{index}") == i and record.message == "shared"
        made[index].append(shared.append)
    barrier.wait()
    made[7 - index].clear()


with ThreadPoolExecutor(8) as pool:
    assert [*pool.map(use, range(8))] == [None] * 8
assert sorted(shared) == [(index, i) for index in range(8) for i in range(500)]
