# The command: what it prints, where, and with which exit status.
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

COMMAND = os.environ["LING_COMMAND"]
os.environ.pop("PYTHONUNBUFFERED", None)  # when output is lost depends on it
MODULES = os.path.join(os.path.dirname(COMMAND), "../lib/corvantis")
PYTHON = os.path.join(sys.base_prefix, "bin", "python%d.%d" % sys.version_info[:2])


def outcome(command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=100, **options)
    return done.returncode, done.stdout.decode(errors="backslashreplace"), done.stderr.decode(errors="backslashreplace")


class CommandTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        with open(self.path(name), "wb") as file:
            file.write(text if isinstance(text, bytes) else text.encode())
        return self.path(name)

    def ling(self, *arguments, **options):
        return outcome([COMMAND, *arguments], **options)

    def run_text(self, text, *arguments, **options):
        return self.ling("run", self.write("program.py", text), *arguments, **options)


class Run(CommandTest):
    def test_passes_arguments_through(self):
        for arguments in ["--help"], ["-x", "--", "--load", "y"], ["", "run", "a b"], ["[1, 2]", "-1"], [b"\xff\xfe"]:
            with self.subTest(arguments):
                got = self.run_text("import os, sys; print([os.fsencode(a) for a in sys.argv[1:]])", *arguments)
                self.assertEqual(got, (0, "%r\n" % [os.fsencode(a) for a in arguments], ""))

    def test_keeps_the_program_name_as_given(self):
        self.write("program.py", "import sys; print(sys.argv, sys.path[0], __file__)")
        expected = outcome([PYTHON, "./program.py"], cwd=self.folder)
        self.assertEqual(self.ling("run", "./program.py", cwd=self.folder), expected)

    def test_finds_neighbours_of_the_linked_file(self):
        self.write("elsewhere/neighbour.py", "value = 5")
        os.symlink(self.write("elsewhere/program.py", "import neighbour; print(neighbour.value)"), self.path("link.py"))
        self.assertEqual(self.ling("run", self.path("link.py")), (0, "5\n", ""))

    def test_finds_the_packages_of_the_user(self):
        self.write("Corvantis/Python313/own_package.py", "value = 5")
        environment = dict(os.environ, LOCALAPPDATA=self.folder)
        self.assertEqual(self.run_text("import own_package; print(own_package.value)", env=environment), (0, "5\n", ""))

    def test_finds_packages_beside_a_module_in_a_folder_whose_name_is_no_text(self):
        folder = os.path.join(os.fsencode(self.folder), b"fo\xfflder")
        shutil.copytree(MODULES, os.fsdecode(folder))
        package = self.write("fo\udcfflder/site-packages/beside.py", "place = __file__")
        code = "import beside, os; return os.fsencode(beside.place) == %r" % os.fsencode(package)
        got = self.ling("--module", "corvantis_python.so", "exec", code, cwd=folder)
        self.assertEqual(got, (0, "true\n", ""))

    def test_reports_a_missing_file(self):
        status, out, err = self.ling("run", self.path("missing.py"))
        self.assertEqual((status, out), (2, ""))
        self.assertIn("missing.py': [Errno 2] No such file or directory", err)

    def test_prints_any_text_without_a_locale(self):
        program = self.write("program.py", "import os; print('\u00e9\u4e2d', os.environ.get('LC_CTYPE'))")
        others = {k: v for k, v in os.environ.items() if not k.startswith(("LC_", "LANG"))}
        for variables in {}, {"LC_ALL": "C"}, {"LC_ALL": "C.UTF-8"}:
            with self.subTest(variables):
                expected = outcome([PYTHON, program], env={**others, **variables})
                self.assertEqual(self.ling("run", program, env={**others, **variables}), expected)

    def test_holds_what_programs_log(self):
        text = (
            "import logging\nlog = logging.getLogger('app')\nlog.debug('dropped by Python')\nlog.setLevel(logging.DEBUG)\n"
            "for level in 10, 20, 30, 40, 50: log.log(level, 'of\\n%s', level)"
        )
        levels = ["debug", "info", "warning", "error", "critical", "off"]
        for least, option in enumerate(levels):
            with self.subTest(option):
                status, out, err = self.ling("--log-level", option, "run", self.write("program.py", text))
                self.assertEqual((status, out), (0, ""))
                expected = ["%s of\n%s" % (level, 10 * i + 10) for i, level in enumerate(levels[:-1]) if i >= least]
                self.assertEqual(re.sub(r"(?m)^[\d-]{10} [\d:.]{12} ", "", err), "".join(each + "\n" for each in expected))


class EvalAndExec(CommandTest):
    def test_prints_results(self):
        table = [
            ("eval", "[1, 'a', None]", "[1, 'a', None]\n"),
            ("eval", "__import__('sys').argv", "['']\n"),
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
        classes = {each["name"]: each for each in described["classes"]}
        self.assertEqual(sorted(classes), ["date", "datetime", "time", "timedelta", "timezone", "tzinfo"])
        for of_class in classes.values():
            self.assertTrue(of_class["doc"] and of_class["parents"] and of_class["methods"], of_class["name"])
        described = self.describe("ling.cpython")
        self.assertEqual(described["doc"], "Interface to Python language.")
        self.assertEqual([each["name"] for each in described["properties"]], ["doc"])
        functions = {each["name"]: each["signature"] for each in described["callables"]}
        self.assertEqual(functions["evaluate"], "(code: String, scope=None)")
        self.assertEqual(self.describe("ling.cpython.evaluate")["doc"], "Evaluates Python code.")

    def test_prints_for_people(self):
        status, out, err = self.ling("inspect", "python.datetime")
        self.assertEqual((status, err), (0, ""))
        for line in "  class timedelta", "      Total seconds in the duration.\n", "  MAXYEAR = 9999\n":
            self.assertIn("\n" + line, out)
        self.assertNotIn("\n\n", out)

    def test_refuses_unknown_names(self):
        for name in "nothing", "python.nothing", ".", "":
            with self.subTest(name):
                status, out, err = self.ling("inspect", name)
                self.assertEqual((status, out), (1, ""))
                self.assertIn(f"name: {name}.", err)


class Usage(CommandTest):
    def test_refuses_wrong_usage(self):
        missing, no_plug_in = self.path("missing.so"), self.write("plug_in.so", "not a library")
        usage = "", "walk", "run", "run --walk", "eval", "eval 1 2", "--load", "--log-level loud eval 1"
        table = [(2, "", line.split()) for line in usage]
        for option in "--load", "--module":
            table += [(2, missing, [option, missing, "eval", "1"]), (1, no_plug_in, [option, no_plug_in, "eval", "1"])]
        for status, named, arguments in table:
            with self.subTest(arguments):
                *got, err = self.ling(*arguments)
                self.assertEqual(got, [status, ""])
                self.assertTrue(err and named in err, err)

    def test_documents_itself(self):
        for arguments in ["--help"], ["run", "--help"], ["eval", "-h"], ["--version"]:
            status, out, err = self.ling(*arguments)
            self.assertEqual((status, err, "ling" in out), (0, "", True), arguments)


if __name__ == "__main__":
    unittest.main()
