#!/usr/bin/env python3
"""Measures what crossing between the host and Python costs, and prints tables.

The rows are in groups; each is measured for the project (`ling`), the C API by hand (`raw`) and the peers that are
installed. Measurements of a row's contestants take turns until the interval of each median is small, or patience ends.
"""

import argparse
import json
import os
import pathlib
import platform
import random
import re
import subprocess
import sys
import tempfile
import time

import bench_compile
import bench_pictures
import bench_report

ROOT = pathlib.Path(__file__).resolve().parent.parent
PROGRAM = ROOT / "build" / "release" / "benchmarks" / "benchmarks"
# The interpreter takes the standard library of the first python3 on PATH: the system's.
ENVIRONMENT = {**os.environ, "PATH": f"/usr/bin:{os.environ['PATH']}", "PYTHONDONTWRITEBYTECODE": "1"}

SAMPLE, THREADS_SAMPLE = 0.02, 0.1  # seconds that a sample takes, about
ROUNDS = 7, 40  # at least and at most
PATIENCE = 4.0  # seconds for a row that does not settle
MANY_MODULES = 10_000
COUNTED_GROUPS = ("Python asks", "Python asks maps", "Host asks", "Growth")
COUNTED = 1_000_000  # instructions in the shorter of the two loops, about
OPTIONAL = {"PyGObject": "python3-gi", "Lupa": "python3-lupa"}
NANO = {"s": 1, "ns": 1e9, "ms": 1e3, "µs": 1e6, "bytes": 1}


def say(text):
    print(text, file=sys.stderr, flush=True)


class Failed(Exception):
    pass


