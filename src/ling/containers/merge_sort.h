// merge_sort: a stable sort by an order that may fail and that nobody vouches for.
#pragma once

#include "ling/none.h"
#include "ling/union.h"

#include <vector>

namespace ling::internal {

// Sorts by compare_objects, ascending. An Error when two items cannot be compared; the row is then of no use any more.
// A meta-method whose order contradicts itself still gives some order; the standard library's sorts may run out of the
// row in that case.
Result<None> merge_sort(std::vector<Any>& items);

}  // namespace ling::internal
