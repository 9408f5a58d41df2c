// Dates, times and decimals across the border. The lock must be held.
//
// Dates and times travel field by field. Python's objects count microseconds: a Time loses what is below them, and its
// zone, on the way there. On the way back a zone is kept when it lies at or east of UTC by whole seconds; a Time has no
// other offsets. Decimals travel as text, so that no digit is lost.
#pragma once

#include "ling/date_time.h"
#include "ling/decimal.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// A `datetime.date`, `datetime.time`, `datetime.datetime` without a zone; null on failure, without an exception when
// the class could not be imported.
PyObjectPtr date_to_python(const Date& date);
PyObjectPtr time_to_python(const Time& time);
PyObjectPtr date_time_to_python(const DateTime& value);

// The DateTime, Time or Date for an object of one of those classes, an Error when its fields say what does not exist;
// empty for every other object, and for one whose fields cannot be read. An interruption meanwhile is an Error, too. No
// exception must be pending, none is left.
Any date_or_time_from_python(PyObject* object);

// A `decimal.Decimal`; null on failure, without an exception when the class could not be imported.
PyObjectPtr decimal_to_python(const Decimal& value);

bool is_decimal(PyObject* object);
// The Decimal for the text of such an object, or an Error. Leaves no exception pending.
Any decimal_from_python(PyObject* object);

}  // namespace ling::cpython
