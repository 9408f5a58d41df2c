# The command: what it prints, where, and with which exit status. `run` is held against the interpreter that is embedded.
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
import unittest

COMMAND = os.environ["LING_COMMAND"]
os.environ.pop("PYTHONUNBUFFERED", None)  # when output is lost depends on it
PYTHON = os.path.join(sys.base_prefix, "bin", "python%d.%d" % sys.version_info[:2])

# Programs that must behave the same under python3: by case, the text and what it is about.
PROGRAMS = {
    "names": "print(__name__, __doc__, __spec__, __package__, __builtins__, __annotations__, sorted(globals()))",
    "doc": "'What it does.'\nprint(__doc__)",
    "directory on the path": "import sys, os; print(sys.path[0] == os.path.dirname(os.path.realpath(__file__)), os.path.isabs(__file__))",
    "own source": "import inspect\ndef f():\n    return 1\nprint(inspect.getsource(f))",
    "encoding line": b"# coding: latin-1\nprint(ascii('\xe9'))",
    "byte order mark": b"\xef\xbb\xbfprint('marked')",
    "windows lines": b"if True:\r\n    print('lines')\r\n",
    "no inherited future": "def f(x: undefined_name): pass",
    "exception in a neighbour": "import neighbour\nneighbour.fail()",
    "exception while handling": "try:\n    1 / 0\nexcept ZeroDivisionError:\n    undefined_name",
    "syntax error": "x = 1\nif x\n    pass",
    "recursion": "def f(): f()\ntry:\n    f()\nexcept RecursionError: print('caught')",
    "exit without status": "import sys; sys.exit()",
    "exit with a negative number": "import sys; sys.exit(-1)",
    "exit with a text": "import sys; print('out'); sys.exit('a reason')",
    "exit in a thread": "import sys, threading\nt = threading.Thread(target=sys.exit, args=(5,)); t.start(); t.join()",
    "own excepthook": "import sys\nsys.excepthook = lambda t, v, tb: print('hook', t.__name__, v, tb.tb_lineno)\n1 / 0",
    "failing excepthook": "import sys\ndef hook(t, v, tb):\n    raise ValueError('hook')\nsys.excepthook = hook\n1 / 0",
    "excepthook that exits": "import sys\ndef hook(*_):\n    sys.exit(6)\nsys.excepthook = hook\n1 / 0",
    "waits for threads": (
        "import threading, time\ndef work():\n    time.sleep(0.2)\n    print('worked')\n"
        "threading.Thread(target=work).start()\nprint('main ends')"
    ),
    "leaves daemons": (
        "import threading, time\nthreading.Thread(target=time.sleep, args=(100,), daemon=True).start()\nprint('main ends')"
    ),
    "finaliser of a global": (
        "import os\nclass A:\n    def __init__(self):\n        self.me = self\n"
        "    def __del__(self):\n        print('finalised', os.path.basename('a/b'))\na = A()"
    ),
    "unclosed file": "import sys\nf = open(sys.argv[1], 'w'); f.write('text'); g = open(sys.argv[1] + '2', 'wb'); g.write(b'x')",
    "signals": "import signal; print(signal.getsignal(signal.SIGINT), signal.getsignal(signal.SIGPIPE))",
}
NEIGHBOUR = "value = 5\ndef fail():\n    raise KeyError('neighbour')\n"


def outcome(command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=100, **options)
    return done.returncode, done.stdout.decode(errors="backslashreplace"), done.stderr.decode(errors="backslashreplace")


class CommandTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.write("neighbour.py", NEIGHBOUR)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "wb") as file:
            file.write(text if isinstance(text, bytes) else text.encode())
        return self.path(name)

    def ling(self, *arguments, **options):
        return outcome([COMMAND, *arguments], **options)

    def run_text(self, text, *arguments, **options):
        return self.ling("run", self.write("program.py", text), *arguments, **options)


