// The tables of operator slots that wrapper types point to. Constant, shared by all types.
#pragma once

#include "python/type_layout.h"

namespace ling::cpython {

// Of every wrapper type.
extern number_methods wrapper_numbers;

// Every wrapper type has one of these.
extern sequence_methods minimal_sequence;     // + and +=
extern sequence_methods membership_sequence;  // `in` as well
extern sequence_methods full_sequence;
// Of the types with one of the last two.
extern mapping_methods wrapper_mapping;

}  // namespace ling::cpython
