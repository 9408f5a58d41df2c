# Ends in the middle with a status of its own, from inside a function, with a tail of output that has no newline.
# exit status: 7
import sys


def leave(status):
    try:
        sys.exit(status)
    finally:
        print("on the way out")


print("no newline follows", end="")
sys.stdout.write(" ...")
leave(7)
