// The built-in classes: one declaration per definition, so that the module `ling` can register them all.
#pragma once

#include "ling/boolean.h"
#include "ling/byte_array.h"
#include "ling/class_builder.h"
#include "ling/none.h"
#include "ling/number.h"
#include "ling/ordering.h"
#include "ling/string.h"

namespace ling::internal {

extern constinit const class_definition<None> none_class;
extern constinit const class_definition<Undefined> undefined_class;
extern constinit const class_definition<Boolean> boolean_class;
extern constinit const class_definition<Integer> integer_class;
extern constinit const class_definition<Float> float_class;
extern constinit const class_definition<String> string_class;
extern constinit const class_definition<ByteArray> byte_array_class;
extern constinit const class_definition<Ordering> ordering_class;

}  // namespace ling::internal
