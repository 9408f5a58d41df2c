# Ends with an exception that nobody handles: what was printed is still there, clean-up still runs, the status is 1.
# exit status: 1
import atexit
import sys


class Resource:
    def __enter__(self):
        print("opened")
        return self

    def __exit__(self, kind, value, traceback):
        print("closed because of", kind.__name__)


def hook(kind, value, traceback):
    print("hook:", kind.__name__, value)
    sys.__excepthook__(kind, value, traceback)


sys.excepthook = hook
atexit.register(lambda: print("exit handler"))
with Resource():
    raise LookupError("nothing here")
