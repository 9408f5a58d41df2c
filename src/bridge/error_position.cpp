// Reading source positions off exceptions and tracebacks.
#include "bridge/exception_details.h"
#include "python/pending_exception.h"
#include "python/python_name.h"

namespace ling::cpython {

namespace {

using number = std::optional<std::int64_t>;

constinit const struct {
  python_name lineno{"lineno"}, offset{"offset"}, end_lineno{"end_lineno"}, end_offset{"end_offset"};
  python_name tb_lineno{"tb_lineno"}, tb_next{"tb_next"};
} names;

// The attribute as a number; absent when it is missing, None, or anything that is no number.
number read_number(PyObject* object, const python_name& attribute) {
  const PyObjectPtr value = attribute.find(object);
  if (!value) {
    drop_exception();
    return {};
  }
  if (value.get() == Py_None) {
    return {};
  }
  const long long read = PyLong_AsLongLong(value.get());
  if (read == -1 && PyErr_Occurred() != nullptr) {
    drop_exception();
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
    if (const number read = read_number(frame.get(), names.tb_lineno)) {
      line = read;
    }
    frame = names.tb_next.of(frame.get());
  }
  drop_exception();
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
    position.line = read_number(instance, names.lineno);
    position.column = read_number(instance, names.offset);
    position.length = marked_length(position.line, position.column, read_number(instance, names.end_lineno),
                                    read_number(instance, names.end_offset));
  }
  if (!position.line) {
    position.line = innermost_line(traceback);
  }
  position.line = shifted(position.line, line_shift);
  position.column = shifted(position.column, column_shift);
  return position;
}

}  // namespace ling::cpython
