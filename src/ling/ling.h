// The whole runtime in one include.
//
// What holds where a header says nothing else: handles share their objects and release them with the last one; any
// thread may call; what can fail returns a Result. The only C++ exceptions are std::bad_alloc, when memory ends, and
// the Error of an interruption, from operations that have no other way to tell.
#pragma once

#include "ling/any.h"
#include "ling/boolean.h"
#include "ling/byte_array.h"
#include "ling/callable.h"
#include "ling/class.h"
#include "ling/class_builder.h"
#include "ling/closure.h"
#include "ling/date.h"
#include "ling/date_time.h"
#include "ling/decimal.h"
#include "ling/error.h"
#include "ling/evaluation_scope.h"
#include "ling/extension.h"
#include "ling/hash_map.h"
#include "ling/hash_set.h"
#include "ling/interfaces.h"
#include "ling/lazy.h"
#include "ling/list.h"
#include "ling/logger.h"
#include "ling/module.h"
#include "ling/none.h"
#include "ling/number.h"
#include "ling/ordering.h"
#include "ling/reflection.h"
#include "ling/registration.h"
#include "ling/signature.h"
#include "ling/spinlock.h"
#include "ling/string.h"
#include "ling/time.h"
#include "ling/tuple.h"
#include "ling/type.h"
