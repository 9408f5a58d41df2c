// Members that several collection proxies have in common.
#pragma once

#include "ling/interfaces.h"
#include "proxies/cpython_object.h"

namespace ling::cpython {

// What `iter` of the interpreter gives, which knows the protocol of sequences, too.
Result<I_Iterator_Generic> iterate_by_protocol(const CPythonObject& self);
Result<Integer> collection_length(const CPythonObject& self);
Result<Boolean> collection_contains(const CPythonObject& self, const Any& value);
Result<None> clear_collection(const CPythonObject& self);

}  // namespace ling::cpython
