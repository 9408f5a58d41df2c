"""Two pictures of measurements for docs/: ours against the peers, row by row, and how cost grows."""

import html
import math
import pathlib

import bench_report

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"
GROUPS = ("Python asks", "Python asks maps", "Host asks", "C++ containers")
COLOURS = {"ling": "#b4442c", "pybind11": "#1f6f9f", "raw": "#4d4d4d", "plain": "#7a9a3b", "dict": "#7a9a3b",
           "std": "#7a9a3b", "PyGObject": "#8a5fa8", "Lupa": "#d39a2d"}
LINES = ("#b4442c", "#1f6f9f", "#4d4d4d", "#7a9a3b", "#8a5fa8", "#d39a2d", "#2a9d8f", "#c06c9b")
STYLE = "font-family: sans-serif; font-size: 12px"
GRID = "#d8d4ca"


def text(x, y, words, extra=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" {extra}>{html.escape(words)}</text>'


def line(x1, y1, x2, y2, colour=GRID, width=1):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}" stroke-width="{width}"/>'


def dot(x, y, colour, radius=4):
    return f'<circle cx="{x:.1f}" cy="{y:.1f}" r="{radius}" fill="{colour}"/>'


def save(name, width, height, parts):
    head = f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" style="{STYLE}">'
    body = "\n".join((head, '<rect width="100%" height="100%" fill="white"/>', *parts, "</svg>"))
    (DOCS / name).write_text(body + "\n", encoding="utf-8")


def decades(least, greatest):
    return range(math.floor(math.log10(least)), math.ceil(math.log10(greatest)) + 1)


def draw_peers(results):
    """A line per row: how many times as long as ours everybody takes; left of the middle is faster than ours."""
    left, right, step, top = 230, 900, 19, 62
    rows = {}
    for result in results:
        if result["group"] in GROUPS and result["contestant"] != "python" and result["median"] > 0:
            rows.setdefault((result["group"], result["row"]), {})[result["contestant"]] = result["median"]
    rows = {key: found for key, found in rows.items() if "ling" in found and len(found) > 1}
    if not rows:
        return
    ratios = [value / found["ling"] for found in rows.values() for value in found.values()]
    powers = decades(min(ratios), max(ratios))

    def x_of(ratio):
        return left + (math.log10(ratio) - powers[0]) / (powers[-1] - powers[0]) * (right - left)

    marks, y, group = [], top, None
    for (of_group, row), found in rows.items():
        if of_group != group:
            y += 12
            marks.append(text(20, y, of_group, 'font-weight="bold"'))
            group, y = of_group, y + step
        marks.append(text(30, y, row))
        marks.append(line(left, y - 4, right, y - 4))
        # Ours last, so that nothing hides it.
        for who in sorted(found, key=lambda name: name == "ling"):
            marks.append(dot(x_of(found[who] / found["ling"]), y - 4, COLOURS[who], 5 if who == "ling" else 4))
        y += step
    axis = []
    for power in powers:
        x = x_of(10.0**power)
        axis += [line(x, top - 12, x, y - 10, "#8a8272" if power == 0 else GRID, 1),
                 text(x, top - 16, f"{10.0**power:g} x", 'text-anchor="middle"')]
    legend, x = [], left
    used = {who for found in rows.values() for who in found}
    for who in (name for name in bench_report.PREFERRED if name in used):
        legend += [dot(x, 16, COLOURS[who]), text(x + 9, 20, who)]
        x += 24 + 8 * len(who)
    save("benchmarks.svg", right + 30, int(y) + 8,
         [text(20, 20, "time beside ling's", 'font-weight="bold"'), *legend, *axis, *marks])


def draw_growth(results):
    """A line per row, from where there is little of something to where there is much; a level line is flat."""
    rows = {}
    for result in results:
        if result["group"] == "Growth" and result["median"] > 0:
            rows.setdefault(result["row"], []).append((result["parameter"], result["median"]))
    rows = {row: sorted(points) for row, points in rows.items() if len(points) > 1}
    if not rows:
        return
    left, right, top, bottom, names = 60, 560, 50, 380, 590
    grown = {row: [(n, cost / points[0][1]) for n, cost in points] for row, points in rows.items()}
    xs = decades(1, max(n for points in grown.values() for n, _ in points))
    ys = decades(min(cost for points in grown.values() for _, cost in points),
                 max(2, *(cost for points in grown.values() for _, cost in points)))

    def place(n, cost):
        return (left + (math.log10(n) - xs[0]) / (xs[-1] - xs[0]) * (right - left),
                bottom - (math.log10(cost) - ys[0]) / (ys[-1] - ys[0]) * (bottom - top))

    parts = [text(20, 20, "cost beside that of few", 'font-weight="bold"'),
             text((left + right) / 2, bottom + 36, "how many", 'text-anchor="middle"')]
    for power in xs:
        x, y = place(10.0**power, 10.0 ** ys[0])
        parts += [line(x, top, x, bottom), text(x, y + 18, f"{10**power:,}", 'text-anchor="middle"')]
    for power in ys:
        x, y = place(1, 10.0**power)
        parts += [line(left, y, right, y, "#8a8272" if power == 0 else GRID),
                  text(x - 6, y + 4, f"{10.0**power:g} x", 'text-anchor="end"')]
    for number, (row, points) in enumerate(grown.items()):
        colour = LINES[number % len(LINES)]
        placed = [place(*point) for point in points]
        parts += [line(*placed[0], *placed[-1], colour, 2), *(dot(*point, colour) for point in placed),
                  dot(names, top + 20 * number, colour), text(names + 10, top + 4 + 20 * number, row)]
    save("growth.svg", 860, 430, parts)


def draw(results):
    draw_peers(results)
    draw_growth(results)
