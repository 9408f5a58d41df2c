# Saves objects of classes that this very program defines, and reads them back.
from __future__ import annotations

import copy
import dataclasses
import enum
import pickle
import typing
from dataclasses import dataclass, field


class Colour(enum.Enum):
    RED = 1
    BLUE = 2


class Point(typing.NamedTuple):
    x: int
    y: int


@dataclass(order=True)
class Shape:
    name: str
    points: typing.List[Point] = field(default_factory=list, compare=False)
    colour: Colour = field(default=Colour.RED, compare=False)

    def area(self) -> float:
        corners = zip(self.points, self.points[1:] + self.points[:1])
        return abs(sum(a.x * b.y - b.x * a.y for a, b in corners)) / 2


@dataclass(frozen=True)
class Drawing:
    shapes: tuple[Shape, ...]
    parent: typing.Optional[Drawing] = None


square = Shape("square", [Point(0, 0), Point(2, 0), Point(2, 2), Point(0, 2)], Colour.BLUE)
triangle = Shape("triangle", [Point(0, 0), Point(4, 0), Point(0, 3)])
drawing = Drawing((square, triangle, square), Drawing(()))

for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
    again = pickle.loads(pickle.dumps(drawing, protocol))
    assert again == drawing and again.shapes[0] is again.shapes[2] and again.shapes[0].colour is Colour.BLUE
print("saved and read with", pickle.HIGHEST_PROTOCOL + 1, "protocols")
assert Shape.__module__ == __name__ == "__main__"

deep = copy.deepcopy(drawing)
deep.shapes[0].points.append(Point(1, 1))
assert len(square.points) == 4

for shape in sorted({s.name: s for s in drawing.shapes}.values(), reverse=True):
    print(shape, shape.area())
print(typing.get_type_hints(Shape)["points"])
try:
    dataclasses.replace(drawing, shapes=()).shapes = (square,)
except dataclasses.FrozenInstanceError as error:
    print("refused:", error)
