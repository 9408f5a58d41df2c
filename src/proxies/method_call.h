// Calling the methods of a Python object by name: all that the proxies of collections do.
#pragma once

#include "ling/detail/interface_call.h"
#include "proxies/cpython_object.h"

#include <span>

namespace ling::cpython {

// What the method returns, or an Error: when there is no object, no method of that name, an argument has no counterpart
// in Python, or the method raises. Takes the lock itself.
Any call_python_method(const CPythonObject& target, const char* name, std::span<const Any> arguments);

// The same for a method that must return a T.
template <class T, class... Arguments>
Result<T> call_python_method_as(const CPythonObject& target, const char* name, const Arguments&... arguments) {
  const Any row[sizeof...(Arguments) + 1] = {Any(arguments)..., Any()};
  return internal::promised<T>(call_python_method(target, name, std::span<const Any>(row, sizeof...(Arguments))));
}

// The same for a method whose result does not matter.
template <class... Arguments>
Result<None> run_python_method(const CPythonObject& target, const char* name, const Arguments&... arguments) {
  const Any row[sizeof...(Arguments) + 1] = {Any(arguments)..., Any()};
  return internal::done(call_python_method(target, name, std::span<const Any>(row, sizeof...(Arguments))));
}

}  // namespace ling::cpython
