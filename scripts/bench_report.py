"""What measurements mean: medians with their intervals, the tables, and what became slower or faster.

A result is a dict with `group`, `row`, `contestant`, `parameter` (0, or what the row varies), `unit`, `median`, `low` and
`high` (per operation), `samples`, and `large` when the spread stayed large.
"""

import math

SETTLED = 0.05  # of the median: an interval that is not wider
NOTICEABLE = 0.01  # of the value: smaller changes are not told, however sure they are
PREFERRED = ("ling", "pybind11", "raw", "plain", "dict", "std", "PyGObject", "Lupa", "python")
PEERS = ("pybind11", "raw", "plain", "dict", "std")  # the columns of ratios


# --- statistics ------------------------------------------------------------------------------------------------------
def median_with_interval(samples):
    """The median and an interval that holds the true one with 95 %, whatever the distribution is.

    The interval goes from one of the ordered samples to another; with fewer than six samples there is none of 95 %, and
    it goes from the least to the greatest.
    """
    ordered = sorted(samples)
    count = len(ordered)
    half = count // 2
    median = ordered[half] if count % 2 else (ordered[half - 1] + ordered[half]) / 2
    outside, below = 0, 0.0  # how many samples to leave out at either end, and how probable it is to be wrong then
    while outside + 1 <= (count - 1) // 2:
        below += math.comb(count, outside) / 2**count
        if below > 0.025:
            break
        outside += 1
    outside = max(outside - 1, 0)
    return median, ordered[outside], ordered[count - 1 - outside]


def is_settled(samples):
    median, low, high = median_with_interval(samples)
    return len(samples) > 5 and high - low <= SETTLED * abs(median)


def key_of(result):
    return result["group"], result["row"], result["contestant"], result["parameter"]


def name_of(result):
    parameter = f" ({result['parameter']:,})" if result["parameter"] else ""
    return f"{result['row']}{parameter}"


# --- comparing -------------------------------------------------------------------------------------------------------
def compare(old, new):
    """(result, how many times as much as before, verdict) for all that was measured both times.

    The verdict is "slower", "faster" or "": a change counts when the intervals do not touch and it is noticeable.
    """
    before = {key_of(result): result for result in old}
    compared = []
    for result in new:
        former = before.get(key_of(result))
        if former is None or not former["median"]:
            continue
        ratio = result["median"] / former["median"]
        verdict = ""
        if abs(ratio - 1) >= NOTICEABLE:
            if result["low"] > former["high"]:
                verdict = "slower"
            elif result["high"] < former["low"]:
                verdict = "faster"
        compared.append((result, ratio, verdict))
    return compared


def comparison(old, new):
    """The lines that say what changed, and whether anything of the project became slower."""
    compared = compare(old, new)
    peers = [ratio for result, ratio, _ in compared if result["contestant"] != "ling"]
    ours = [entry for entry in compared if entry[0]["contestant"] == "ling"]
    lines = []
    if peers:
        middle = median_with_interval(peers)[0]
        lines.append(f"What others do takes {middle:.2f} times what it took: that much is the machine's.")
    for word in ("slower", "faster"):
        found = sorted((entry for entry in ours if entry[2] == word), key=lambda entry: -abs(math.log(entry[1])))
        lines += ["", f"{word.capitalize()}:" if found else f"Nothing is {word}."]
        lines += [f"  {ratio:6.2f} x  {result['group']}: {name_of(result)}" for result, ratio, _ in found]
    same = sum(1 for entry in ours if not entry[2])
    missing = len({key_of(result) for result in new if result["contestant"] == "ling"}) - len(ours)
    lines += ["", f"{same} rows are within both intervals." + (f" {missing} rows are new." if missing else "")]
    return lines, any(verdict == "slower" for _, _, verdict in ours)


# --- tables ----------------------------------------------------------------------------------------------------------
def number(value):
    return f"{value:,.0f}" if abs(value) >= 100 else f"{value:,.1f}" if abs(value) >= 10 else f"{value:,.2f}"


def cell(result):
    if result is None:
        return "-"
    spread = (result["high"] - result["low"]) / 2 / abs(result["median"]) if result["median"] else 0
    shown = f" ±{100 * spread:.0f} %" if spread >= 0.005 else ""
    return number(result["median"]) + shown + (" !" if result.get("large") else "")


