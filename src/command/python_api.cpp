// Finding the interpreter's functions.
#include "command/python_api.h"

#include "command/platform.h"
#include "ling/error.h"
#include "ling/string.h"

namespace ling::command {

namespace {

template <class T>
bool find(const char* name, T*& into) {
  into = reinterpret_cast<T*>(interpreter_symbol(name));
  return into != nullptr;
}

}  // namespace

Result<None> python_api::open() {
#define LING_FIND_PYTHON(name)                                                    \
  if (!find(#name, name)) {                                                       \
    return Error(String("The interpreter library does not have {}.").arg(#name)); \
  }
#define LING_FIND_PYTHON_FUNCTION(result, name, parameters) LING_FIND_PYTHON(name)
#define LING_FIND_PYTHON_OBJECT(type, name) LING_FIND_PYTHON(name)
  LING_PYTHON_FUNCTIONS(LING_FIND_PYTHON_FUNCTION)
  LING_PYTHON_OBJECTS(LING_FIND_PYTHON_OBJECT)
#undef LING_FIND_PYTHON_OBJECT
#undef LING_FIND_PYTHON_FUNCTION
#undef LING_FIND_PYTHON
  find("PyErr_FormatUnraisable", PyErr_FormatUnraisable);
  return None();
}

}  // namespace ling::command
