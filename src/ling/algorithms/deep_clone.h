// deep_clone: a copy of a value with copies of all that it holds.
#pragma once

#include "ling/any.h"

namespace ling::internal {

// Immutable values and values that cannot be cloned are shared with the original. What the original holds twice, itself
// included, the copy holds twice. An Error when a `deepClone` on the way gives one or the value is nested too deeply.
Any deep_clone(const Any& value);

}  // namespace ling::internal
