// Values as Python code.
#include "ling/detail/try.h"
#include "ling/none.h"
#include "ling/reflection.h"
#include "ling/tuple.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/interpreter.h"
#include "python/pending_exception.h"
#include "python/python_text.h"

namespace ling::cpython {

namespace {

// A text, None for a value without a counterpart, or an Error.
using code_result = Union<String, None, Error>;

code_result code_of(const Any& value, int depth);

// As Python writes tuples.
code_result code_of_tuple(const object_value_tuple& tuple, int depth) {
  string_builder text;
  text.append('(');
  for (std::size_t i = 0; i < tuple.length(); ++i) {
    const code_result item = code_of(tuple.at(i), depth + 1);
    if (!item.has_value()) {
      return item;
    }
    text.append(i == 0 ? "" : ", ").append(item.value());
  }
  text.append(tuple.length() == 1 ? ",)" : ")");
  return text.build();
}

// Decided before anything is wrapped: the `repr` of a wrapper is this very operation, and the signature texts in the
// type of a wrapper are made by it.
code_result code_of(const Any& value, int depth) {
  if (depth > maximum_conversion_depth) {
    return None();
  }
  if (value.type() == ObjectType::External) {
    return code_of(unwrap(value), depth + 1);
  }
  if (value.type() == ObjectType::Tuple) {
    return code_of_tuple(static_cast<const object_value_tuple&>(*value.get()), depth);
  }
  if (arrives_wrapped(value)) {
    return code_result::unchecked(display(value));
  }
  const PyObjectPtr object = to_python_locked(value);
  if (!object) {
    tolerate_exception();
    return None();
  }
  const PyObjectPtr text(PyObject_Repr(object.get()));
  if (!text) {
    return capture_error_or("Unable to get the code text of a Python object.");
  }
  return text_of(text.get(), surrogates::escape);
}

}  // namespace

Result<String> to_code(const Any& value) {
  TRY(ensure_interpreter());
  code_result code = internal::guarded([&] {
    const GilGuard gil;
    return code_of(value, 0);
  });
  return is_none(code) ? Result<String>(String()) : Result<String>::unchecked(std::move(code));
}

}  // namespace ling::cpython
