// The one idiom by which the runtime and its modules propagate errors.
//
//   auto text = TRY(display(value));     the value, or return the error to the caller
//
// TRY forces lazy results. One TRY per statement, and never inside a braced list, a constructor call of an aggregate, a
// lambda capture or a new-expression: the early return would leave the members already built undestroyed.
#pragma once

#include "ling/error.h"
#include "ling/union.h"

#include <utility>

#define TRY(expression)                                        \
  __extension__({                                              \
    auto try_result_ = ::ling::result_unwrap_lazy(expression); \
    if (try_result_.is_error()) [[unlikely]] {                 \
      return try_result_.error();                              \
    }                                                          \
    std::move(try_result_).value();                            \
  })
