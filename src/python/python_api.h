// The one header through which the C API is included: the limited API of Python 3.9, so that one binary serves 3.9 and
// everything after it.
#pragma once

#ifndef Py_LIMITED_API
#error "Py_LIMITED_API is set by the build, to the oldest version supported"
#endif
#define PY_SSIZE_T_CLEAN
#include <Python.h>
