"""_compare.py HOST PYTHON PROGRAM: a real program behaves inside the host exactly as it does without it.

Runs the program with `HOST run` and with PYTHON and compares what it wrote to standard output and its exit status. The
program says in a comment which arguments it is given ("# arguments: …") and which status it ends with when that is not
zero ("# exit status: …"), so that a program that fails in both ways alike does not pass.
"""

import os
import pathlib
import re
import shlex
import subprocess
import sys


def noted(text, what, otherwise):
    found = re.search(rf"^# {what}: (.*)$", text, re.MULTILINE)
    return found[1] if found else otherwise


def run(command):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, timeout=100)
    return done.returncode, done.stdout, done.stderr


def main():
    host, python, program = sys.argv[1:]
    # When a home is set, the host runs the interpreter that lives there.
    if os.environ.get("PYTHONHOME"):
        python = os.path.join(os.environ["PYTHONHOME"], "bin", "python3")
    text = pathlib.Path(program).read_text(encoding="utf-8")
    arguments = shlex.split(noted(text, "arguments", ""))
    status = int(noted(text, "exit status", "0"))

    plain = run([python, program, *arguments])
    hosted = run([host, "run", program, *arguments])
    failed = False
    for name, (code, output, errors) in (("python3", plain), ("ling run", hosted)):
        if code != status:
            print(f"{name} ended with {code} instead of {status}:\n{output.decode()}\n{errors.decode()}")
            failed = True
    if hosted[1] != plain[1]:
        print(f"--- python3 wrote\n{plain[1].decode()}--- ling run wrote\n{hosted[1].decode()}")
        failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
