// Method calls by name.
#include "proxies/method_call.h"

#include "ling/reflection.h"
#include "python/call_python.h"
#include "python/error_bridge.h"
#include "python/pending_exception.h"

namespace ling::cpython {

Any call_python_method(const CPythonObject& target, const char* name, std::span<const Any> arguments) {
  return with_python_object(target, [&](PyObjectPtr_Borrowed object) -> Any {
    const PyObjectPtr method(PyObject_GetAttrString(object.get(), name));
    if (!method || PyCallable_Check(method.get()) == 0) {
      tolerate_exception();
      return Error(String("The method is missing: {}, target object: {}.").arg(name, display_text(target)));
    }
    return call_python(method.get(), arguments);
  });
}

}  // namespace ling::cpython
