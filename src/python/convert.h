// The crossing: host values to Python objects and back. Plain values are copied, everything else arrives as the very
// object it is, wrapped (LingObject) or presented (proxies), so that a round trip gives back the identical object.
//
// Defined in bridge/: to_python.cpp, from_python.cpp, code_text.cpp, corresponding_types.cpp.
#pragma once

#include "ling/class.h"
#include "ling/string.h"
#include "ling/type.h"
#include "ling/union.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// How deep values may be nested in one conversion; beyond it the conversion is an error.
inline constexpr int maximum_conversion_depth = 500;

// The Python object for a value. Null means failure, with a Python exception set; only a date, time or decimal whose
// Python class could not be imported fails without one. An Error value is raised. None, True, False and NotImplemented
// come without a reference of their own: they are pinned when the interpreter starts, so releasing them does no harm.
// Takes the lock itself; null when the interpreter has ended.
PyObjectPtr to_python(const Any& value);
// The value for a Python object, which may be null (None). Never raises and leaves no exception pending: a failure is
// an Error value. Takes the lock itself.
Any from_python(PyObjectPtr_Borrowed object);

// The same for callers that hold the lock: every slot, and whatever runs inside a GilGuard. Exhausted memory is thrown,
// as std::bad_alloc.
PyObjectPtr to_python_locked(const Any& value);
Any from_python_locked(PyObjectPtr_Borrowed object);

// Whether the value itself is what arrives in Python, in a wrapper. Items of tuples and what an external value loads
// are asked for separately.
bool arrives_wrapped(const Any& value);

// The text that stands for the value in Python code: `repr` of its Python counterpart. A value whose only counterpart
// is its wrapper has its display text, also as an item of a tuple; no wrapper is made for that. Empty when there is no
// counterpart. Takes the lock itself.
Result<String> to_code(const Any& value);

// The Python type that values of a type arrive as in Python: `int` for Integer, the wrapper's type for a host class,
// the type that it presents for a class of Python's, `object` for a type that is not that of one class. The lock must
// be held.
PyObjectPtr python_type_of(const Type& type);

// The class that a built-in Python type stands for: Integer for `int`, ByteArray for `bytes`. None for every other
// object.
Union<Class_Generic, None> builtin_class_of(PyObjectPtr_Borrowed type);

}  // namespace ling::cpython
