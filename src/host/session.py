# What the command does inside the interpreter: starting a program and ending it the way python3 does.
#
# The host evaluates this text as the body of a function, followed by a line that returns the result of one of these
# functions. Nothing here is kept between two evaluations.

import atexit
import builtins
import gc
import importlib.machinery
import io
import os
import signal
import sys
import traceback
import types


def begin(arguments):
    sys.argv = [os.fsdecode(each) for each in arguments]
    for name in "SIGPIPE", "SIGXFSZ":  # failed writes are exceptions, not the end of the process
        if hasattr(signal, name):
            signal.signal(getattr(signal, name), signal.SIG_IGN)
    if signal.getsignal(signal.SIGINT) == signal.SIG_DFL:
        signal.signal(signal.SIGINT, signal.default_int_handler)
    # An embedded interpreter takes the first python3 on PATH for its own program, whatever version that is.
    if sys.prefix == sys.base_prefix:
        own = os.path.join(sys.base_exec_prefix, "bin", "python%d.%d" % sys.version_info[:2])
        if os.path.exists(own) and os.path.dirname(sys.executable) != os.path.dirname(own):
            sys.executable = own
    return 0


def show(text):
    print(text)
    return 0


def run_file():
    path = os.path.abspath(sys.argv[0])
    try:
        with open(path, "rb") as file:
            source = file.read()
    except OSError as error:
        print(f"ling: can't open file {path!r}: [Errno {error.errno}] {error.strerror}", file=sys.stderr)
        return 2
    if sys.version_info < (3, 11) or not os.environ.get("PYTHONSAFEPATH"):
        sys.path.insert(0, os.path.dirname(os.path.realpath(path)))
    main = types.ModuleType("__main__")
    main.__loader__ = importlib.machinery.SourceFileLoader("__main__", path)
    main.__annotations__ = {}
    main.__builtins__ = builtins
    main.__file__ = path
    main.__cached__ = None
    sys.modules["__main__"] = main
    failure = None
    try:
        exec(compile(source, path, "exec", dont_inherit=True), main.__dict__)
    except BaseException as error:
        failure = without_own_frame(error)
    # Reported outside the handler: an exception of the report has no business with this one as its context.
    return 0 if failure is None else report(failure)


def without_own_frame(error):
    return error.with_traceback(error.__traceback__.tb_next)


def report(error):
    if isinstance(error, SystemExit):
        return exit_status(error.code)
    sys.last_type, sys.last_value, sys.last_traceback = type(error), error, error.__traceback__
    failure = None
    try:
        sys.excepthook(type(error), error, error.__traceback__)
    except SystemExit as request:
        return exit_status(request.code)
    except BaseException as raised:
        failure = without_own_frame(raised)
    if failure is not None:
        print("Error in sys.excepthook:", file=sys.stderr)
        sys.__excepthook__(type(failure), failure, failure.__traceback__)
        print("\nOriginal exception was:", file=sys.stderr)
        sys.__excepthook__(type(error), error, error.__traceback__)
    return 128 + signal.SIGINT if isinstance(error, KeyboardInterrupt) else 1


# The exit status when the value that came with an error is a request to stop, which is no ordinary exception.
def stop_status(value):
    if isinstance(value, BaseException) and not isinstance(value, Exception):
        return report(value)
    return None


def exit_status(code):
    if code is None:
        return 0
    if isinstance(code, int):
        return int(code) if -(1 << 63) <= code < 1 << 63 else -1
    print(code, file=sys.stderr)
    return 1


def ignore(error, culprit):
    print(f"Exception ignored in: {culprit!r}", file=sys.stderr)
    traceback.print_exception(type(error), error, error.__traceback__.tb_next)


# The interpreter is never finalised, so what python3 leaves to its finalisation happens here, in the same order.
def finish(status):
    threading = sys.modules.get("threading")
    if threading is not None:
        try:
            threading._shutdown()
        except BaseException as error:
            ignore(error, threading)
    try:
        atexit._run_exitfuncs()
    except BaseException:
        pass  # printed; only Python 3.9 raises the last one again
    if not flush_standard_streams():
        status = 120
    drop_program()
    if threading is None or threading.active_count() == 1:
        # A thread that is still there may hold the lock of a file for ever.
        flush_files()
    flush_standard_streams()
    return status


def flush_standard_streams():
    flushed = True
    for stream in sys.stdout, sys.stderr, sys.__stdout__, sys.__stderr__:
        try:
            if stream is not None and not getattr(stream, "closed", False):
                stream.flush()
        except BaseException as error:
            if flushed and stream is sys.stdout:
                ignore(error, stream)
            flushed = False
    return flushed


# Lets go of the program's module, so that its objects are finalised.
def drop_program():
    for name in "last_exc", "last_type", "last_value", "last_traceback":
        sys.__dict__.pop(name, None)
    sys.modules["__main__"] = types.ModuleType("__main__")
    gc.collect()


# Files that something still refers to; text first, since it is written into the buffers below.
def flush_files():
    alive = gc.get_objects()
    for kind in io.TextIOWrapper, (io.BufferedWriter, io.BufferedRandom):
        for each in alive:
            try:
                if issubclass(type(each), kind) and not each.closed:
                    each.flush()
            except BaseException:
                pass  # nobody is left to tell
