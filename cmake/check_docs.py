#!/usr/bin/env python3
"""check_docs.py [HOST]: the guides speak of what exists.

The map in docs/maintainer.md has every folder and every target; paths and links lead somewhere; the conversion tables
of docs/script-author.md have the rows that the code has. With HOST, the Python examples of the guides run in it.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
MAPPED = ("src", "tests", "benchmarks", "examples", "docs")
TOP_FOLDERS = (*MAPPED, "cmake", "scripts")
GUIDES = [*sorted((ROOT / "docs").glob("*.md")), ROOT / "README.md", ROOT / "CONTRIBUTING.md"]

faults = []


def expect_same(what, documented, actual):
    for missing in sorted(actual - documented, key=str):
        faults.append(f"{what}: {missing} is not documented")
    for stale in sorted(documented - actual, key=str):
        faults.append(f"{what}: {stale} is documented but does not exist")


def read(path):
    return (ROOT / path).read_text(encoding="utf-8")


def first_cells(table):
    return [line.split("|")[1].strip() for line in table.splitlines() if line.startswith("|")][2:]


# --- the map ---------------------------------------------------------------------------------------------------------
def folders_with_files():
    for top in MAPPED:
        for folder, subfolders, files in os.walk(ROOT / top):
            subfolders[:] = [name for name in subfolders if name != "__pycache__"]
            if files:
                yield pathlib.Path(folder).relative_to(ROOT).as_posix() + "/"


def targets():
    lists = [*ROOT.glob("CMakeLists.txt"), *ROOT.glob("*/CMakeLists.txt"), *ROOT.glob("cmake/*.cmake")]
    for path in lists:
        text = path.read_text(encoding="utf-8")
        yield from re.findall(r"add_(?:library|executable|custom_target)\((\w+)[ )]", text)


def check_map():
    text = read("docs/maintainer.md")
    cells = " ".join(first_cells(text))
    named = set(re.findall(r"`([^`]+)`", cells))
    folders = {name for name in named if name.startswith(MAPPED) and name.endswith("/")}
    expect_same("map", folders, set(folders_with_files()))
    for target in set(targets()) - named:
        faults.append(f"map: the target {target} is not documented")


def check_paths():
    for guide in GUIDES:
        text = re.sub(r"^```.*?^```", "", guide.read_text(encoding="utf-8"), flags=re.MULTILINE | re.DOTALL)
        paths = [(guide.parent, link) for link in re.findall(r"\]\(([^)#:]+)\)", text)]
        paths += [(ROOT, path) for path in re.findall(rf"`((?:{'|'.join(TOP_FOLDERS)})/[\w./]+)`", text)]
        for base, path in paths:
            if not (base / path).exists():
                faults.append(f"{guide.name}: {path} does not exist")


# --- the conversion tables -------------------------------------------------------------------------------------------
def tables():
    """source file -> rows of the table that is marked with it."""
    marked = re.findall(r"<!-- checked: (\S+) -->\n((?:\|.*\n)+)", read("docs/script-author.md"))
    return {source: [line.strip("|\n").split("|") for line in table.splitlines()[2:]] for source, table in marked}


def numbers(text):
    """The steps in "5", "5., 6." and "15. to 19."."""
    for first, last in re.findall(r"(\d+)\.?(?:(?: to |–)(\d+))?", text):
        yield from range(int(first), int(last or first) + 1)


def steps(source):
    comments = re.findall(r"^\s*// ((?:\d+\.(?:, | to )?)+) ", read(source), re.MULTILINE)
    return {step for comment in comments for step in numbers(comment)}


def check_to_python(rows):
    source = "src/bridge/to_python.cpp"
    cells = [row[0].strip() for row in rows]
    kinds = {re.match(r"`(\w+)`", cell)[1] for cell in cells if cell.startswith("`")}
    expect_same(source, kinds, set(re.findall(r"case ObjectType::(\w+):", read(source))))
    instance_steps = {int(cell.split()[1]) for cell in cells if cell.startswith("`Instance` ")}
    expect_same(f"{source}, Instance", instance_steps, steps(source))


def check_from_python(rows):
    source = "src/bridge/from_python.cpp"
    expect_same(source, {step for row in rows for step in numbers(row[0])}, steps(source))


PYTHON_NAMES = {
    "Long": "int", "Unicode": "str", "Float": "float", "Bool": "bool", "Bytes": "bytes", "ByteArray": "bytearray",
    "MemoryView": "memoryview", "Type": "type", "Tuple": "tuple", "None": "NoneType",
    "NotImplemented": "NotImplementedType",
}
DIRECTIONS = {"both": "both", "class_of_type": "to the host", "type_of_class": "to Python"}


def check_type_table(rows):
    text = read("src/python/type_table.cpp")
    imported = {name: f"{module}.{of}" for name, module, of in re.findall(r'module_attribute (\w+)\("(\w+)", "(\w+)"\)', text)}
    pattern = r"\{&(\w+?)(?:_Generic)?::getClass,\s*(?:&Py(\w+)_Type|Py_TYPE\(Py_(\w+)\)|nullptr),\s*(?:&(\w+)|nullptr),\s*direction::(\w+)"
    actual = {
        (imported[name] if name else PYTHON_NAMES.get(a or b, f"{a or b} (not in PYTHON_NAMES)"), of_class, DIRECTIONS[direction])
        for of_class, a, b, name, direction in re.findall(pattern, text)
        if direction != "names"
    }
    expect_same("src/python/type_table.cpp", {tuple(cell.strip(" `") for cell in row) for row in rows}, actual)


CHECKS = {
    "src/bridge/to_python.cpp": check_to_python,
    "src/bridge/from_python.cpp": check_from_python,
    "src/python/type_table.cpp": check_type_table,
}


# --- the examples ----------------------------------------------------------------------------------------------------
def run_examples(host):
    for guide in GUIDES:
        blocks = re.findall(r"^```python\n(.*?)^```", guide.read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL)
        with tempfile.TemporaryDirectory() as folder:
            program = pathlib.Path(folder) / "examples.py"
            program.write_text("\n".join(blocks), encoding="utf-8")
            done = subprocess.run([host, "run", program], capture_output=True, text=True, timeout=100)
        if done.returncode != 0:
            faults.append(f"{guide.name}: the Python examples fail:\n{done.stderr}")


def main():
    check_map()
    check_paths()
    found = tables()
    expect_same("checked tables", set(found), set(CHECKS))
    for source, rows in found.items():
        CHECKS[source](rows)
    if len(sys.argv) > 1:
        run_examples(sys.argv[1])
    for fault in faults:
        print(fault, file=sys.stderr)
    print(f"{len(GUIDES)} guides, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
