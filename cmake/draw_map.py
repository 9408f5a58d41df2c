#!/usr/bin/env python3
"""draw_map.py [--check]: docs/map.svg, the floors of src/ and the ways of two calls through them.

The floors are those of check_floors.py, what a folder is for stands in docs/maintainer.md. Every stop of a way is a
function that must be in its file. With --check nothing is written; it fails when the picture is not current.
"""

import html
import pathlib
import re
import sys
import textwrap

from check_floors import FLOORS

ROOT = pathlib.Path(__file__).resolve().parent.parent
PICTURE = ROOT / "docs" / "map.svg"

WAYS = {
    "a host evaluates code": ("#b4442c", [
        ("language/evaluation.cpp", "evaluate"),
        ("bridge/base_namespace.cpp", "new_namespace"),
        ("bridge/to_python.cpp", "to_python_locked"),
        ("bridge/python_source.cpp", "run_source"),
        ("python/function_body.cpp", "append_function_body"),
        ("bridge/from_python.cpp", "from_python_locked"),
    ]),
    "Python reads w.name": ("#1f6f9f", [
        ("lingobject/slots.h", "attribute_slot"),
        ("lingobject/attribute_name.cpp", "attribute_name_of"),
        ("lingobject/get_attribute.cpp", "get_attribute"),
        ("ling/class.h", "find_member"),
        ("ling/classes/property.cpp", "read"),
        ("bridge/to_python.cpp", "to_python_locked"),
    ]),
}

WIDTH, MARGIN, GAP, LINE = 1120, 20, 14, 15
STYLE = "font-family: sans-serif; font-size: 12px"


def purposes():
    """folder -> what it is for, the first words of its row in the guide."""
    guide = (ROOT / "docs" / "maintainer.md").read_text(encoding="utf-8")
    rows = re.findall(r"^\| `src/([\w/]+)/` \| ([^|]+) \|", guide, re.MULTILINE)
    return {folder: re.split(r"[.;]", text)[0].strip().replace("`", "") for folder, text in rows}


def text(x, y, words, extra=""):
    return f'<text x="{x:.0f}" y="{y:.0f}" {extra}>{html.escape(words)}</text>'


def draw():
    lines, boxes = [], {}
    about = purposes()
    y = MARGIN
    for floor in reversed(FLOORS):
        width = (WIDTH - 2 * MARGIN - GAP * (len(floor) - 1)) / len(floor)
        words = {folder: textwrap.wrap(about[folder], int(width / 7.2)) for folder in floor}
        height = 60 + LINE * max(map(len, words.values()))
        for i, folder in enumerate(floor):
            x = MARGIN + i * (width + GAP)
            boxes[folder] = (x, y + height - 16)
            lines.append(f'<rect x="{x:.0f}" y="{y}" width="{width:.0f}" height="{height}" rx="6" fill="#f4f1ea" stroke="#8a8272"/>')
            lines.append(text(x + 10, y + 20, f"src/{folder}/", 'font-weight="bold"'))
            for row, part in enumerate(words[folder]):
                lines.append(text(x + 10, y + 38 + row * LINE, part))
        y += height + GAP
    seats = dict.fromkeys(boxes, 0)
    for way, (colour, stops) in WAYS.items():
        y += 12
        lines.append(text(MARGIN, y, way, f'font-weight="bold" fill="{colour}"'))
        for stop, (file, function) in enumerate(stops, 1):
            source = (ROOT / "src" / file).read_text(encoding="utf-8")
            if not re.search(rf"\b{function}\(", source):
                sys.exit(f"draw_map.py: {function} is not in src/{file}")
            folder = str(pathlib.PurePosixPath(file).parent)
            left, middle = boxes[folder]
            x = left + 20 + seats[folder] * 24
            seats[folder] += 1
            lines.append(f'<circle cx="{x:.0f}" cy="{middle}" r="10" fill="{colour}"/>')
            lines.append(text(x, middle + 4, str(stop), 'text-anchor="middle" fill="white"'))
            y += LINE
            lines.append(text(MARGIN + 12, y, f"{stop}  src/{file}: {function}"))
        y += LINE
    head = f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{y + MARGIN}" style="{STYLE}">'
    return "\n".join([head, '<rect width="100%" height="100%" fill="white"/>', *lines, "</svg>", ""])


def main():
    picture = draw()
    if "--check" not in sys.argv:
        PICTURE.write_text(picture, encoding="utf-8")
    elif not PICTURE.exists() or PICTURE.read_text(encoding="utf-8") != picture:
        sys.exit("docs/map.svg is not current: run scripts/map")


if __name__ == "__main__":
    main()
