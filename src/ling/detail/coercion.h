// Conversion of values to a class, as Class_Generic::coerce does it, for callers that know what to do without one.
#pragma once

#include "ling/class.h"

namespace ling::internal {

// The value as an instance of the class: the value itself where it is one, what it is converted to, or the Error of a
// conversion that failed. Empty when there is no conversion.
LING_API Any converted(const Any& value, const Class_Generic& to);

}  // namespace ling::internal
