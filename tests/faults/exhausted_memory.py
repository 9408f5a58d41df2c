"""Programs under `ling run` for which there is too little memory (POSIX). Usage: exhausted_memory.py LING

Each fills memory until there is none, catches that, goes on working, and ends as a program does: its output written,
its exit handlers run, with its own exit status and traceback.
"""

import resource
import subprocess
import sys

# What fills memory, as the body of a function.
FILLING = {
    "map": "m = ling.HashMap()\nfor i in count(): m[i] = 'x' * 100_000",
    "nested": "l = ling.List()\nwhile True: l = ling.List([l, l.deepClone()])",
    "evaluate": "ling.cpython.evaluate('l = []\\nwhile True: l.append(\"x\" * 100_000)')",
    "callback": "def f(x): return f(ling.List([x] * 200_000))\nling.cpython.CPythonFunction(f)(1)",
    "small": "l = ling.List()\nwhile True: l.append((len(l), float(len(l))))",
}

PROGRAM = """
import atexit, sys, ling
from itertools import count
def fill():
    {filling}
class Late:
    def __del__(self): print('finalised')
late = Late()
atexit.register(lambda: print('handler'))
print('begun')
for i in range(3):
    try: fill()
    except MemoryError: pass
    else: print('not reached')
print('caught', str(ling.List(range(3)) + [4]), ling.cpython.evaluate_expr('6 * 7'))
{ending}
"""

LIMIT = 400_000_000  # bytes of address space


def main(ling: str) -> int:
    failed = 0
    for name, filling in FILLING.items():
        for ending, status in (("sys.exit(7)", 7), ("fill()", 1)):
            code = PROGRAM.format(filling=filling.replace("\n", "\n    "), ending=ending)
            done = subprocess.run([ling, "run", "/dev/stdin"], input=code, text=True, capture_output=True, timeout=120,
                                  preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (LIMIT, LIMIT)))
            output = "begun\ncaught [0, 1, 2, 4] 42\nhandler\nfinalised\n"
            told = status == 7 or done.stderr.rstrip().endswith("MemoryError")
            if (done.stdout, done.returncode) != (output, status) or not told:
                print(f"{name}, {ending}: status {done.returncode}\n{done.stdout}{done.stderr[-2000:]}")
                failed += 1
    print(f"exhausted memory: {failed} of {2 * len(FILLING)} programs fail")
    return failed


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
