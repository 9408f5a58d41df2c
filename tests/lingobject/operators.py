"""Operators, indices, slices and membership of host objects: results, messages, and what is left behind."""

import ctypes
import itertools
import operator
import sys
import unittest

import ling
from ling.drawing import Circle, Drawing, Grid, Layers, Rectangle, Vector

api = ctypes.pythonapi
api.PySequence_GetItem.argtypes = ctypes.py_object, ctypes.c_ssize_t
api.PySequence_GetItem.restype = ctypes.py_object
api.PySequence_SetItem.argtypes = ctypes.py_object, ctypes.c_ssize_t, ctypes.py_object
api.PySequence_DelItem.argtypes = ctypes.py_object, ctypes.c_ssize_t
api.PyErr_Occurred.restype = ctypes.c_void_p


def list_of(*items):
    return ling.List(items)


def map_of(**items):
    made = ling.HashMap()
    for key, value in items.items():
        made[key] = value
    return made


def outcome(function, *arguments):
    """What comes back, wrappers of lists as lists; "Type: text" of an exception. Nothing may be left pending."""
    try:
        result = function(*arguments)
    except BaseException as failure:
        return f"{type(failure).__name__}: {failure}"
    finally:
        api.PyErr_Occurred()  # ctypes raises what it finds
    return list(result) if type(result) is type(list_of()) else result


def assign(sequence, key, value):
    sequence[key] = value
    return sequence


def delete(sequence, key):
    del sequence[key]
    return sequence


class Untouched:
    """A right operand that would know what to do."""

    def answer(self, other):
        raise AssertionError("the right operand was asked")

    __rsub__ = __rtruediv__ = __rand__ = __ror__ = __rxor__ = answer


class Case(unittest.TestCase):
    maxDiff = None

    def check(self, *rows):
        for expected, function, *arguments in rows:
            with self.subTest(function=function.__name__, arguments=[str(each) for each in arguments]):
                self.assertEqual(outcome(function, *arguments), expected)


