# importAllModules, among modules that do all they should not.
import inspect  # as pkgutil: needed while the path does not lead to the library
import os
import pathlib
import pkgutil
import signal
import subprocess
import sys
import tempfile
import warnings

import ling


MODULES = {
    "good.py": "'A good one.'\nvalue = 42\ndef add(a: int, b): return a + b\nclass Thing:\n  'Some.'",
    "name_taker.py": "name = doc = 'mine'\nclasses = callables = 3",
    "prints.py": "import sys\nprint('PRINTED'); sys.stderr.write('PRINTED'); sys.__stdout__.write('PRINTED')\n"
    "kept = sys.stdout",
    "reads.py": "input()",
    "closes_files.py": "import os\nfor n in range(3): os.close(n)",
    "replaces.py": "import sys, os, io\nsys.stdout = io.StringIO(); sys.stdin = None; os.environ = {}; sys.argv = None",
    "duplicates.py": "import os, tempfile\nos.dup2(os.open(tempfile.gettempdir(), os.O_RDONLY), 1)",
    "changes.py": "import os, signal\nos.chdir('/'); signal.signal(signal.SIGINT, signal.SIG_IGN)\n"
    "os.environ['ADDED'] = '1'; os.environ['PATH'] = 'x'; del os.environ['KEPT']",
    "leaves.py": "import sys\nsys.exit(3)",
    "raises.py": "raise BaseException('no')",
    "spawns.py": "import subprocess\nsubprocess.run(['cat'])",
    "forks.py": "import os\nif os.fork() == 0: raise SystemExit(0)\nos.wait()",
    "rings.py": "import signal\nsignal.signal(signal.SIGALRM, print)\nsignal.setitimer(signal.ITIMER_REAL, 0.05)",
    "again.py": "import ling\nling.cpython.importAllModules()\ndone = True",
    "warns.py": "import warnings\nwarnings.catch_warnings().__enter__()",
    "_hidden.py": "",
    "antigravity.py": "import os\nos._exit(9)",
    "box/__init__.py": "'A package.'\nfrom . import inner\ninner = 'replaced by the module'",
    "box/inner.py": "value = 1",
    "box/fails/__init__.py": "1 / 0",
}
LEFT_OUT = "reads leaves raises _hidden antigravity box.fails".split()


def state():
    files = [os.fstat(number) for number in range(3)]
    return {
        "streams": [sys.stdin, sys.stdout, sys.stderr, sys.__stdin__, sys.__stdout__, sys.__stderr__, sys.argv],
        "files": [(each.st_dev, each.st_ino) for each in files],
        "environment": (os.environ, dict(os.environ), os.environb[b"PATH"]),
        "directory": os.getcwd(),
        "warnings": list(warnings.filters),
        "interrupt": signal.getsignal(signal.SIGINT),
    }


def main():
    os.environ["KEPT"] = "1"
    with tempfile.TemporaryDirectory() as folder:
        for name, text in MODULES.items():
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        os.symlink(".", pathlib.Path(folder, "box", "endless"))
        path, sys.path[:] = list(sys.path), [folder]
        before = state()
        open_files = len(os.listdir("/proc/self/fd"))
        assert ling.cpython.CPythonLanguage.importAllModules() is None
        after = state()
        assert ling.cpython.importAllModules() is None, "a second time"
        sys.path[:] = path
    assert len(os.listdir("/proc/self/fd")) < open_files + 9, "shields leave files open"
    for what in before:
        assert before[what] == after[what], (what, before[what], after[what])

    for file in MODULES:
        name = file.replace("/__init__.py", "").replace(".py", "").replace("/", ".")
        assert bool(ling.find_module(f"python.{name}")) is (name not in LEFT_OUT), name
    assert max(ling.qualname(module).count(".endless") for module in ling.modules()) == 16

    python = ling.find_module("python")
    good = python.good
    assert (good.doc, good.value, good.add(2, b=3), good.Thing.__doc__) == ("A good one.", 42, 5, "Some.")
    assert python.box.inner.value == 1 and python.again.done
    taker = python.name_taker
    assert (taker.name, taker.classes, ling.qualname(taker)) == ("mine", 3, "python.name_taker")
    sys.modules["prints"].kept.write("")  # leads to the real stream by now


main()
