# What python3 sets in the interpreter before a program starts. The host evaluates this text as the body of a function,
# followed by a call of `prepare`, before there is a program; how that ends is written in C++ (program.cpp), since after
# it no Python code can be relied on.

import os
import sys
import _signal


# The arguments are bytes: what the shell passes need not be text. The file is the program's, None when it has none.
def prepare(arguments, file):
    sys.argv = [os.fsdecode(each) for each in arguments]
    take_signals()
    name_interpreter()
    package = file is not None and add_path(os.fsdecode(file))
    sys.ling_handover = handover = []
    return package, handover


def take_signals():
    for name in "SIGPIPE", "SIGXFSZ":  # failed writes are exceptions, not the end of the process
        if hasattr(_signal, name):
            _signal.signal(getattr(_signal, name), _signal.SIG_IGN)
    if _signal.getsignal(_signal.SIGINT) == _signal.SIG_DFL:
        _signal.signal(_signal.SIGINT, _signal.default_int_handler)


# An embedded interpreter takes the first python3 on PATH for its own program, whatever version that is, or the host.
def name_interpreter():
    if sys.prefix == sys.base_prefix:
        program = ["python.exe"] if os.name == "nt" else ["bin", "python%d.%d" % sys.version_info[:2]]
        own = os.path.join(sys.base_exec_prefix, *program)
        if os.path.exists(own) and os.path.dirname(sys.executable) != os.path.dirname(own):
            sys.executable = own
        sys._base_executable = sys.executable
    if hasattr(sys, "orig_argv"):
        sys.orig_argv = [sys.executable, *sys.argv]


# Whether the program is a package: a directory or an archive.
def add_path(file):
    package = any(takes(hook, file) for hook in sys.path_hooks)
    if package:
        sys.path.insert(0, file)
    elif not getattr(sys.flags, "safe_path", False):
        sys.path.insert(0, os.path.dirname(os.path.realpath(file)))
    return package


def takes(hook, file):
    try:
        hook(file)
    except ImportError:
        return False
    return True