class Run(CommandTest):
    def test_behaves_like_python(self):
        for case, text in PROGRAMS.items():
            with self.subTest(case):
                program = self.write("program.py", text)
                written = self.path("written")
                expected = outcome([PYTHON, program, written])
                files = [self.take(written), self.take(written + "2")]
                self.assertEqual(self.ling("run", program, written), expected)
                self.assertEqual([self.take(written), self.take(written + "2")], files)

    def take(self, path):
        if not os.path.exists(path):
            return None
        with open(path, "rb") as file:
            content = file.read()
        os.remove(path)
        return content

    def test_passes_arguments_through(self):
        for arguments in ["--help"], ["-x", "--", "--load", "y"], ["", "run", "a b"], ["[1, 2]", "-1"], [b"\xff\xfe"]:
            with self.subTest(arguments):
                status, out, _ = self.run_text("import os, sys; print([os.fsencode(a) for a in sys.argv[1:]])", *arguments)
                self.assertEqual((status, out), (0, "%r\n" % [os.fsencode(a) for a in arguments]))

    def test_ends_with_255_for_statuses_beyond_any_range(self):
        # As python3 does; what that says of it is another thing in every version.
        self.assertEqual(self.run_text("import sys; sys.exit(1 << 70)")[:2], (255, ""))

    def test_keeps_the_program_name_as_given(self):
        self.write("program.py", "import sys; print(sys.argv, sys.path[0])")
        expected = "['./program.py'] %s\n" % os.path.realpath(self.folder)
        self.assertEqual(self.ling("run", "./program.py", cwd=self.folder), (0, expected, ""))

    def test_finds_neighbours_of_the_linked_file(self):
        os.mkdir(self.path("elsewhere"))
        self.write("program.py", "import neighbour; print(neighbour.value)")
        os.symlink(self.path("program.py"), self.path("elsewhere/link.py"))
        self.assertEqual(self.ling("run", self.path("elsewhere/link.py")), (0, "5\n", ""))

    def test_finds_the_packages_of_the_user(self):
        folder = os.path.join(self.folder, "Corvantis", "Python313")
        os.makedirs(folder)
        os.rename(self.path("neighbour.py"), os.path.join(folder, "own_package.py"))
        environment = dict(os.environ, LOCALAPPDATA=self.folder)
        self.assertEqual(self.run_text("import own_package; print(own_package.value)", env=environment), (0, "5\n", ""))

    def test_reports_a_missing_file(self):
        status, out, err = self.ling("run", self.path("missing.py"))
        self.assertEqual((status, out), (2, ""))
        self.assertIn("missing.py': [Errno 2] No such file or directory", err)

    def test_tells_when_output_is_lost(self):
        for text, status in ("print('x')", 120), ("print('x' * 100000)", 1), ("print('x'); raise SystemExit(3)", 120):
            with self.subTest(text):
                reader, writer = os.pipe()
                os.close(reader)
                process = subprocess.run(
                    [COMMAND, "run", self.write("program.py", text)], stdout=writer, stderr=subprocess.PIPE, timeout=100
                )
                os.close(writer)
                self.assertEqual(process.returncode, status, process.stderr)
                self.assertIn(b"BrokenPipeError: [Errno 32] Broken pipe", process.stderr)

    def test_prints_any_text_without_a_locale(self):
        for variables in {}, {"LC_ALL": "C"}, {"LC_ALL": "C.UTF-8"}:
            with self.subTest(variables):
                environment = {k: v for k, v in os.environ.items() if not k.startswith(("LC_", "LANG"))}
                status, out, err = self.run_text("print('\u00e9\u4e2d')", env=dict(environment, **variables))
                self.assertEqual((status, out, err), (0, "\u00e9\u4e2d\n", ""))


class Log(CommandTest):
    PROGRAM = (
        "import logging, sys\nlog = logging.getLogger('app')\n"
        "log.debug('dropped by Python'); log.info('%s', 1); log.warning('two\\nlines')\n"
        "try:\n    {}['key']\nexcept KeyError:\n    log.exception('caught')\n"
        "logging.basicConfig(level=logging.DEBUG); log.critical('end')\n"
        "log.setLevel(logging.DEBUG); log.debug('lowered')"
    )
    TRACEBACK = "Traceback (most recent call last):"
    LEVELS = ["debug", "info", "warning", "error", "critical", "off"]

    def test_holds_what_programs_log(self):
        lines = ["info 1", "warning two", "lines", "error caught", self.TRACEBACK, "critical end", "debug lowered"]
        for level in [None, *self.LEVELS]:
            with self.subTest(level):
                options = ["--log-level", level] if level else []
                status, out, err = self.ling(*options, "run", self.write("program.py", self.PROGRAM))
                self.assertEqual((status, out), (0, ""))
                # Each record has a time in front; of a traceback the first line will do.
                seen = re.sub(r"(?m)^[\d-]{10} [\d:.]{12} ", "", re.sub(r"(?m)^  .*\n|^KeyError.*\n", "", err)).splitlines()
                self.assertEqual(seen, [line for line in lines if self.passes(line, level or "debug")])

    def passes(self, line, least):
        level = {"lines": "warning", self.TRACEBACK: "error"}.get(line, line.split()[0])
        return self.LEVELS.index(level) >= self.LEVELS.index(least)


