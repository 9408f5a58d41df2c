# Running a program and how it ends: whatever it has done to its interpreter, as with the interpreter that is embedded.
import os
import pathlib
import py_compile
import re
import subprocess
import tempfile
import unittest
import zipfile

from command_test import COMMAND, PYTHON, CommandTest, outcome

BEGIN = "import atexit, sys\natexit.register(print, 'exit handler')\nprint('output')\n"
FAILURE = "\nsys.undefined_name"
MODULES = "'traceback', 'io', 'gc', 'threading', 'atexit', 'os', 'signal', 'types', 'warnings', 'runpy', 'codecs'"

with open("/proc/self/maps") as maps:
    SANITIZED = "libasan" in maps.read()

# What a program can do to its interpreter. Each fails afterwards, so that there is output, a traceback, a status.
SPOILED = {
    "junk for modules": f"for name in {MODULES}: sys.modules[name] = 5",
    "nothing can be imported": "sys.modules.clear(); sys.meta_path = None; sys.path = 5; sys.path_hooks.clear()",
    "no stack": "sys.setrecursionlimit(8)",
    "no builtins": "import builtins, logging, threading\nvars(builtins).clear()",
    "audit hook that refuses": "def refuse(event, _):\n    raise RuntimeError(event)\nsys.addaudithook(refuse)",
    "another stream": "sys.stdout = open('written', 'w'); print('text')",
    "a stream that fails": "class Stream:\n    def write(self, _): pass\n    def flush(self): sys.exit(4)\nsys.stdout = Stream()",
}

# Ways to begin and to end, with the output, the errors and the status of each.
ENDS = {
    "names": "print(__name__, __doc__, __spec__, __package__, __builtins__, __annotations__, sorted(globals()))",
    "signals": "import signal; print(signal.getsignal(signal.SIGINT), signal.getsignal(signal.SIGPIPE))",
    "exit with a text": "sys.exit('a reason')",
    "failing excepthook": "def hook(t, v, tb):\n    raise ValueError('hook')\nsys.excepthook = hook\n1 / 0",
    "excepthook that exits": "sys.excepthook = lambda *_: sys.exit(6)\n1 / 0",
    "error that refuses": "class Refusing(Exception):\n    def __getattribute__(self, name): raise KeyError(name)\n    def __setattr__(self, *_): raise KeyError\nraise Refusing",
    "interrupt": "import os, signal, time\nos.kill(os.getpid(), signal.SIGINT)\ntime.sleep(100)",
    "kind of interrupt": "class Other(KeyboardInterrupt): pass\nraise Other",
    "interrupt handled by a hook": "sys.excepthook = lambda *_: sys.exit(6)\nraise KeyboardInterrupt",
    "names of the file after an exit": "atexit.register(lambda: print('__file__' in globals(), '__cached__' in globals())); sys.exit()",
    "names of the file after an error": "atexit.register(lambda: print('__file__' in globals(), '__cached__' in globals())); 1 / 0",
    "exit without a code": "class Exit(SystemExit):\n    @property\n    def code(self): raise ValueError\nraise Exit(9)",
    "exit handlers": "def fail():\n    raise ValueError\natexit.register(fail); atexit.register(sys.exit, 3)",
    "threads that cannot be waited for": "import threading\ndef fail():\n    raise ValueError\nthreading._shutdown = fail",
    "exit of a child": "import os\nsys.stdout.flush()\nif os.fork():\n    os.wait()\nelse:\n    raise KeyboardInterrupt",
    "busy daemons": "import threading\ndef work():\n    while True: pass\nfor _ in range(3): threading.Thread(target=work, daemon=True).start()",
    "another run": "import os\nprint(sys.executable == sys._base_executable, sys.version, flush=True)\nif len(sys.argv) == 1:\n    os.execv(sys.executable, [*getattr(sys, 'orig_argv', [sys.executable, *sys.argv]), 'again'])",
    "output that is lost": "import os; os.close(1)",
    "output to a full disk": "import os; os.dup2(os.open('/dev/full', os.O_WRONLY), 1)",
    "output to nowhere": "sys.stdout.close()",
    "audit hook": "sys.addaudithook(lambda event, _: print(event))\nclass Final:\n    def __del__(self): print('finalised')\nfinal = Final()",
}

