// Reading source positions off exceptions and tracebacks.
#include "bridge/error_position.h"

#include "bridge/pending_exception.h"

namespace ling::cpython {

namespace {

using number = std::optional<std::int64_t>;

// The attribute as a number; absent when it is missing, None, or anything that is no number.
number read_number(PyObject* object, const char* attribute) {
  const PyObjectPtr value(PyObject_GetAttrString(object, attribute));
  if (!value) {
    tolerate_exception();
    return {};
  }
  if (value.get() == Py_None) {
    return {};
  }
  const long long read = PyLong_AsLongLong(value.get());
  if (read == -1 && PyErr_Occurred() != nullptr) {
    tolerate_exception();
    return {};
  }
  return read;
}

// How much of one line is marked.
number marked_length(number line, number column, number end_line, number end_column) {
  if (!line || !column || !end_line || !end_column || *line != *end_line || *end_column < *column) {
    return {};
  }
  std::int64_t length = 0;
  return __builtin_sub_overflow(*end_column, *column, &length) ? number() : number(length);
}

number innermost_line(PyObject* traceback) {
  number line;
  for (PyObjectPtr frame = PyObjectPtr::share(traceback); frame && frame.get() != Py_None;) {
    if (const number read = read_number(frame.get(), "tb_lineno")) {
      line = read;
    }
    frame = PyObjectPtr(PyObject_GetAttrString(frame.get(), "tb_next"));
  }
  tolerate_exception();
  return line;
}

number shifted(number value, int shift) {
  std::int64_t sum = 0;
  if (!value || __builtin_add_overflow(*value, shift, &sum) || sum <= 0) {
    return {};
  }
  return sum;
}

}  // namespace

source_position position_of(PyObject* instance, PyObject* traceback, int line_shift, int column_shift) {
  source_position position;
  if (instance != nullptr) {
    position.line = read_number(instance, "lineno");
    position.column = read_number(instance, "offset");
    position.length = marked_length(position.line, position.column, read_number(instance, "end_lineno"),
                                    read_number(instance, "end_offset"));
  }
  if (!position.line) {
    position.line = innermost_line(traceback);
  }
  position.line = shifted(position.line, line_shift);
  position.column = shifted(position.column, column_shift);
  return position;
}

}  // namespace ling::cpython