class Program:
    """The benchmark program, answering; `cases` are what it can measure."""

    def __init__(self, *arguments, before=()):
        self.arguments = arguments
        self.process = subprocess.Popen([*before, PROGRAM, *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True, env=ENVIRONMENT)
        self.cases = []
        while line := self.process.stdout.readline().rstrip("\n"):
            group, row, contestant, unit, parameter, operations, countable = line.split("\t")
            self.cases.append({"program": self, "index": len(self.cases), "group": group, "row": row,
                               "contestant": contestant, "unit": unit, "parameter": int(parameter),
                               "operations": int(operations), "countable": countable == "1"})
        if not self.cases:
            sys.exit("The benchmark program did not start.")

    def measure(self, index, turns):
        """Seconds or bytes for all turns."""
        try:
            self.process.stdin.write(f"{index} {turns}\n")
            self.process.stdin.flush()
            answer = self.process.stdout.readline().strip()
        except BrokenPipeError:
            answer = ""
        if not answer or answer.startswith("failed"):
            raise Failed(answer or "the program ended")
        return float(answer)

    def close(self):
        self.process.stdin.close()
        self.process.wait()


# --- one measurement of a case, per operation ----------------------------------------------------------------------------
def calibrate(case):
    """How many turns a sample takes; they also warm up what is measured."""
    turns, wanted = 1, THREADS_SAMPLE if case["group"] == "Threads" else SAMPLE
    while True:
        seconds = case["program"].measure(case["index"], turns)
        if seconds >= wanted / 2:
            return turns
        turns = max(turns * 2, min(turns * 20, int(turns * wanted / max(seconds, 1e-6))))


def sample_time(case):
    turns = case["turns"] = case.get("turns") or calibrate(case)
    return case["program"].measure(case["index"], turns) / turns / case["operations"] * NANO[case["unit"]]


def sample_memory(case):
    """In a process of its own: what one measurement leaves behind would serve the next."""
    program = Program(*case["program"].arguments)
    try:
        return program.measure(case["index"], 1) / case["operations"]
    finally:
        program.close()


# --- what can be done once in a process only -----------------------------------------------------------------------------
def single_run(*arguments, names=""):
    """Seconds, bytes and modules."""
    done = subprocess.run([PROGRAM, *arguments], input=names, capture_output=True, text=True, env=ENVIRONMENT)
    if done.returncode != 0:
        raise Failed(done.stderr.strip().splitlines()[-1] if done.stderr else f"exit status {done.returncode}")
    seconds, size, modules = done.stdout.split()
    return float(seconds), int(size), int(modules)


def single_run_cases():
    """Rows of several values each, all of one run."""
    names = []

    def start(who):
        if who == "raw" and not names:
            done = subprocess.run([PROGRAM, "--start-imports"], stdout=subprocess.PIPE, text=True, env=ENVIRONMENT)
            names.append(done.stdout)
        seconds, size, _ = single_run(f"--start={who}", names=names[0] if who == "raw" else "")
        return seconds * 1e3, size / 1024

    def import_all(folder=""):
        seconds, size, modules = single_run("--import-all" + (f"={folder}" if folder else ""))
        return seconds / modules * 1e6, size / modules / 1024

    def import_made(count):
        with tempfile.TemporaryDirectory() as folder:
            for i in range(count):
                (pathlib.Path(folder) / f"made{i}.py").write_text("def function(): return 1\n", encoding="utf-8")
            return import_all(folder)[:1]

    start_rows = (("start", "ms"), ("start, memory", "KB"))
    import_rows = (("importAllModules, standard library, per module", "µs"),
                   ("importAllModules, standard library, memory per module", "KB"))
    grown_rows = (("importAllModules, modules", "µs"),)
    for group, rows, who, parameter, rounds, run in (
        ("Start", start_rows, "ling", 0, ROUNDS, lambda: start("ling")),
        ("Start", start_rows, "raw", 0, ROUNDS, lambda: start("raw")),
        ("Start", import_rows, "ling", 0, (1, 3), import_all),
        ("Growth", grown_rows, "ling", 1_000, (1, 3), lambda: import_made(1_000)),
        ("Growth", grown_rows, "ling", MANY_MODULES, (1, 1), lambda: import_made(MANY_MODULES)),
    ):
        yield {"group": group, "row": rows[0][0], "rows": rows, "contestant": who, "parameter": parameter,
               "rounds": rounds, "sample": run}


# --- a row ---------------------------------------------------------------------------------------------------------------
def measure_row(cases):
    """All contestants of a row in turns, in random order; (results, failures)."""
    failures = []
    begun = time.monotonic()
    for case in cases:
        case["samples"] = []
    least = max(case["rounds"][0] for case in cases)
    most = max(case["rounds"][1] for case in cases)
    for done in range(most):
        waiting = [case for case in cases if done < case["rounds"][1]]
        for case in random.sample(waiting, len(waiting)):
            try:
                case["samples"].append(case["sample"]())
            except Failed as failure:
                failures.append(f"{case['group']}: {case['row']}, {case['contestant']}: {failure}")
                cases = [other for other in cases if other is not case]
        if done + 1 >= least and (time.monotonic() - begun > PATIENCE or all(
                bench_report.is_settled(column) for case in cases for column in zip(*case["samples"]))):
            break
    results = []
    for case in cases:
        for (row, unit), column in zip(case["rows"], zip(*case["samples"])):
            median, low, high = bench_report.median_with_interval(column)
            results.append({"group": case["group"], "row": row, "contestant": case["contestant"],
                            "parameter": case["parameter"], "unit": unit, "median": median, "low": low, "high": high,
                            "samples": len(column),
                            "large": case["unit"] != "bytes" and high - low > bench_report.SETTLED * median})
    return results, failures


def prepared(case):
    """A case of the program, with how it is sampled."""
    is_memory = case["unit"] == "bytes"
    take = sample_memory if is_memory else sample_time
    return {**case, "rows": ((case["row"], case["unit"]),), "rounds": (1, 3) if is_memory else ROUNDS,
            "sample": lambda made={**case}: (take(made),)}


def selected(cases, patterns):
    """The cases that are asked for, by rows. A group's row `empty_loop` goes with any of its rows."""
    rows = {}
    for case in cases:
        rows.setdefault((case["group"], case["row"]), []).append(case)
    found = {key for key in rows if not patterns or any(re.search(p, ": ".join(key)) for p in patterns)}
    groups = {group for group, _ in found}
    return [of_row for key, of_row in rows.items() if key in found or (key[1] == "empty_loop" and key[0] in groups)]


def measure_all(patterns):
    program = Program()
    cases = list(program.cases)
    programs = [program]
    # Rows that concern the number of modules have a second half, in a program that has many.
    if any(case["group"] == "Growth" for of_row in selected(cases, patterns) for case in of_row):
        programs.append(Program(f"--modules={MANY_MODULES}"))
        cases += programs[1].cases
    rows = selected([*map(prepared, cases), *({"unit": "", **case} for case in single_run_cases())], patterns)
    results, failures = [], []
    for number, of_row in enumerate(rows, 1):
        say(f"[{number}/{len(rows)}] {of_row[0]['group']}: {of_row[0]['row']}")
        found, failed = measure_row(of_row)
        results += found
        failures += failed
    for running in programs:
        running.close()
    return results, failures


# --- counting instructions -----------------------------------------------------------------------------------------------
class Counter:
    """The program in valgrind, which writes what it counted after every measurement."""

    def __init__(self, folder, *arguments):
        self.folder = pathlib.Path(folder)
        self.program = Program(*arguments, before=(
            "valgrind", "--tool=callgrind", "--quiet", "--collect-atstart=no", "--toggle-collect=measured_turns",
            "--dump-after=measured_turns", f"--callgrind-out-file={self.folder / 'counted'}"))

    def count(self, case, turns):
        for written in self.folder.iterdir():
            written.unlink()
        self.program.measure(case["index"], turns)
        (written,) = self.folder.iterdir()
        return int(re.search(r"^(?:totals|summary): (\d+)", written.read_text(encoding="utf-8"), re.MULTILINE)[1])

    def per_operation(self, case):
        """The difference of two loops, so that what comes before and after is not counted.

        Before that it is run for longer: the interpreter adapts to what it runs, ever more rarely.
        """
        once = max(self.count(case, 1), 1)
        if once < COUNTED / 10:
            once = max(self.count(case, 10) // 10, 1)
        turns = max(1, min(1000, int(float(f"{COUNTED / once:.0e}"))))
        if turns > 1:
            self.count(case, turns if turns < 100 else 20 * turns)
        less, more = self.count(case, turns), self.count(case, 2 * turns)
        return (more - less) / turns / case["operations"]


def count_all(patterns):
    ENVIRONMENT["PYTHONHASHSEED"] = "0"
    results, failures = [], []
    for arguments in ((), (f"--modules={MANY_MODULES}",)):
        with tempfile.TemporaryDirectory() as folder:
            counter = Counter(folder, *arguments)
            cases = [case for case in counter.program.cases if case["countable"] and case["group"] in COUNTED_GROUPS]
            rows = selected(cases, patterns)
            if arguments and not rows:
                continue
            for number, of_row in enumerate(rows, 1):
                say(f"[{number}/{len(rows)}] {of_row[0]['group']}: {of_row[0]['row']}")
                for case in of_row:
                    try:
                        counted = counter.per_operation(case)
                    except Failed as failure:
                        failures.append(f"{case['group']}: {case['row']}, {case['contestant']}: {failure}")
                        continue
                    results.append({"group": case["group"], "row": case["row"], "contestant": case["contestant"],
                                    "parameter": case["parameter"], "unit": "instructions", "median": counted,
                                    "low": counted, "high": counted, "samples": 1, "large": False})
            counter.program.close()
    return results, failures


# --- the command ---------------------------------------------------------------------------------------------------------
def machine():
    model = ""
    try:
        model = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8"))[1]
    except (OSError, TypeError):
        pass
    return {"processor": model or platform.machine(), "cores": os.cpu_count(), "python": platform.python_version(),
            "system": platform.platform()}


def left_out(results):
    there = {result["contestant"] for result in results}
    return [f"{name} ({package})" for name, package in OPTIONAL.items() if name not in there]


def lines_of(measured):
    yield from bench_report.tables(measured["results"])
    if measured["left_out"]:
        yield f"Not installed: {', '.join(measured['left_out'])}."
    for failure in measured["failed"]:
        yield f"Failed: {failure}"


def publish(measured, shown):
    """The guide has a place for each kind of results."""
    guide = ROOT / "docs" / "benchmarks.md"
    before, mark, rest = guide.read_text(encoding="utf-8").partition(f"<!-- measured: {measured['kind']} -->\n")
    _, end, after = rest.partition("<!-- end -->\n")
    if not end:
        sys.exit(f"{guide} has no place for results of the kind {measured['kind']}.")
    tables = "\n".join(shown).strip()
    guide.write_text(f"{before}{mark}\n{tables}\n\n{end}{after}", encoding="utf-8")
    if measured["kind"] == "time":
        bench_pictures.draw(measured["results"])


def parse(arguments):
    parser = argparse.ArgumentParser(
        prog="scripts/bench", description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter,
        epilog="Exit status: 0; 1 when a row fails, or with --compare when something became slower.")
    parser.add_argument("rows", nargs="*", metavar="PATTERN", help="only rows whose \"Group: row\" has one of these "
                        "regular expressions in it, e.g. 'Host asks' or 'Python asks: method'")
    what = parser.add_mutually_exclusive_group()
    what.add_argument("--instructions", action="store_true", help="count instructions per operation with valgrind "
                      "instead of measuring time, for machines whose clock cannot be trusted")
    what.add_argument("--compile", action="store_true", help="measure what 30 described classes cost to build instead")
    what.add_argument("--from", dest="source", metavar="FILE", help="measure nothing: take the results of FILE")
    parser.add_argument("--json", metavar="FILE", help="write the results to FILE")
    parser.add_argument("--compare", metavar="OLD", help="say what became slower and faster since the results in OLD")
    parser.add_argument("--publish", action="store_true", help="put the tables into docs/benchmarks.md; those of times "
                        "with the pictures docs/benchmarks.svg and docs/growth.svg")
    return parser.parse_args(arguments)


def read(file):
    with open(file, encoding="utf-8") as text:
        return json.load(text)


def main():
    options = parse(sys.argv[1:])
    old = read(options.compare) if options.compare else None
    if options.source:
        measured = read(options.source)
    else:
        kind, measure = ("compile", bench_compile.measure_all) if options.compile else \
            ("instructions", count_all) if options.instructions else ("time", measure_all)
        results, failed = measure(options.rows)
        measured = {"kind": kind, "machine": machine(), "results": results, "failed": failed,
                    "left_out": [] if options.compile or options.rows else left_out(results)}
    if options.json:
        with open(options.json, "w", encoding="utf-8") as file:
            json.dump(measured, file, indent=1)
    shown = list(lines_of(measured))
    if options.publish:
        publish(measured, shown)
    print(*shown, sep="\n")
    slower = False
    if old:
        if old["kind"] != measured["kind"]:
            sys.exit(f"{options.compare} has results of another kind: {old['kind']}.")
        lines, slower = bench_report.comparison(old["results"], measured["results"])
        print("", *lines, sep="\n")
    return 1 if slower or measured["failed"] else 0


if __name__ == "__main__":
    sys.exit(main())
