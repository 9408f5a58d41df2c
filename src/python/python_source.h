// Running source text: what evaluation and functions made from text have in common. The lock must be held.
//
// Defined in bridge/python_source.cpp.
#pragma once

#include "ling/string.h"
#include "python/pyobject_ptr.h"

#include <span>
#include <string>
#include <string_view>

namespace ling::cpython {

// What a dict has under a name; null when it has nothing, with an exception set only when memory has run out. Borrowed.
PyObject* find(PyObject* dict, const char* name);
// Stores the value under a name. One that has no Python counterpart is left out; no exception is left. False when there
// was a failure, after which the next attempt may do better.
bool store(PyObject* dict, const String& name, const Any& value);

// A text for `exec` or for `eval`. It may depend on names besides the code.
struct python_source {
  enum class kind : unsigned char { statements, expression };
  // What the code becomes for Python.
  using wrapping = std::string(std::string_view code, std::span<const String> names);

  kind what;
  std::string_view code;
  std::span<const String> names = {};
  wrapping* wrap = nullptr;  // null: the code as it is
};

// What `exec` or `eval` of the text gives. Null with the exception set when it fails, without one when there is no such
// function. The interpreter's own functions of these names are not called but imitated, with a text that comes again
// compiled once; a program may have put others in their places.
PyObjectPtr run_source(const python_source& source, PyObject* globals, PyObject* locals);

// The code object of the text, and what running it gives. Null with the exception set.
PyObjectPtr compile_source(const python_source& source);
PyObjectPtr run_code(PyObject* code, PyObject* globals, PyObject* locals);

}  // namespace ling::cpython
