#!/usr/bin/env python3
"""scripts/bench_report.py RESULTS: one table from Google Benchmark's JSON, a row per operation, a column per contestant.

Prints nanoseconds per operation, the median of the repetitions, and how many times the project takes what the others
take. "net" ratios leave out what the Python loop around the operation costs (the row `empty_loop`).
"""

import collections
import json
import statistics
import sys

CONTESTANTS = ("ling", "pybind11", "raw")
LOOP = ("empty_loop", "python")
HEADER = ("row", "ling ns", "pybind11 ns", "raw ns", "ling/pybind11", "ling/raw", "net ling/pybind11", "net ling/raw")
UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def read(results):
    """(row, contestant) -> nanoseconds; the rows that run inside a Python loop; failures."""
    samples = collections.defaultdict(list)
    in_loop = set()
    failed = []
    for run in results["benchmarks"]:
        if run.get("run_type") != "iteration":
            continue
        row, contestant, *options = run["run_name"].split("/")
        if run.get("error_occurred"):
            failed.append(f"{row}/{contestant}: {run['error_message']}")
            continue
        # Calls from several threads take turns, so only the clock on the wall tells what they cost; the time of one
        # thread is taken from the processor's clock, which other programs on the machine do not move.
        if "real_time" in options:
            time = run["real_time"]
            row += f", {run['threads']} thread" + "s" * (run["threads"] > 1)
        elif "manual_time" in options:
            time = run["real_time"]
        else:
            time = run["cpu_time"]
            in_loop.add(row)
        samples[row, contestant].append(time * UNITS[run["time_unit"]])
    return {key: statistics.median(times) for key, times in samples.items()}, in_loop, failed


def ratio(a, b):
    return f"{a / b:.2f}" if a is not None and b is not None and b > 0 else "-"


def line(row, times, loop):
    ling, peer, raw = (times.get((row, contestant)) for contestant in CONTESTANTS)
    cells = [row, *("-" if t is None else f"{t:,.1f}" for t in (ling, peer, raw)), ratio(ling, peer), ratio(ling, raw)]
    if loop is None:
        return [*cells, "", ""]
    net = [None if t is None else t - loop for t in (ling, peer, raw)]
    return [*cells, ratio(net[0], net[1]), ratio(net[0], net[2])]


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with open(sys.argv[1], encoding="utf-8") as file:
        results = json.load(file)
    times, in_loop, failed = read(results)
    loop = times.pop(LOOP, None)
    lines = [list(HEADER)]
    # The order of the results is that of the run, which is random.
    for row in sorted({row for row, _ in times}, key=lambda row: (row not in in_loop, row)):
        lines.append(line(row, times, loop if row in in_loop else None))
    widths = [max(map(len, column)) for column in zip(*lines)]
    lines.insert(1, ["-" * (width - (i > 0)) + ":" * (i > 0) for i, width in enumerate(widths)])
    for cells in lines:
        texts = (cell.rjust(width) if i else cell.ljust(width) for i, (cell, width) in enumerate(zip(cells, widths)))
        print("| " + " | ".join(texts) + " |")
    if loop is not None:
        print(f"\nThe Python loop alone: {loop:.1f} ns per turn.")
    for failure in dict.fromkeys(failed):
        print(f"Failed: {failure}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