# Objects that live until the end; FINAL has a finaliser.
FINAL = "class Final:\n    def __init__(self, name): self.name = name\n    def __del__(self): print('finalised', self.name)\n"
LET_GO = {
    "of a module": "import neighbour",
    "in order": "import builtins\nclass Final:\n    def __init__(self, name): self.name = name\n    def __del__(self): print('finalised', self.name, eval('1'))\nfor name in 'b', '_a', '__c', 'a': setattr(neighbour, name, Final(name))\nbuiltins.neighbour = neighbour",
    "of other modules": "neighbour.final.me = neighbour.final = None\nimport builtins, os\nbuiltins.final = neighbour.Final('builtins')\nos.final = neighbour.Final('os')",
    "by a signal's handler": "import signal\ndef stop(*_): pass\nsignal.signal(signal.SIGTERM, stop)\nfile = open('written', 'w'); file.write('text')",
    "by the interpreter": "neighbour.final.me = neighbour.final = None\nimport codecs\ncodecs.register(lambda name: None)\nfile = open('written', 'w'); file.write('text')",
    "files": "import builtins, os\nfor holder in sys, builtins, neighbour, os:\n    holder.file = open('written-' + holder.__name__, 'w')\n    holder.file.write('text')",
    "a thread is left": "neighbour.final.me = neighbour.final = None\nimport threading, time\nthreading.Thread(target=time.sleep, args=(100,), daemon=True).start()\nfinal = neighbour.Final('main')",
}


# How a crash of the interpreter itself ends is not for a sanitizer to say.
os.environ["ASAN_OPTIONS"] = os.environ.get("ASAN_OPTIONS", "") + ":handle_segv=0"


class ProgramEnd(CommandTest):
    def both(self, program, **options):
        """What python3 makes of the program, and what the command does."""
        results = []
        for command in [PYTHON], [COMMAND, "run"]:
            with tempfile.TemporaryDirectory() as folder:
                status, out, err = outcome([*command, program], cwd=folder, **options)
                written = {name: pathlib.Path(folder, name).read_text() for name in sorted(os.listdir(folder))}
                results.append((status, out, re.sub("0x[0-9a-f]+", "0x…", err), written))
        return results

    def compare(self, table, begin=BEGIN, end=""):
        for case, text in table.items():
            with self.subTest(case):
                expected, got = self.both(self.write("program.py", begin + text + end))
                self.assertEqual(got, expected)

    def test_spoiled_interpreters(self):
        self.compare(SPOILED, end=FAILURE)

    def test_ends(self):
        self.compare(ENDS)

    def test_lets_go(self):
        self.write("neighbour.py", FINAL + "import other\nfinal = Final('module'); final.me = final")
        self.write("other.py", "import neighbour")
        self.compare(LET_GO, begin=BEGIN + "import neighbour\n")

    @unittest.skipIf(SANITIZED, "a sanitizer ends where memory does")
    def test_without_memory(self):
        limit = "import resource\nresource.setrlimit(resource.RLIMIT_AS, (1, 1))\nkept = sys.kept = []\n"
        fill = "while True: kept.append(dict())"
        for text in fill, f"try:\n    {fill}\nexcept MemoryError: pass":
            with self.subTest(text):
                expected, got = self.both(self.write("program.py", BEGIN + limit + text))
                self.assertEqual(got[:2], expected[:2])
                # Which allocation fails is chance, and with it how much of the report there is.
                self.assertEqual("MemoryError" in got[2], got[0] != 0, got[2])


class Kinds(CommandTest):
    TEXT = "import sys\nprint(__name__, sys.argv, sys.path[0], getattr(__loader__, 'path', None) or __loader__)\nprint(neighbour)"

    def test_runs_what_python_runs(self):
        source = self.write("program.py", self.TEXT.replace("neighbour", "5"))
        compiled = py_compile.compile(source, self.path("compiled.pyc"))
        with open(compiled, "rb") as file:
            code = file.read()
        package = os.path.dirname(self.write("package/__main__.py", self.TEXT))
        archive = self.path("archive.pyz")
        with zipfile.ZipFile(archive, "w") as file:
            file.write(self.path("package/__main__.py"), "__main__.py")
        programs = [
            compiled, package, archive, os.path.join(self.folder, "package", "..", "program.py"),
            self.write("named_otherwise", code), self.write("cut.pyc", code[:30]), self.write("other.pyc", b"text"),
            self.write("null.py", b"print(1)\n\0"),
        ]
        for program in programs:
            with self.subTest(program):
                self.assertEqual(self.ling("run", program, "a"), outcome([PYTHON, program, "a"]))

    def test_runs_what_is_read_once(self):
        done = subprocess.run([COMMAND, "run", "/dev/stdin"], input=b"print(__file__)", stdout=subprocess.PIPE, timeout=100)
        self.assertEqual((done.returncode, done.stdout), (0, b"/dev/stdin\n"))


if __name__ == "__main__":
    unittest.main()