def ratio_cell(a, b, less=0):
    if a is None or b is None or b["median"] - less <= 0:
        return "-"
    return f"{(a['median'] - less) / (b['median'] - less):.2f}"


def formatted(lines):
    widths = [max(map(len, column)) for column in zip(*lines)]
    rule = ["-" * (width - (i > 0)) + ":" * (i > 0) for i, width in enumerate(widths)]
    for cells in (lines[0], rule, *lines[1:]):
        padded = (text.rjust(width) if i else text.ljust(width) for i, (text, width) in enumerate(zip(cells, widths)))
        yield "| " + " | ".join(padded) + " |"


def in_order(values, preferred=()):
    found = list(dict.fromkeys(values))
    return [value for value in preferred if value in found] + [value for value in found if value not in preferred]


def contestants_table(results):
    """A row per operation, a column per contestant, and the ratios of ours to the others."""
    contestants = [name for name in in_order((r["contestant"] for r in results), PREFERRED) if name != "python"]
    by_key = {(r["row"], r["contestant"]): r for r in results}
    loop = by_key.get(("empty_loop", "python"))
    peers = [name for name in PEERS if name in contestants]
    net = [name for name in peers if name != "plain"] if loop else []
    units = in_order(r["unit"] for r in results)
    unit = f", {units[0]}" if len(units) == 1 else ""
    lines = [[f"row{unit}", *contestants, *(f"ling/{name}" for name in peers), *(f"net ling/{name}" for name in net)]]
    for row in in_order(r["row"] for r in results):
        found = [by_key.get((row, name)) for name in contestants]
        if not any(found):
            continue
        ours = by_key.get((row, "ling"))
        others = {name: by_key.get((row, name)) for name in peers}
        label = row if unit else f"{row}, {next(r for r in found if r)['unit']}"
        lines.append([label, *map(cell, found), *(ratio_cell(ours, others[name]) for name in peers),
                      *(ratio_cell(ours, others[name], loop["median"]) for name in net)])
    yield from formatted(lines)
    if loop:
        yield ""
        yield f"The Python loop alone: {cell(loop)} {loop['unit']} per turn."


def threads_table(results):
    """Calls per second, in thousands, by the number of threads."""
    counts = sorted({r["parameter"] for r in results})
    by_key = {(r["row"], r["contestant"], r["parameter"]): r for r in results}
    lines = [["thousand calls a second", "contestant", *(f"{n} thread{'s' * (n > 1)}" for n in counts), "least/1 thread"]]
    for row, who in in_order((r["row"], r["contestant"]) for r in results):
        found = [by_key.get((row, who, n)) for n in counts]
        rates = [None if r is None else 1e6 / r["median"] for r in found]
        further = [rate for rate in rates[1:] if rate is not None]
        worst = f"{min(further) / rates[0]:.2f}" if rates[0] and further else "-"
        marks = [" !" if r is not None and r.get("large") else "" for r in found]
        lines.append([row, who, *("-" if rate is None else number(rate) + mark for rate, mark in zip(rates, marks)), worst])
    yield from formatted(lines)


def growth_table(results):
    """The same where there is little of something and where there is much; 1.00 is flat."""
    by_row = {}
    for result in results:
        by_row.setdefault(result["row"], []).append(result)
    lines = [["row", "of few", "cost", "of many", "cost", "many/few"]]
    for row, found in by_row.items():
        few, many = min(found, key=lambda r: r["parameter"]), max(found, key=lambda r: r["parameter"])
        if few is many:
            continue
        lines.append([row, f"{few['parameter']:,}", f"{cell(few)} {few['unit']}", f"{many['parameter']:,}",
                      f"{cell(many)} {many['unit']}", ratio_cell(many, few)])
    yield from formatted(lines)


TABLES = {"Threads": threads_table, "Growth": growth_table}


def tables(results):
    for group in in_order(r["group"] for r in results):
        of_group = [r for r in results if r["group"] == group]
        yield f"**{group}**"
        yield ""
        yield from TABLES.get(group, contestants_table)(of_group)
        yield ""
    if any(r.get("large") for r in results):
        yield "\"!\": the spread stayed large; the interval is wider than a twentieth of the median."
