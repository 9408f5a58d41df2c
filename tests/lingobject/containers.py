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

# Whatever Python makes of a key, the host's map finds what it was given, like a dict of the values that keys become.


class Text(str):
    """Its hash and its equality count for Python alone: the host gets the text."""

    def __hash__(self):
        return 1

    def __eq__(self, other):
        return False


class Number(int):
    pass


def fails(function, words):
    try:
        function()
    except RuntimeError as failure:
        assert words in str(failure), failure
    else:
        raise AssertionError(words)


texts = ["", "a", "\0", "a\0", "\0a", "é", "éé", "€", "😀", "b" * 1000, "é" * 1000, "0", "1", "5", "None", "True"]
others = [0, 1, -1, 5, 255, 257, 1 << 31, -(1 << 63), (1 << 63) - 1, True, False, None, 0.5, b"a", b"", (1 << 53) + 1]
mapping, count = ling.HashMap(), len(texts) + len(others)
for growth in 0, 40, 4000:  # the table is made anew in between
    for i in range(growth):
        mapping[f"grown {i}"] = mapping[1000 + i] = i
    for value, key in enumerate(texts + others):
        mapping[key] = value
        for same in [Text(key), Text(key)] if isinstance(key, str) else [Number(key)] if type(key) is int else [key]:
            assert mapping[same] == mapping[key] == mapping.get(key) == value and same in mapping and key in mapping, key
            mapping[same] = value
    for i in range(growth):
        del mapping[f"grown {i}"], mapping[1000 + i]
    for missing in "b" * 999, "é" * 999, "A", "a\0\0", 2, 1 << 40, 0.25, "grown 1", 1001:
        assert missing not in mapping and mapping.get(missing, missing) == missing
        fails(lambda: mapping[missing], f"Key not found: {missing}.")
assert len(mapping) == count
assert list(mapping)[: len(texts)] == texts, "in the order in which they came"

# Numbers without a fraction are one key; texts that cannot be encoded are the empty one; ints beyond the host's fail.
assert mapping[1.0] == mapping[1] != mapping[True] and mapping[-0.0] == mapping[0] and float("nan") not in mapping
assert mapping["\ud800"] == mapping["a\udfff"] == mapping[""] and "\ud800" in mapping
mapping["\udc80"] = "empty"
assert mapping[""] == "empty" and len(mapping) == count
for large in 1 << 63, 1 << 64, -(1 << 63) - 1:
    for use in lambda: mapping[large], lambda: large in mapping, lambda: mapping.__setitem__(large, 1):
        fails(use, "int too big to convert")
fails(lambda: mapping.__setitem__("a", 1 << 64), "int too big to convert")
unique = ling.HashSet()
for key in texts + others:
    assert unique.insert(key) and not unique.insert(key) and key in unique
assert "A" not in unique and 2 not in unique and "\ud800" in unique and 1.0 in unique

# Eight threads look for what stays while others come and go, and what replaced values held may use the map.


class Meddler:
    def __del__(self):
        mapping["meddled"] = mapping["a"]


def look(index):
    barrier.wait()
    for i in range(300):
        if index % 2:
            mapping[f"text {i}"] = mapping[10_000 + i] = Meddler()
            mapping[f"text {i}"] = None
            mapping.remove(10_000 + i) if index == 1 else None
        else:
            assert mapping["€"] == 7 and mapping[1 << 31] == 22 and "none" not in mapping and len([*mapping]) >= count


with ThreadPoolExecutor(8) as pool:
    assert [*pool.map(look, range(8))] == [None] * 8
assert mapping["meddled"] == 1

# An iteration goes through the items of the moment when it began, whatever they are.
items = [None, 1000, "text", 2.5, ling.List(), (1, 2)]
several = ling.List(items)
iterator = iter(several)
assert next(iterator) is None and next(iterator) == 1000
several.clear()
assert [*iterator][:2] == ["text", 2.5] and next(iterator, "over") == next(iterator, "over") == "over"
