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

    def run_text(self, text, *arguments, options=()):
        return self.ling(*options, "run", self.write("program.py", text), *arguments)


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
        text = "import os, sys; print([os.path.relpath(p, sys.path[0]) for p in sys.path if 'Python313' in p])"
        program, local, profile = self.write("program.py", text), self.path("lo\udcff"), self.path("profile")
        ignored = "LOCALAPPDATA is ignored: local is no .* path.\n.*USERPROFILE is ignored: ../\ufffd is no .* path.\n$"
        table = [
            (local, profile, r"['lo\udcff/Corvantis/Python313']", "^$"),
            ("", profile, "['profile/AppData/Local/Corvantis/Python313']", "^$"),
            ("local", "../\udcff", "[]", ignored),
            ("/proc/self/exe", "", "[]", "/proc/self/exe/Corvantis/Python313: "),
        ]
        for local, profile, path, message in table:
            with self.subTest(local=local, profile=profile):
                environment = dict(os.environ, LOCALAPPDATA=local, USERPROFILE=profile)
                *got, err = self.ling("run", program, env=environment)
                self.assertEqual(got, [0, path + "\n"])
                self.assertRegex(err, message)

    def test_finds_packages_and_archives_beside_a_module_in_a_folder_whose_name_is_no_text(self):
        folder = self.path("fo\udcfflder")
        shutil.copytree(MODULES, folder)
        for name in "site-packages/a.zip", "site-packages/B.ZIP", "site-packages/directory.zip/d", "python3/lib/l.zip":
            self.write("fo\udcfflder/" + name, "content")
        program = self.write("program.py", "import os, sys; print([os.fsencode(path) for path in sys.path[-3:]])")
        expected = [os.fsencode(f"{folder}/{name}") for name in ("site-packages/a.zip", "site-packages", "python3/lib/l.zip")]
        got = self.ling("--module", "corvantis_python.so", "run", program, cwd=folder)
        self.assertEqual(got, (0, f"{expected}\n", ""))

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
            status, out, err = self.run_text(text, options=["--log-level", option])
            expected = ["%s of\n%s\n" % (level, 10 * i + 10) for i, level in enumerate(levels[:-1]) if i >= least]
            self.assertEqual((status, out, re.sub(r"(?m)^[\d-]{10} [\d:.]{12} ", "", err)), (0, "", "".join(expected)))

    def test_shows_what_comes_of_records_that_cannot_be_formatted(self):
        status, out, err = self.run_text(
            "import logging\nclass Endless:\n    def __str__(self): return str(self)\n"
            "logging.warning('%d', 'x')\nlogging.log(35, 'b\\udc80\\u00e9')\n"
            "record = {'levelno': 30.5, 'levelname': 'HALF', 'msg': 'unknown level'}\n"
            "logging.getLogger().handle(logging.makeLogRecord(record))\n"
            "try: logging.warning('%s', Endless())\nexcept RecursionError: logging.warning('too deep')"
        )
        self.assertEqual((status, out, err.count("--- Logging error ---")), (0, "", 2))
        for text in "Arguments: ('x',)", "Message: 'unknown level'", " b\\udc80\u00e9\n", "warning too deep\n":
            self.assertIn(text, err)


class EvalAndExec(CommandTest):
    def test_prints_results_and_failures(self):
        table = [
            ("eval", "[1, 'a', None]", 0, "[1, 'a', None]\n", ""),
            ("eval", "__import__('sys').argv", 0, "['']\n", ""),
            ("eval", "1 / 0", 1, "", "ZeroDivisionError: division by zero\n"),
            ("exec", "import atexit; atexit.register(print, 'at the end')\nreturn 1", 0, "1\nat the end\n", ""),
            ("exec", "import sys; sys.exit(3)", 3, "", ""),
            ("exec", "raise KeyboardInterrupt", -signal.SIGINT, "", "\nKeyboardInterrupt\n"),
            ("exec", "import sys; sys.modules.clear(); undefined", 1, "", "name 'undefined' is not defined\n"),
        ]
        for command, text, *expected, last_line in table:
            with self.subTest(text):
                *got, err = self.ling(command, text)
                self.assertEqual((got, err.endswith(last_line)), (expected, True), err)


class Inspect(CommandTest):
    def describe(self, name):
        return json.loads(self.ling("inspect", name, "--json")[1])

    def test_describes_modules(self):
        classes = {each["name"]: each for each in self.describe("python.datetime")["classes"]}
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
            *got, err = self.ling("inspect", name)
            self.assertEqual((got, f"name: {name}." in err), ([1, ""], True), err)


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


if __name__ == "__main__":
    unittest.main()
