"""The module in a folder whose name is no text: what lies beside it is found all the same."""

import os
import shutil
import subprocess
import tempfile

COMMAND = os.environ["LING_COMMAND"]
MODULES = os.path.join(os.path.dirname(os.fsencode(COMMAND)), b"../lib/corvantis")

with tempfile.TemporaryDirectory() as parent:
    folder = os.path.join(os.fsencode(parent), b"fo\xfflder")
    packages = os.path.join(folder, b"site-packages")
    shutil.copytree(MODULES, folder)
    os.makedirs(packages, exist_ok=True)
    with open(os.path.join(packages, b"beside_the_module.py"), "w") as file:
        file.write("place = __file__")
    code = "import beside_the_module, os; print(os.fsencode(beside_the_module.place))"
    place = subprocess.check_output([COMMAND, "--module", "corvantis_python.so", "exec", code], cwd=folder)
    assert eval(place) == os.path.join(packages, b"beside_the_module.py"), place
