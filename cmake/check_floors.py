#!/usr/bin/env python3
"""Checks who includes whom under src/: a file includes only lower floors and its own room, and nothing in a circle."""

import fnmatch
import pathlib
import re
import sys

# The first pattern that matches a file decides its floor.
FLOORS = [
    # pattern                    floor
    ("ling/*",                   0),  # the runtime
    ("extension/python_api.*",   1),  # the C API,
    ("extension/pyobject_ptr.*", 1),  #   references and the lock,
    ("extension/thread_end*",    1),  #   (which belong to threads),
    ("extension/interpreter.h",  1),  #   whether the interpreter runs (starting it is declared only),
    ("extension/type_layout.*",  1),  #   layouts of type structs
    ("bridge/convert.h",         2),  # what every room needs to know of conversion,
    ("bridge/error_bridge.h",    2),  #   errors,
    ("bridge/python_text.h",     2),  #   texts,
    ("bridge/python_call.h",     2),  #   calls,
    ("bridge/python_equality.h", 2),  #   equality,
    ("bridge/python_source.h",   2),  #   source text,
    ("bridge/function_body.h",   2),  #   bodies of functions,
    ("bridge/python_modules.h",  2),  #   modules,
    ("bridge/python_helper.h",   2),  #   functions of our own,
    ("bridge/module_attribute.h",2),  #   attributes of modules,
    ("bridge/pending_exception.h",2), #   pending exceptions,
    ("bridge/silent_warnings.h", 2),  #   warnings
    ("extension/interpreter.h",  2),  #   and the running interpreter: declarations only
    ("language/*",               3),  # the rooms: they meet in the declarations below, never in each other
    ("function/*",               3),
    ("proxies/*",                3),
    ("lingobject/*",             3),
    ("bridge/*",                 4),  # the dispatch tables, which see every room
    ("extension/*",              5),  # start sequence and entry points
    ("corvantis/*",              1),  # for hosts, which know only the runtime
    ("host/*",                   1),  # the command: a host like any other, so it knows only the runtime
]

# Libraries that are known to one place only.
LIBRARIES = [
    # header           who may include it
    ("Python.h",       "extension/python_api.h"),
    ("structmember.h", "extension/python_api.h"),
    ("datetime.h",     "extension/python_api.h"),
    ("spdlog/*",       "ling/*logger*.cpp"),
    ("CLI/*",          "host/*"),
    ("nlohmann/*",     "host/inspect.cpp"),
    ("boost/*",        "ling/detail/decimal_product.cpp"),
]

SOURCE = pathlib.Path(__file__).resolve().parent.parent / "src"
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.MULTILINE)


def floor_of(path):
    return next((floor for pattern, floor in FLOORS if fnmatch.fnmatch(path, pattern)), None)


def room_of(path):
    return path.split("/")[0]


def faults_of(path, included, files):
    """Why `path` must not include `included`, if so."""
    if included in files:
        here, there = floor_of(path), floor_of(included)
        if there is not None and (there > here or (there == here and room_of(path) != room_of(included))):
            yield f"{path} (floor {here}) includes {included} (floor {there})"
    for library, reader in LIBRARIES:
        if fnmatch.fnmatch(included, library) and not fnmatch.fnmatch(path, reader):
            yield f"{path} includes <{included}>, which only {reader} may"


def find_circle(includes):
    """The files of one circle of includes, or nothing."""
    finished = set()

    def walk(path, trail):
        if path in trail:
            return trail[trail.index(path):] + [path]
        if path in finished:
            return None
        for included in includes.get(path, []):
            circle = walk(included, trail + [path])
            if circle:
                return circle
        finished.add(path)
        return None

    return next(filter(None, (walk(path, []) for path in sorted(includes))), None)


def main():
    files = {p.relative_to(SOURCE).as_posix(): p for p in SOURCE.rglob("*") if p.suffix in (".h", ".cpp")}
    includes = {path: INCLUDE.findall(file.read_text(encoding="utf-8")) for path, file in files.items()}

    faults = [f"{path} has no floor: add it to the table" for path in files if floor_of(path) is None]
    for path in sorted(files):
        if floor_of(path) is not None:
            for included in includes[path]:
                faults.extend(faults_of(path, included, files))
    circle = find_circle(includes)
    if circle:
        faults.append("circle of includes: " + " -> ".join(circle))

    for fault in faults:
        print(fault, file=sys.stderr)
    print(f"{len(files)} files, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
