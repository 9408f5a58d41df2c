"""Operators, indices, slices and membership of host objects; what the use of host objects leaves behind."""

import ctypes
import itertools
import operator
import sys
import unittest
from operator import delitem, getitem, setitem

import ling
from ling import List
from ling.drawing import Circle, Drawing, Grid, Layers, Vector

api = ctypes.pythonapi
api.PySequence_GetItem.argtypes = ctypes.py_object, ctypes.c_ssize_t
api.PySequence_GetItem.restype = ctypes.py_object
api.PySequence_SetItem.argtypes = ctypes.py_object, ctypes.c_ssize_t, ctypes.py_object
api.PySequence_DelItem.argtypes = ctypes.py_object, ctypes.c_ssize_t
api.PyErr_Occurred.restype = ctypes.c_void_p


def outcome(function, *arguments):
    """What comes back, wrappers of lists as lists; "Type: text" of an exception. Nothing may be left pending."""
    try:
        result = function(*arguments)
    except Exception as failure:
        return f"{type(failure).__name__}: {failure}"
    finally:
        api.PyErr_Occurred()  # ctypes raises what it finds
    return list(result) if type(result) is type(List()) else result


class Case(unittest.TestCase):
    maxDiff = None

    def check(self, *rows):
        for expected, function, *arguments in rows:
            with self.subTest(function=function.__name__, arguments=[str(each) for each in arguments]):
                self.assertEqual(outcome(function, *arguments), expected)


class Operators(Case):
    def test_name_the_missing_method(self):
        prefix = "NotImplementedError: [ling_"
        for value in Circle(1), ling.find_module:
            for row, operation in (
                ("sequence_concat] None method 'concat' in: {}", operator.add),
                ("sequence_extend] None method 'extend' in: {}.", operator.iadd),
                ("number_subtract] None method '__sub__' in: {}", operator.sub),
                ("number_inplace_subtract] None method '__isub__' in: {}", operator.isub),
                ("number_divide] None method '__div__' in: {}.", operator.truediv),
                ("number_divide] None method '__idiv__' in: {}.", operator.itruediv),
                ("number___and__] None method in: {}", operator.and_),
                ("number___or__] None method in: {}", operator.or_),
                ("number___xor__] None method in: {}", operator.xor),
            ):
                self.check((prefix + row.format(value), operation, value, object()))
            self.check((f"{prefix}number_not] None method '__not__' in: {value}", operator.invert, value))
        grid = Grid(2, 2)  # the slots that only sequences have
        self.check(
            (f"{prefix}sequence_repeat] None method 'repeat' in: {grid}.", operator.mul, grid, 3),
            (f"{prefix}sequence_inplace_repeat] None method '__imul__' in: {grid}.", operator.imul, grid, 3),
        )

    def test_exist_only_where_they_have_a_slot(self):
        name = type(Circle(1)).__name__
        unsupported = "TypeError: unsupported operand type(s) for {}: '{}' and '{}'".format
        self.check(
            (unsupported("*", name, "int"), operator.mul, Circle(1), 3),
            (f"TypeError: object of type '{name}' has no len()", len, Circle(1)),
            (f"TypeError: '{name}' object is not subscriptable", getitem, Circle(1), 0),
        )
        self.assertRegex(outcome(operator.sub, 5, Vector(1, 2)), "^SystemError: ")

    def test_call_the_methods_of_the_value(self):
        numbers = List([1, 2])
        bad_sum = "Bad call of 'ling.drawing.Vector.__add__': the argument 'other' must be Vector, not Integer: 1"
        self.check(
            (Vector(1, 2), operator.itruediv, Vector(2, 4), 2.0),
            ([1, 2, 1, 2], operator.mul, 2, numbers),
            ([1, 2, 3, 4], operator.iadd, numbers, (3, 4)),
            ([1, 2, 3, 4] * 2, operator.imul, numbers, 2),
            (f"RuntimeError: {bad_sum}", operator.add, Vector(), 1),
        )
        self.assertEqual(list(numbers), [1, 2, 3, 4] * 2, "changed in place")


class Items(Case):
    def test_have_a_position(self):
        three = List([*"abc"])
        locked = Drawing("d", [Circle(1)])
        locked.is_locked = True
        out = "RuntimeError: Index out of range: {}, length: {}.".format
        kinds = "TypeError: The indices of ling.List are integers or slices."
        for get, put, drop in (
            (getitem, setitem, delitem),
            (api.PySequence_GetItem, api.PySequence_SetItem, api.PySequence_DelItem),
        ):
            self.check(*((item, get, three, i) for i, item in zip(range(-3, 3), "abcabc")))
            for i in 3, -4, 1 << 40:
                self.check((out(i, 3), get, three, i), (out(i, 3), put, three, i, 1), (out(i, 3), drop, three, i))
            put(three, -1, "z"), put(three, 0, "y"), drop(three, -2)
            self.assertEqual(list(three), ["y", "z"])
            three = List([*"abc"])
            self.check(
                ("RuntimeError: The method 'set' is missing in 'Grid'.", put, Grid(1, 1), 0, Vector()),
                ("RuntimeError: The method 'removeAt' is missing in 'Grid'.", drop, Grid(1, 1), 0),
                ("RuntimeError: The grid has no point 1.", get, Grid(1, 1), 1),
                ("RuntimeError: The drawing 'd' is locked.", drop, locked, 0),
            )
        self.check(
            (kinds, getitem, three, "a"),
        )

    def test_have_a_key(self):
        ages = ling.HashMap()
        ages["bob"] = 6
        missing = "RuntimeError: Key not found: ann."
        self.check(
            (6, getitem, ages, "bob"),
            (missing, getitem, ages, "ann"),
            (missing, delitem, ages, "ann"),
            ("RuntimeError: The method 'at' is missing in 'Layers'.", getitem, Layers(1), 1),
        )

    def test_are_contained_and_counted(self):
        self.check(
            ("RuntimeError: int too big to convert", operator.contains, Layers(1), 1 << 64),
            ("RuntimeError: A grid of 4294967296 by 4294967296 points is too large to count.", len, Grid(1 << 32, 1 << 32)),
        )
        self.assertTrue(Grid(1, 1) and Circle(1) and not Grid(0, 1))


