# Counts the words of a text, with a command line.
# arguments: --top 3 --ignore the --ignore of -- programs/word_count.py
import argparse
import collections
import os
import re
import sys

TEXT = "The sound of the sea and the sound of the wind, and of nothing else."


def parse(arguments=None):
    parser = argparse.ArgumentParser(prog="word_count", description="Counts words.")
    parser.add_argument("--top", type=int, default=5, metavar="N", help="how many words to show")
    parser.add_argument("--ignore", action="append", default=[], help="a word that does not count")
    parser.add_argument("names", nargs="*")
    return parser.parse_args(arguments)


options = parse()
print(options)
assert os.path.basename(sys.argv[0]) == "word_count.py" == os.path.basename(__file__)
assert options.top == 3 and options.ignore == ["the", "of"] and options.names == ["programs/word_count.py"]

words = (word.lower() for word in re.findall(r"\w+", TEXT))
counts = collections.Counter(word for word in words if word not in options.ignore)
for word, count in counts.most_common(options.top):
    print(f"{count:3} {word}")
assert counts["sound"] == 2 and "the" not in counts

try:
    parse(["--top", "many"])
except SystemExit as stop:
    print("exit status", stop.code)

sys.exit(0 if counts else 1)