class Operators(Case):
    def test_name_the_missing_method(self):
        prefix = "NotImplementedError: [ling_"
        other = Untouched()
        for value in Circle(1), Layers, ling.find_module:
            self.check(
                (f"{prefix}sequence_concat] None method 'concat' in: {value}", operator.add, value, other),
                (f"{prefix}sequence_extend] None method 'extend' in: {value}.", operator.iadd, value, other),
                (f"{prefix}number_subtract] None method '__sub__' in: {value}", operator.sub, value, other),
                (f"{prefix}number_inplace_subtract] None method '__isub__' in: {value}", operator.isub, value, other),
                (f"{prefix}number_divide] None method '__div__' in: {value}.", operator.truediv, value, other),
                (f"{prefix}number_divide] None method '__idiv__' in: {value}.", operator.itruediv, value, other),
                (f"{prefix}number___and__] None method in: {value}", operator.and_, value, other),
                (f"{prefix}number___or__] None method in: {value}", operator.or_, value, other),
                (f"{prefix}number___xor__] None method in: {value}", operator.xor, value, other),
                (f"{prefix}number___and__] None method in: {value}", operator.iand, value, other),
                (f"{prefix}number_not] None method '__not__' in: {value}", operator.invert, value),
            )
        grid = Grid(2, 2)  # the slots that only sequences have
        self.check(
            (f"{prefix}sequence_repeat] None method 'repeat' in: {grid}.", operator.mul, grid, 3),
            (f"{prefix}sequence_repeat] None method 'repeat' in: {grid}.", operator.mul, 3, grid),
            (f"{prefix}sequence_inplace_repeat] None method '__imul__' in: {grid}.", operator.imul, grid, 3),
        )

    def test_exist_only_where_they_have_a_slot(self):
        name = type(Circle(1)).__name__
        for function, sign in (operator.mul, "*"), (operator.imul, "*="), (operator.mod, "%"), (operator.floordiv, "//"):
            self.check((f"TypeError: unsupported operand type(s) for {sign}: '{name}' and 'int'", function, Circle(1), 3))
        self.check(
            (f"TypeError: bad operand type for unary -: '{name}'", operator.neg, Circle(1)),
            (f"TypeError: object of type '{name}' has no len()", len, Circle(1)),
            (f"TypeError: '{name}' object is not subscriptable", operator.getitem, Circle(1), 0),
            (f"TypeError: unsupported operand type(s) for +: 'int' and '{name}'", operator.add, 5, Circle(1)),
        )

    def test_are_none_of_the_right_operand(self):
        for function in operator.sub, operator.truediv, operator.and_, operator.or_, operator.xor:
            for left in 5, "text", [1]:
                result = outcome(function, left, Vector(1, 2))
                self.assertTrue(result.startswith("SystemError: "), result)

    def test_call_the_methods_of_the_value(self):
        one, two = Layers(1), Layers(2)
        numbers = list_of(1, 2)
        self.check(
            (Vector(3, 5), operator.add, Vector(1, 2), Vector(2, 3)),
            (Vector(3, 5), operator.iadd, Vector(1, 2), Vector(2, 3)),
            (Vector(-1, -1), operator.sub, Vector(1, 2), Vector(2, 3)),
            (Vector(-1, -1), operator.isub, Vector(1, 2), Vector(2, 3)),
            (Vector(1, 2), operator.truediv, Vector(2, 4), 2),
            (Vector(1, 2), operator.itruediv, Vector(2, 4), 2.0),
            (Layers(), operator.and_, one, two),
            (Layers(1, 2), operator.or_, one, two),
            (Layers(1, 2), operator.ior, one, two),
            (Layers(1), operator.xor, Layers(1, 2), two),
            (one, operator.invert, operator.invert(one)),
            ([1, 2, 3], operator.add, numbers, [3]),
            ([1, 2, 1, 2], operator.mul, numbers, 2),
            ([1, 2, 1, 2], operator.mul, 2, numbers),
            ([], operator.mul, numbers, -1),
            ([1, 2, 3, 4], operator.iadd, numbers, (3, 4)),
            ([1, 2, 3, 4] * 2, operator.imul, numbers, 2),
        )
        self.assertEqual(list(numbers), [1, 2, 3, 4] * 2, "changed in place")
        drawing = Drawing("d", [Circle(1)])
        self.assertEqual([len(drawing + drawing), len(drawing)], [2, 1], "concat")
        same = drawing
        drawing += [Circle(2)]
        self.assertTrue(drawing is not None and len(same) == 2, "extend")

    def test_look_at_lazy_values_first(self):
        drawing = Drawing("d", [Circle(1, Vector(1, 2))])
        self.check(
            (Vector(0, 1), operator.sub, drawing.center, Vector(1, 1)),
            ("DrawingError: An empty drawing has no center.", operator.sub, Drawing("e").center, Vector()),
        )

    def test_raise_errors_of_methods_as_runtime_errors(self):
        bad_sum = "Bad call of 'ling.drawing.Vector.__add__': the argument 'other' must be Vector, not Integer: 1"
        with self.assertRaises(RuntimeError) as caught:
            Vector() / 0
        self.assertIs(type(caught.exception), RuntimeError)
        self.assertEqual(ling.class_of(caught.exception.ling).name, "DrawingError")
        self.check(
            ("RuntimeError: A vector cannot be divided by 0.", operator.truediv, Vector(), 0),
            (f"RuntimeError: {bad_sum}", operator.add, Vector(), 1),
            ("RuntimeError: int too big to convert", lambda: Vector() - (1 << 64)),
        )


