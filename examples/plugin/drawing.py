# A script that uses everything the drawing plug-in has. The plug-in's side of each line is in the C++ files here.
#
#   build/release/bin/ling --load build/release/lib/drawing.so run examples/plugin/drawing.py
import ling
from ling.drawing import Circle, Drawing, DrawingError, Grid, Layers, Rectangle, Vector, distance


def refused(kind, action):
    try:
        action()
    except kind as refusal:
        print("refused:", refusal)
        return refusal
    raise AssertionError("nothing was refused")


# --- values: constructors with defaults, operators, equality, use as keys ---------------------------------------------
here = Vector(1, 2)
there = here + Vector(y=4)
assert there == Vector(1, 6) and (there - here) / 2 == Vector(0, 2) != here
assert distance(here, there) == 4
here -= Vector(1, 2)
assert here == Vector() and {here: "origin"}[Vector(0, 0)] == "origin"
print("from", here, "to", there)
assert isinstance(refused(RuntimeError, lambda: here / 0).ling.message, str)

# --- objects: properties, fields, overloads, variadics, arguments by name ---------------------------------------------
sun = Circle(2, position=Vector(8, 8))
wall = Rectangle(6, 4)
sun.name = "sun"
sun.note = "paint it yellow"
sun.move(1)
sun.move(y=-1, x=1)
assert sun.position == Vector(10, 7) and (sun.name, sun.note, wall.note) == ("sun", "paint it yellow", "")
sun.scale(2)  # one function
sun.scale(0.5, 1.5)  # and another
wall.scale(2, 1)
assert (sun.radius, wall.width, wall.area) == (4, 12, 48)
sun.tag("warm", "round", 2)
assert list(sun.tags) == ["warm", "round", "2"]
assert Circle.unit().radius == 1
refused(RuntimeError, lambda: setattr(wall, "width", 3))

# --- an error of the plug-in's own is an exception of its own ---------------------------------------------------------
refusal = refused(RuntimeError, lambda: Circle(-1))
assert type(refusal).__name__ == "DrawingError" and ling.class_of(refusal.ling).name == "DrawingError"
assert type(refused(RuntimeError, lambda: DrawingError("out of paper"))) is type(refusal)

# --- a collection: everything that a list can do ----------------------------------------------------------------------
house = Drawing("house", [wall, sun])
house.append(Circle.unit())
assert len(house) == 3 and house[-1].radius == 1 and [shape.name for shape in house] == ["rectangle", "sun", "circle"]
assert sun in house and here not in house and house.indexOf(sun) == 1
assert [shape.name for shape in house[::-2]] == ["circle", "rectangle"]
del house[2]
house += [Rectangle(1, 1), Rectangle(2, 2)]
house[2:] = [Rectangle(3, 3)]
assert [shape.area for shape in house[2:]] == [9]
first, *others = house
assert first.area == wall.area and len(others) == 2
assert len(house + [sun]) == 4 and len(house) == 3
refused(RuntimeError, lambda: house.append("door"))
house.is_locked = True
refused(RuntimeError, house.clear)
assert len(house) == 3

# --- a value computed when it is looked at: a host function takes it, an operator looks at it -------------------------
middle = house.center
wall.move_to(middle)
print("the middle of the house:", wall.position)
assert middle - Vector() == wall.position and middle.x == wall.position.x
refused(RuntimeError, lambda: Drawing("nothing").center - here)

# --- an iterator over what is nowhere stored, a sequence of it --------------------------------------------------------
assert sum(point.x for point in Grid(1000, 2)) == 999 * 1000
grid = Grid(3, 2)
assert len(grid) == 6 and grid[-1] == Vector(2, 1) and list(grid[1:5:3]) == [grid[1], grid[4]]
refused(RuntimeError, lambda: grid[6])
refused(RuntimeError, lambda: len(Grid(1 << 40, 1 << 40)))

# --- a set with the operators of one ----------------------------------------------------------------------------------
shown = Layers(1, 2) | Layers(5)
shown ^= Layers(1)
assert 5 in shown and 1 not in shown and "ink" not in shown
assert list(shown) == [2, 5] and len(~shown) == Layers.COUNT - 2 and not shown & ~shown
print("shown:", shown)
