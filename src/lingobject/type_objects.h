// The type objects of wrappers.
//
// Defined in class_types.cpp, shared_types.cpp, slot_tables.cpp.
#pragma once

#include "ling/class.h"
#include "python/type_layout.h"

namespace ling::cpython {

// Fills the slots that all wrapper types have in common.
void fill_common_slots(type_object& type);
// Fills the slots that depend on what the instances of a class can do.
void fill_slots_of_class(type_object& type, const object_value_class& of_class);

// The shared type for classes with these flags. Null with an exception set when it cannot be made.
PyTypeObject* shared_type_of(std::uint64_t class_flags);
// The base of all types made for one class.
PyTypeObject* shared_callable_type();

// The tables of operator slots that they point to. Constant, shared by all types.

// Of every wrapper type.
extern number_methods wrapper_numbers;

// Every wrapper type has one of these.
extern sequence_methods minimal_sequence;     // + and +=
extern sequence_methods membership_sequence;  // `in` as well
extern sequence_methods full_sequence;
// Of the types with one of the last two.
extern mapping_methods wrapper_mapping;

}  // namespace ling::cpython
