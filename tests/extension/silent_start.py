"""Whatever the environment says of warnings, Python's modules are read completely and without a word."""

import os
import subprocess
import sys

HOST = os.environ["LING_COMMAND"], "exec"
PYTHON = os.path.join(sys.base_prefix, "bin", "python%d.%d" % sys.version_info[:2]), "-c"
MEMBERS = """
import ling, sys, warnings
for name in "builtins", "collections", "collections.abc", "datetime", "decimal", "sys", "types", "typing":
    print(name, sorted(set(dir(ling.find_module("python." + name)))))
print([name for name, module in sys.modules.items() if "__warningregistry__" in vars(module)])
print(warnings.filters)
"""


def outcome(code, *command, **settings):
    """What a command prints for the code that is its last argument."""
    environment = {k: v for k, v in os.environ.items() if k not in ("PYTHONWARNINGS", "PYTHONDEVMODE")}
    done = subprocess.run([*command, code], env={**environment, **settings}, capture_output=True, text=True)
    assert (done.returncode, done.stderr) == (0, ""), (settings, done)
    return done.stdout.splitlines()


expected = outcome(MEMBERS, *HOST)[:-2]
for settings in {"PYTHONWARNINGS": "error"}, {"PYTHONDEVMODE": "1"}, {"PYTHONWARNINGS": "always"}:
    filters = outcome("import warnings; print(warnings.filters)", *PYTHON, **settings)
    assert outcome(MEMBERS, *HOST, **settings) == [*expected, "[]", *filters], settings