class Items(Case):
    def test_have_a_position(self):
        three = list_of("a", "b", "c")
        locked = Drawing("d", [Circle(1)])
        locked.is_locked = True
        out = "RuntimeError: Index out of range: {}, length: {}.".format
        kinds = "TypeError: The indices of ling.List are integers or slices."
        for get, put, drop in (
            (operator.getitem, assign, delete),
            (api.PySequence_GetItem, api.PySequence_SetItem, api.PySequence_DelItem),
        ):
            self.check(*((item, get, three, i) for i, item in zip(range(-3, 3), "abcabc")))
            self.check(*((out(i, 3), get, three, i) for i in (3, -4, 1 << 40, -(1 << 40))))
            self.check(*((out(i, 3), put, three, i, 1) for i in (3, -4)), *((out(i, 3), drop, three, i) for i in (3, -4)))
            put(three, -1, "z"), put(three, 0, "y"), drop(three, -2)
            self.assertEqual(list(three), ["y", "z"])
            three = list_of("a", "b", "c")
            self.check(
                ("RuntimeError: The method 'set' is missing in 'Grid'.", put, Grid(1, 1), 0, Vector()),
                ("RuntimeError: The method 'removeAt' is missing in 'Grid'.", drop, Grid(1, 1), 0),
                ("RuntimeError: The grid has no point 1.", get, Grid(1, 1), 1),
                ("RuntimeError: The grid has no point -2.", get, Grid(1, 1), -2),
                ("RuntimeError: The drawing 'd' is locked.", drop, locked, 0),
            )
        self.check(
            (kinds, operator.getitem, three, "a"),
            (kinds, assign, three, None, 1),
            (kinds, delete, three, 1.5),
            ("RuntimeError: int too big to convert", operator.getitem, three, 1 << 70),
            ("RuntimeError: int too big to convert", assign, three, 0, 1 << 70),
        )

    def test_have_a_key(self):
        ages = map_of(ann=5, bob=6)
        missing = "RuntimeError: Key not found: eve."
        self.check(
            (5, operator.getitem, ages, "ann"),
            (missing, operator.getitem, ages, "eve"),
            (missing, delete, ages, "eve"),
            ("RuntimeError: The method 'at' is missing in 'Layers'.", operator.getitem, Layers(1), 1),
        )
        ages["eve"] = 7
        del ages["ann"]
        self.assertEqual(({key: ages[key] for key in ages}, len(ages), "ann" in ages, "bob" in ages), ({"bob": 6, "eve": 7}, 2, False, True))
        self.assertRegex(outcome(assign, ages, list_of(), 1), "^RuntimeError: .*key")

    def test_are_contained(self):
        sun = Circle(1)
        self.check(
            (True, operator.contains, list_of(1, "a"), "a"),
            (False, operator.contains, list_of(1, "a"), 2),
            (True, operator.contains, Drawing("d", [sun]), sun),
            (True, operator.contains, Grid(3, 3), Vector(2, 2)),
            (False, operator.contains, Grid(3, 3), Vector(3, 2)),
            (False, operator.contains, Layers(1), "1"),
            ("RuntimeError: int too big to convert", operator.contains, Layers(1), 1 << 64),
        )

    def test_are_counted(self):
        self.check(
            (2, len, list_of(1, 2)),
            (1, len, map_of(a=1)),
            (0, len, Layers()),
            (6, len, Grid(3, 2)),
            ("RuntimeError: A grid of 4294967296 by 4294967296 points is too large to count.", len, Grid(1 << 32, 1 << 32)),
        )
        self.assertTrue(Grid(1, 1) and Circle(1) and not Grid(0, 1) and not list_of() and not map_of())


class Slices(Case):
    BOUNDS = [None, *range(-6, 7)]
    STEPS = [None, 1, 2, 3, -1, -2, -5, sys.maxsize, -sys.maxsize]
    ALL = [slice(*parts) for parts in itertools.product(BOUNDS, BOUNDS, STEPS)]

    def test_select_like_those_of_lists(self):
        plain = [0, 1, 2, 3, 4]
        shapes = [Circle(each + 1) for each in plain]
        drawing, grid, wrapped = Drawing("d", shapes), Grid(5, 1), ling.List(plain)
        for each in self.ALL:
            self.assertEqual(list(wrapped[each]), plain[each], each)
            self.assertEqual(list(drawing[each]), shapes[each], each)
            self.assertEqual([point.x for point in grid[each]], plain[each], each)
        self.assertEqual(grid[::2].elementsType, grid.elementsType)

    def test_change_like_those_of_lists(self):
        for each in self.ALL:
            expected, wrapped = [0, 1, 2, 3, 4], ling.List(range(5))
            del expected[each], wrapped[each]
            self.assertEqual(list(wrapped), expected, each)
            for items in [], ["x"], ["x", "y", "z"], list("abcdefg"):
                expected, wrapped = [0, 1, 2, 3, 4], ling.List(range(5))
                refused = outcome(assign, expected, each, items)
                changed = outcome(assign, wrapped, each, iter(items))
                self.assertEqual(list(wrapped), expected, (each, items))
                self.assertEqual("ValueError" in str(refused), "RuntimeError" in str(changed), (each, items))

    def test_tell_what_is_wrong(self):
        numbers, shapes = list_of(1, 2, 3), Drawing("d", [Circle(1), Circle(2)])
        self.check(
            ("RuntimeError: 2 items cannot take the place of 3 in a slice with a step.", assign, numbers, slice(None, None, -1), [1, 2]),
            ("ValueError: slice step cannot be zero", operator.getitem, numbers, slice(None, None, 0)),
            ("TypeError: 'int' object is not iterable", assign, numbers, slice(1), 5),
            ("ZeroDivisionError: division by zero", assign, numbers, slice(1), (1 / each for each in [1, 0])),
            ("RuntimeError: int too big to convert", assign, numbers, slice(1), [1 << 64]),
            ("RuntimeError: The method 'removeAt' is missing in 'Grid'.", delete, Grid(2, 2), slice(1)),
        )
        self.assertRegex(outcome(assign, shapes, slice(0, 2), [Circle(9), "door"]), "^RuntimeError: .*door")
        self.assertEqual((list(numbers), [shape.radius for shape in shapes]), ([1, 2, 3], [1, 2]), "left as they were")


