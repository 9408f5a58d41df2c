// Failures across the border: Python exceptions become Errors, Errors become Python exceptions, and one that crosses
// twice is the same object it was. The lock must be held for every operation.
//
// Defined in bridge/: error_bridge.cpp, exception_types.cpp.
#pragma once

#include "ling/class.h"
#include "ling/error.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// The pending Python exception as an Error, None when none is pending. Clears it.
Union<Error, None> capture_error();
// The captured error, or one with this message when no exception is pending.
Error capture_error_or(const char* message);

// The pending Python exception as an Error, an EvaluationError when it can be placed in the source. The shifts are
// added to the line and the column, which become absent where the sum is not positive. Error::unknown() when none is
// pending. Clears it.
Error exception_to_error(int line_shift, int column_shift);

// The Error for an exception instance: the Error it carries in its attribute "ling", else a new one with its text and
// its traceback as the stack. No exception must be pending, none is left. Borrows the instance.
Error error_from_exception(PyObjectPtr_Borrowed instance);

// The Python exception class for a class of errors: StopIteration for StopIteration, RuntimeError for Error, for every
// other class one made on first need, derived from RuntimeError. Borrowed; lives for the life of the process.
PyObject* exception_type_of(const Class_Generic& error_class);

// Sets the Python exception for an Error: of the class for its class, with its message. The exception carries the Error
// in its attribute "ling". An Error made for an interruption sets that exception again; one that says that memory has
// run out is a MemoryError, for which no memory is needed.
void raise_error(const Error& error) noexcept;
// The same with an exception class and a text of the caller's. Borrows the class.
void raise_error_as(PyObject* exception_type, const Error& error, const String& message) noexcept;

}  // namespace ling::cpython
