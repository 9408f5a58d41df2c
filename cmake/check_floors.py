#!/usr/bin/env python3
"""Checks who includes whom under src/: every folder stands on a floor, and no file is in a circle of includes."""

import fnmatch
import pathlib
import re
import sys

# From the ground up. A file includes files of its own folder and of lower floors; folders of one floor never meet.
FLOORS = [
    ["ling"],             # the runtime, as hosts see it
    ["ling/detail"],      #   and what only its own files and the language module see
    ["ling/values"],
    ["ling/algorithms"],
    ["ling/containers"],
    ["ling/callables"],
    ["ling/classes"],
    ["ling/modules"],
    ["command", "corvantis", "python"],
    ["lingobject", "proxies", "function", "language"],
    ["bridge"],
    ["extension"],
]
FLOOR = {folder: floor for floor, folders in enumerate(FLOORS) for folder in folders}
# What hosts are: they see the runtime's public face and nothing else.
HOSTS = ["command", "corvantis"]

# Libraries that are known to one place only.
LIBRARIES = [
    # header           who may include it
    ("Python.h",       "python/python_api.h"),
    ("structmember.h", "python/python_api.h"),
    ("datetime.h",     "python/python_api.h"),
    ("spdlog/*",       "ling/modules/logger*.cpp"),
    ("CLI/*",          "command/*"),
    ("nlohmann/*",     "command/inspect.cpp"),
    ("boost/*",        "ling/values/decimal_product.cpp"),
]

SOURCE = pathlib.Path(__file__).resolve().parent.parent / "src"
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.MULTILINE)


def faults_of(path, included, files):
    """Why `path` must not include `included`, if so."""
    here, there = (str(pathlib.PurePosixPath(each).parent) for each in (path, included))
    if included in files and here != there:
        if FLOOR[there] >= FLOOR[here]:
            yield f"{path} includes {included}, which is not below"
        if there.startswith("ling/") and there != "ling/detail" and not here.startswith("ling"):
            yield f"{path} includes {included}, which only the runtime sees"
        if here in HOSTS and there != "ling":
            yield f"{path} includes {included}, which hosts do not see"
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

    folders = {str(pathlib.PurePosixPath(path).parent) for path in files}
    if folders != set(FLOOR):
        sys.exit(f"no floor, or no folder: {sorted(folders ^ set(FLOOR))}")
    faults = [fault for path in sorted(files) for each in includes[path] for fault in faults_of(path, each, files)]
    circle = find_circle(includes)
    if circle:
        faults.append("circle of includes: " + " -> ".join(circle))

    for fault in faults:
        print(fault, file=sys.stderr)
    print(f"{len(files)} files, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
