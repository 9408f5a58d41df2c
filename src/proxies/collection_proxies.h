// Python's collections as the runtime's: iterables, iterators, mappings, sequences and sets. Every one is a
// CPythonObject; nothing is copied, and every operation calls the Python object, under the lock that it takes itself.
#pragma once

#include "proxies/cpython_object.h"

namespace ling::cpython {

extern const class_definition<CPythonObject> cpython_proxy_iterable_class;
extern const class_definition<CPythonObject> cpython_proxy_iterator_class;
extern const class_definition<CPythonObject> cpython_proxy_mapping_class;
extern const class_definition<CPythonObject> cpython_proxy_sequence_class;
extern const class_definition<CPythonObject> cpython_proxy_set_class;

}  // namespace ling::cpython
