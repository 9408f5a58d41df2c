// From Python's annotations to the runtime's types. Element types are lost: `list[int]` is a list. The lock must be
// held.
#pragma once

#include "ling/string.h"
#include "ling/type.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// The text of a str, else the qualified name, the name, or the text of the annotation; empty when it has none.
String annotation_name(PyObjectPtr_Borrowed annotation);
// The type that a name means, with or without its module and its element types; untyped when it means none.
Type type_from_name(const String& name);
// The type of an annotation, which may be null; untyped when it says nothing the runtime knows.
Type type_from_annotation(PyObjectPtr_Borrowed annotation);

}  // namespace ling::cpython
