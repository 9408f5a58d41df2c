"""Python's own extension modules load although the host opened the interpreter library for itself alone."""

import importlib
import sys

for name in ["_ctypes", "_decimal", "_json", "_sqlite3", "_ssl", "_struct", "math", "zlib"]:
    try:
        importlib.import_module(name)
    except ModuleNotFoundError:
        pass  # not part of every interpreter; an undefined symbol is an ImportError

assert type(sys.meta_path[0]).__name__ == "_LingModuleImporter"
