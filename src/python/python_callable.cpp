// Python callables as the host's.
#include "python/python_callable.h"

#include "ling/detail/try.h"
#include "python/call_python.h"
#include "python/interpreter.h"
#include "python/python_text.h"

#include <mutex>

namespace ling::cpython {

String object_value_python_callable::doc() const {
  if (ensure_interpreter().is_error()) {
    return {};
  }
  const GilGuard gil;
  return text_attribute(function(), "__doc__");
}

Result<Signature> object_value_python_callable::signature() const {
  TRY(ensure_interpreter());
  const GilGuard gil;
  return signature_of_python(function());
}

Any object_value_python_callable::declaring_context() const {
  const std::lock_guard guard(lock_);
  return declaring_context_;
}

void object_value_python_callable::set_declaring_context(const Any& context) {
  Any former = context;
  const std::lock_guard guard(lock_);
  former.swap(declaring_context_);
}

}  // namespace ling::cpython