def is_measurable():
    # Builds with sanitizers keep freed memory for a while, and find what is lost by themselves.
    try:
        with open("/proc/self/maps", encoding="ascii") as libraries:
            return "libasan" not in libraries.read()
    except OSError:
        return False


def resident():
    with open("/proc/self/statm", encoding="ascii") as statistics:
        return int(statistics.read().split()[1]) * 4096


class Memory(unittest.TestCase):
    MEASURABLE = is_measurable()
    ROUNDS = 100_000 if MEASURABLE else 1_000

    def rounds(self, count, body):
        for _ in range(count):
            try:
                body()
            except Exception:
                pass
            api.PyErr_Occurred()

    def test_is_not_lost_by_any_slot(self):
        vector, layers, shape, grid, lazy = Vector(1, 2), Layers(1, 2), Circle(1), Grid(2, 2), Drawing("d", [Circle(1)])
        numbers, ages, huge, key, text = list_of(1000, 2000, 3000), map_of(a=1000), 1 << 64, "a" * 50, "text" * 20
        two = slice(None, None, 2)
        uses = {
            "subtract": lambda: vector - vector,
            "subtract a lazy value": lambda: lazy.center - vector,
            "in place": lambda: operator.itruediv(vector, 3),
            "missing method": lambda: shape - text,
            "wrong operand": lambda: vector + text,
            "operand that does not fit": lambda: vector + huge,
            "reflected": lambda: text - vector,
            "invert": lambda: ~layers,
            "concat": lambda: numbers + numbers,
            "repeat": lambda: numbers * 2,
            "extend": lambda: operator.iadd(numbers, ()),
            "in-place repeat": lambda: operator.imul(numbers, 1),
            "length": lambda: len(grid),
            "contains": lambda: (text in numbers, 7 in layers, huge in layers),
            "item": lambda: (numbers[-1], grid[0], api.PySequence_GetItem(numbers, 1)),
            "wrong item": lambda: numbers[7],
            "wrong index": lambda: numbers[text],
            "assignment": lambda: (assign(numbers, 0, text), assign(ages, key, text), delete(ages, key)),
            "wrong assignment": lambda: assign(grid, 0, text),
            "slices": lambda: (numbers[1:], numbers[two], grid[two]),
            "slice assignment": lambda: (assign(numbers, two, (text, text)), assign(numbers, slice(3, 3), [huge])),
            "slice deletion": lambda: delete(numbers, slice(3, None)),
            "key": lambda: (ages["a"], ages[key]),
        }
        subjects = [vector, layers, shape, grid, lazy, numbers, ages, huge, key, text, two]
        for name, use in uses.items():
            with self.subTest(name):
                self.rounds(self.ROUNDS // 10, use)  # caches fill
                counts = [*map(sys.getrefcount, subjects)]
                blocks, memory = sys.getallocatedblocks(), self.MEASURABLE and resident()
                self.rounds(self.ROUNDS, use)
                self.assertLess(sys.getallocatedblocks() - blocks, 200)
                self.assertTrue(not self.MEASURABLE or resident() - memory < 1 << 20)
                self.assertEqual([*map(sys.getrefcount, subjects)], counts)

    @unittest.skipUnless(MEASURABLE, "memory cannot be measured")
    def test_does_not_grow_with_an_iteration(self):
        before, total = resident(), 0
        for point in Grid(1000, 1000):
            total += point.x
            if point.x == 500:
                self.assertLess(resident() - before, 1 << 20)
        self.assertEqual(total, 1000 * 999 * 500)


if __name__ == "__main__":
    unittest.main()
