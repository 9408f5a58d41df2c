// Python's collections as the runtime's: iterables, iterators, mappings, sequences and sets. Every one is a
// CPythonObject; nothing is copied, and every operation calls the Python object, under the lock that it takes itself.
//
// Defined in mapping_proxy.cpp, sequence_proxy.cpp, set_proxy.cpp, iteration_proxies.cpp.
#pragma once

#include "ling/interfaces.h"
#include "proxies/cpython_object.h"

namespace ling::cpython {

extern const class_definition<CPythonObject> cpython_proxy_iterable_class;
extern const class_definition<CPythonObject> cpython_proxy_iterator_class;
extern const class_definition<CPythonObject> cpython_proxy_mapping_class;
extern const class_definition<CPythonObject> cpython_proxy_sequence_class;
extern const class_definition<CPythonObject> cpython_proxy_set_class;

// Members that several of them have.
// What `iter` of the interpreter gives, which knows the protocol of sequences, too.
Result<I_Iterator_Generic> iterate_by_protocol(const CPythonObject& self);
Result<Integer> collection_length(const CPythonObject& self);
Result<Boolean> collection_contains(const CPythonObject& self, const Any& value);
Result<None> clear_collection(const CPythonObject& self);

}  // namespace ling::cpython
