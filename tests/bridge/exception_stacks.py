"""Where an exception happened is put into words when somebody asks, as if that had been done at once."""

import linecache
import traceback
import weakref

import ling


def error_of(exception):
    """What the host makes of an exception."""
    holder = ling.HashMap({"it": exception})
    try:
        holder["it"]
    except Exception as raised:
        return raised.ling
    raise AssertionError("no error")


def caught(action, *arguments):
    try:
        action(*arguments)
    except Exception as exception:
        return exception
    raise AssertionError("nothing raised")


def fail(make, depth=0):
    if depth:
        fail(make, depth - 1)
    raise make()


def chained(explicit):
    try:
        fail(KeyError)
    except KeyError as first:
        raise ValueError("second") from (first if explicit else None)


def implicit():
    try:
        fail(KeyError)
    finally:
        fail(ValueError)


def noted(exception, *notes):
    exception.__notes__ = list(notes)
    return exception


class Odd(Exception):
    def __str__(self):
        return "two\nlines \udc80 ß"


class Mute(Exception):
    def __str__(self):
        raise OSError


cases = [
    ValueError("never raised"),
    caught(fail, ValueError),
    caught(fail, Odd, 3),
    caught(fail, Mute),
    caught(fail, lambda: noted(ValueError("x"), "a note")),
    caught(chained, True),
    caught(chained, False),
    caught(implicit),
    caught(compile, "x = = 1", "<text>", "exec"),
    caught(eval, "ling.HashNap"),
    caught(eval, "lin"),
    caught(lambda: "abc".uper()),
    caught(lambda: (lambda f: f(f))(lambda f: f(f))),
]
if hasattr(__builtins__, "ExceptionGroup"):
    cases.append(ExceptionGroup("many", [caught(fail, ValueError), KeyError("x")]))
for exception in cases:
    expected = "".join(traceback.format_exception(type(exception), exception, exception.__traceback__))
    expected = expected.encode("utf-8", "backslashreplace").decode()
    error = error_of(exception)
    assert error.stack == error.stack == expected, (error.stack, expected)


class Variable:
    pass


def with_variable():
    variable = Variable()
    references.append(weakref.ref(variable))
    fail(ValueError, 2)


references = []
error = error_of(caught(with_variable))
assert references[0]() is None, "the frames are kept"
assert error.stack.count("in fail\n") == 3 and "variable" not in error.stack.split("in with_variable")[0]


# What keeps the words away today may be gone tomorrow, and what is set meanwhile stays.
error, check = error_of(caught(fail, ValueError)), linecache.checkcache
linecache.checkcache = None
try:
    assert error.stack == ""
finally:
    linecache.checkcache = check
assert error.stack.endswith("ValueError\n")
error.stack = "set"
assert error.stack == "set"
