"""Whatever the environment says of warnings, Python's modules are read completely and without a word."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

HOST = os.environ["LING_COMMAND"], "exec"
PYTHON = os.path.join(sys.base_prefix, "bin", "python%d.%d" % sys.version_info[:2]), "-c"
MODULES = "builtins", "collections", "collections.abc", "datetime", "decimal", "sys", "types", "typing"
MEMBERS = f"""
import ling, sys, warnings
for name in {MODULES}:
    print(name, sorted(set(dir(ling.find_module("python." + name)))))
print([name for name, module in sys.modules.items() if "__warningregistry__" in vars(module)])
print(warnings.filters)
"""


def outcome(code, *command, **settings):
    """What a command prints for the code that is its last argument."""
    environment = {name: value for name, value in os.environ.items() if name not in ("PYTHONWARNINGS", "PYTHONDEVMODE")}
    return subprocess.run([*command, code], env={**environment, **settings}, capture_output=True, text=True, check=True)


class SilentStart(unittest.TestCase):
    def test_members(self):
        expected = outcome(MEMBERS, *HOST).stdout.splitlines()
        for settings in {"PYTHONWARNINGS": "error"}, {"PYTHONDEVMODE": "1"}, {"PYTHONWARNINGS": "always"}:
            with self.subTest(**settings):
                done = outcome(MEMBERS, *HOST, **settings)
                self.assertEqual(done.stderr, "")
                *members, registries, filters = done.stdout.splitlines()
                self.assertEqual([members, registries], [expected[:-2], "[]"])
                self.assertEqual(filters, outcome("import warnings; print(warnings.filters)", *PYTHON, **settings).stdout.strip())

    def test_without_warnings(self):
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, "sitecustomize.py").write_text("import sys; sys.modules['warnings'] = None")
            self.assertEqual(outcome("print(len(dir(ling.find_module('python.typing'))) > 9)", *HOST, PYTHONPATH=folder).stdout, "True\n")

    def test_filters_saved_and_put_back_meanwhile(self):
        """As another thread does, or a module while it is imported."""
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, "saver.py").write_text("import warnings; saved = warnings.catch_warnings(); saved.__enter__()")
            pathlib.Path(folder, "saver2.py").write_text("import saver; saver.saved.__exit__()")
            code = f"import inspect, pkgutil, sys; sys.path[:] = [{folder!r}]; ling.cpython.importAllModules(); print(not any(each[0] == 'ignore' and each[2] is Warning for each in sys.modules['warnings'].filters))"
            self.assertEqual(outcome(code, *HOST).stdout, "True\n")


unittest.main()