class EvalAndExec(CommandTest):
    def test_prints_results(self):
        table = [
            ("eval", "[1, 'a', None]", "[1, 'a', None]\n"),
            ("eval", "__import__('sys').argv", "['']\n"),
            ("exec", "x = 2\nreturn x * 21", "42\n"),
            ("exec", "import sys\nreturn sys.argv", "['-c']\n"),
            ("exec", "import atexit; atexit.register(print, 'at the end')\nreturn 1", "1\nat the end\n"),
        ]
        for command, text, expected in table:
            with self.subTest(text):
                self.assertEqual(self.ling(command, text), (0, expected, ""))

    def test_reports_failures(self):
        table = [
            ("eval", "1 / 0", 1, "ZeroDivisionError: division by zero"),
            ("exec", "import sys; sys.exit(3)", 3, ""),
            ("exec", "raise KeyboardInterrupt", -signal.SIGINT, "KeyboardInterrupt"),
            ("exec", "import sys; sys.exit('reason')", 1, "reason"),
            ("exec", "class Stop(BaseException): pass\nraise Stop('text')", 1, "Stop: text"),
            ("exec", "import sys; sys.modules.clear(); undefined", 1, "undefined"),
        ]
        for command, text, status, last_line in table:
            with self.subTest(text):
                got, out, err = self.ling(command, text)
                self.assertEqual((got, out), (status, ""))
                self.assertIn(last_line, (err.splitlines() or [""])[-1])


class Inspect(CommandTest):
    def describe(self, name):
        status, out, err = self.ling("inspect", name, "--json")
        self.assertEqual((status, err), (0, ""))
        return json.loads(out)

    def test_describes_modules(self):
        described = self.describe("python.datetime")
        self.assertEqual(described["name"], "python.datetime")
        classes = {each["name"]: each for each in described["classes"]}
        self.assertEqual(sorted(classes), ["date", "datetime", "time", "timedelta", "timezone", "tzinfo"])
        for of_class in classes.values():
            self.assertTrue(of_class["doc"] and of_class["parents"] and of_class["methods"], of_class["name"])
        total = classes["timedelta"]["methods"][0]
        self.assertEqual((total["name"], total["doc"]), ("total_seconds", "Total seconds in the duration."))

    def test_describes_the_hosts_own(self):
        described = self.describe("ling.cpython")
        self.assertEqual(described["doc"], "Interface to Python language.")
        functions = {each["name"]: each["signature"] for each in described["callables"]}
        self.assertEqual(functions["evaluate"], "(code: String, scope=None)")
        self.assertLessEqual({"cpython_add_sys_path", "evaluate_expr", "importAllModules"}, {*functions})
        self.assertEqual(self.describe("ling.cpython.evaluate")["doc"], "Evaluates Python code.")

    def test_prints_for_people(self):
        status, out, err = self.ling("inspect", "python.datetime")
        self.assertEqual((status, err), (0, ""))
        self.assertIn("\n  class timedelta", out)
        self.assertIn("\n      Total seconds in the duration.\n", out)
        self.assertIn("\n  MAXYEAR = 9999\n", out)
        self.assertEqual(out.count("\n\n"), 0)

    def test_refuses_unknown_names(self):
        for name in "nothing", "python.nothing", "ling.List.nothing", ".", "":
            with self.subTest(name):
                status, out, err = self.ling("inspect", name)
                self.assertEqual((status, out), (1, ""))
                self.assertIn(f"name: {name}.", err)


class Usage(CommandTest):
    def test_refuses_wrong_usage(self):
        missing = self.path("missing.so")
        usage = "", "walk", "run", "run --walk", "eval", "eval 1 2", "--load", "--log-level loud eval 1"
        table = [line.split() for line in usage] + [[option, missing, "eval", "1"] for option in ("--load", "--module")]
        for arguments in table:
            with self.subTest(arguments):
                status, out, err = self.ling(*arguments)
                self.assertEqual((status, out), (2, ""))
                self.assertTrue(err)

    def test_names_a_file_that_is_no_plug_in(self):
        text = self.write("plug_in.so", "not a library")
        for option in "--load", "--module":
            status, out, err = self.ling(option, text, "eval", "1")
            self.assertEqual((status, out), (1, ""))
            self.assertIn(text, err)

    def test_documents_itself(self):
        for arguments in ["--help"], ["run", "--help"], ["eval", "-h"], ["exec", "--help"], ["inspect", "-h"], ["--version"]:
            with self.subTest(arguments):
                status, out, err = self.ling(*arguments)
                self.assertEqual((status, err), (0, ""))
                self.assertIn("ling", out)


if __name__ == "__main__":
    unittest.main()
