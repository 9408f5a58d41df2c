// The tables of the operator, sequence and mapping slots; the other slots are filled in shared_types.cpp.
#include "lingobject/operators.h"
#include "lingobject/slot_bodies.h"
#include "lingobject/type_objects.h"

namespace ling::cpython {

// No nb_add and nb_multiply: Python then comes to sq_concat and sq_repeat. No nb_bool: truth is the length.
constinit number_methods wrapper_numbers = {
    .nb_subtract = binary_operator<host_operator::subtract>,
    .nb_invert = unary_operator<host_operator::invert>,
    .nb_and = binary_operator<host_operator::bit_and>,
    .nb_xor = binary_operator<host_operator::bit_xor>,
    .nb_or = binary_operator<host_operator::bit_or>,
    .nb_inplace_subtract = binary_operator<host_operator::inplace_subtract>,
    .nb_true_divide = binary_operator<host_operator::divide>,
    .nb_inplace_true_divide = binary_operator<host_operator::inplace_divide>,
};

constinit sequence_methods minimal_sequence = {
    .sq_concat = binary_operator<host_operator::concat>,
    .sq_inplace_concat = binary_operator<host_operator::extend>,
};

constinit sequence_methods membership_sequence = {
    .sq_concat = binary_operator<host_operator::concat>,
    .sq_contains = contains_slot,
    .sq_inplace_concat = binary_operator<host_operator::extend>,
};

constinit sequence_methods full_sequence = {
    .sq_length = length_slot,
    .sq_concat = binary_operator<host_operator::concat>,
    .sq_repeat = counted_operator<host_operator::repeat>,
    .sq_item = item_slot,
    .sq_ass_item = assign_item_slot,
    .sq_contains = contains_slot,
    .sq_inplace_concat = binary_operator<host_operator::extend>,
    .sq_inplace_repeat = counted_operator<host_operator::inplace_repeat>,
};

constinit mapping_methods wrapper_mapping = {
    .mp_length = length_slot,
    .mp_subscript = subscript_slot,
    .mp_ass_subscript = assign_subscript_slot,
};

}  // namespace ling::cpython