class Slices(Case):
    BOUNDS = [None, -6, -3, -1, 0, 2, 4, 6]
    STEPS = [None, 1, 2, 3, -1, -2, -5, sys.maxsize, -sys.maxsize]

    def test_select_and_change_like_those_of_lists(self):
        shapes, grid = [Circle(each + 1) for each in range(12)], Grid(5, 1)
        for parts in itertools.product(self.BOUNDS, self.BOUNDS, self.STEPS):
            each, plain = slice(*parts), shapes[:5]
            self.assertEqual([point.x for point in grid[each]], list(range(5))[each], each)
            for make in List, lambda items: Drawing("d", items):
                self.assertEqual(list(make(plain)[each]), plain[each], each)
                for change, *items in (delitem,), *((setitem, shapes[5:end]) for end in (5, 6, 8, 12)):
                    expected, changed = plain[:], make(plain)
                    refusals = [str(outcome(change, which, each, *map(iter, items))) for which in (expected, changed)]
                    self.assertEqual(list(changed), expected, (each, items))
                    self.assertEqual("ValueError" in refusals[0], "RuntimeError" in refusals[1], (each, items))
        self.assertEqual(grid[::2].elementsType, grid.elementsType)

    def test_tell_what_is_wrong(self):
        numbers, shapes = List([1, 2, 3]), Drawing("d", [Circle(1), Circle(2)])
        backward, misfit = slice(None, None, -1), "2 items cannot take the place of 3 in a slice with a step."
        self.check(
            (f"RuntimeError: {misfit}", setitem, numbers, backward, [1, 2]),
            ("ZeroDivisionError: division by zero", setitem, numbers, slice(1), (1 / each for each in [1, 0])),
            ("RuntimeError: The method 'removeAt' is missing in 'Grid'.", delitem, Grid(2, 2), slice(1)),
        )
        self.assertRegex(outcome(setitem, shapes, slice(0, 2), [Circle(9), "door"]), "^RuntimeError: .*door")
        self.assertEqual((list(numbers), [shape.radius for shape in shapes]), ([1, 2, 3], [1, 2]), "left as they were")


class Memory(unittest.TestCase):
    USES = """vector - vector; lazy.center - vector; operator.itruediv(vector, 3); shape - text; vector + text
        vector + huge; text - vector; ~layers; numbers * 2; operator.iadd(numbers, ()); operator.imul(numbers, 1)
        len(grid); text in numbers; huge in layers; [*grid]; grid[0]; api.PySequence_GetItem(numbers, 1); numbers[7]
        numbers[text]; numbers[1:]; numbers[two]; grid[two]; setitem(numbers, 0, text); setitem(grid, 0, text)
        setitem(ages, key, text), ages[key], delitem(ages, key); delitem(numbers, slice(3, None))
        setitem(numbers, two, (text, text)), setitem(numbers, slice(3, 3), [huge]); shape.radius; shape.move(1.5)
        shape.move(y=2); shape.move(text); shape.none; shape.name = text; shape.area = 1; record.added = i
        setattr(record, text, i), delattr(record, text); getattr(shape, f"name{i}"); str(shape), repr(shape), hash(shape)
        shape == shape, shape < 3, vector == vector; iter(shape); shape(); Circle(-1); shape.__doc__; shape.__dir__
        shape.__copy__(); shape.__bytes__; shape.move.__annotations__; shape.move.__text_signature__
        type(shape).radius.__get__(shape); type(shape).radius.__set__(shape, text)"""

    def test_is_not_lost_by_any_slot(self):
        names = dict(
            vector=Vector(1, 2), layers=Layers(1, 2), shape=Circle(1), grid=Grid(2, 2), lazy=Drawing("d", [Circle(1)]),
            numbers=List([1000, 2000, 3000]), ages=ling.HashMap(), huge=1 << 64, key="a" * 50, text="text" * 20,
            two=slice(None, None, 2), record=ling.LogRecord(20, "message"),
        )
        subjects = [*names.values()]
        names.update(globals())
        for use in self.USES.replace("\n", ";").split(";"):
            with self.subTest(use):
                body = f"try: {use}\n  except Exception: pass\n  api.PyErr_Occurred()"
                exec(f"def rounds(n):\n for i in range(n):\n  {body}", names)
                names["rounds"](1_000)  # caches fill
                counts, blocks = [*map(sys.getrefcount, subjects)], sys.getallocatedblocks()
                names["rounds"](1_000)
                self.assertLess(sys.getallocatedblocks() - blocks, 200)
                self.assertEqual([*map(sys.getrefcount, subjects)], counts)


if __name__ == "__main__":
    unittest.main()
