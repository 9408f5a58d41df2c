"""The module in a folder whose name is no text: what lies beside it is found all the same."""

import os
import shutil
import subprocess
import tempfile
import unittest

COMMAND = os.environ["LING_COMMAND"]
MODULES = os.path.join(os.path.dirname(os.fsencode(COMMAND)), b"../lib/corvantis")


class UnusualFolder(unittest.TestCase):
    def test_packages(self):
        with tempfile.TemporaryDirectory() as parent:
            folder = os.path.join(os.fsencode(parent), b"fo\xfflder")
            packages = os.path.join(folder, b"site-packages")
            shutil.copytree(MODULES, folder)
            os.makedirs(packages, exist_ok=True)
            with open(os.path.join(packages, b"beside_the_module.py"), "w") as file:
                file.write("place = __file__")
            code = "import beside_the_module, os; print(os.fsencode(beside_the_module.place))"
            command = [COMMAND, "--module", "corvantis_python.so", "exec", code]
            done = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, check=True)
            self.assertEqual(eval(done.stdout), os.path.join(packages, b"beside_the_module.py"))


unittest.main()
