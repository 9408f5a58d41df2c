// Running source text: what evaluation and functions made from text have in common. The lock must be held.
//
// Defined in bridge/python_source.cpp.
#pragma once

#include "ling/string.h"
#include "python/pyobject_ptr.h"

#include <string_view>

namespace ling {
class Module;
}

namespace ling::cpython {

// What a dict has under a name; null when it has nothing, with an exception set only when memory has run out. Borrowed.
PyObject* find(PyObject* dict, const char* name);
// Stores the value under a name. A value that has no Python counterpart is left out; no exception is left.
void store(PyObject* dict, const String& name, const Any& value);
// Whether the module is kept out of evaluated code.
bool is_hidden(const Module& module);
// The host's modules under their names, those with a dotted name excepted.
void store_modules(PyObject* dict);

// Calls `exec` or `eval`. Null with the exception set when it fails, without one when there is no such function.
PyObjectPtr call_builtin(const char* name, std::string_view source, PyObject* globals, PyObject* locals);

}  // namespace ling::cpython
