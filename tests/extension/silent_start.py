"""Whatever the environment says of warnings, Python's modules are read completely and without a word."""

import os
import subprocess
import sys
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


unittest.main()
