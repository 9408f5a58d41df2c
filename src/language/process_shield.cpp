// The shield is Python code: it guards what Python code can reach.
#include "language/process_shield.h"

#include "python/pending_exception.h"
#include "python/python_helper.h"

namespace ling::cpython {

namespace {

// Returns a function that restores what was found.
constinit const python_helper shield_helper("shield", R"(def shield():
    import os, signal, sys

    def attempt(function, *arguments):
        try:
            return function(*arguments)
        except (OSError, ValueError):
            return None

    class Stream:
        def __init__(self, target):
            self.target = target
        def __getattr__(self, name):
            return getattr(self.target, name)
        def __iter__(self):
            return iter(self.target)
        def __next__(self):
            return next(self.target)
        def close(self):
            pass

    names = "stdin", "stdout", "stderr"
    real = {name: getattr(sys, name, None) for each in names for name in (each, f"__{each}__")}
    kept = [attempt(os.dup, number) for number in range(3)]
    process = os.getpid()
    timers = [getattr(signal, name) for name in ("ITIMER_REAL", "ITIMER_VIRTUAL", "ITIMER_PROF") if hasattr(signal, name)]
    running = {timer: signal.getitimer(timer) for timer in timers}
    arguments, environment, variables = getattr(sys, "argv", [""]), os.environ, dict(os.environ)
    directory = attempt(os.getcwd)
    handlers = {number: signal.getsignal(number) for number in signal.valid_signals()}

    shown = []
    for name in names:
        mode = "r" if name == "stdin" else "w"
        for each in name, f"__{name}__":
            stream = Stream(open(os.devnull, mode, encoding="utf-8", errors="replace"))
            shown.append((each, stream))
    nothing = os.open(os.devnull, os.O_RDONLY)
    for each, stream in shown:  # from here on nothing fails
        setattr(sys, each, stream)
    if kept[0] is not None:
        os.dup2(nothing, 0)  # a child process must neither wait for the host's input nor take it
    os.close(nothing)
    sys.argv = [""]

    def restore_file(number, file):
        now, former = attempt(os.fstat, number), attempt(os.fstat, file)
        if former is not None and (now is None or not os.path.samestat(now, former)):
            attempt(os.dup2, file, number)
        attempt(os.close, file)

    def restore():
        if os.getpid() != process:
            os._exit(0)  # a child that a module has left running is not the host
        for each, stream in shown:
            stream.target = real[each]
            setattr(sys, each, real[each])
        for number, file in enumerate(kept):
            if file is not None:
                restore_file(number, file)
        sys.argv, os.environ = arguments, environment
        for name in environment.keys() - variables.keys():
            del environment[name]
        for name, value in variables.items():
            if environment.get(name) != value:
                environment[name] = value
        if directory is not None:
            attempt(os.chdir, directory)
        for timer, setting in running.items():
            if signal.getitimer(timer) != (0.0, 0.0) and setting == (0.0, 0.0):
                attempt(signal.setitimer, timer, 0)  # its signal would find no handler
        for number, handler in handlers.items():
            if handler is not None and signal.getsignal(number) != handler:
                attempt(signal.signal, number, handler)
    return restore
)");

}  // namespace

process_shield::process_shield() {
  PyObject* const shield = shield_helper.get();
  restore_ = PyObjectPtr(shield == nullptr ? nullptr : PyObject_CallObject(shield, nullptr));
  tolerate_exception();
}

process_shield::~process_shield() {
  if (restore_) {
    const PyObjectPtr done(PyObject_CallObject(restore_.get(), nullptr));
    PyErr_Clear();
  }
}

}  // namespace ling::cpython
