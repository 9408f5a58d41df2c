// What Python has to say of an exception.
#include "bridge/exception_details.h"
#include "ling/detail/under_way.h"
#include "python/error_bridge.h"
#include "python/module_attribute.h"
#include "python/pending_exception.h"
#include "python/python_name.h"
#include "python/python_text.h"

namespace ling::cpython {

namespace {

constinit const module_attribute format_exception("traceback", "format_exception");
constinit const python_name name_of_type("__name__");
constinit const python_name traceback_name("__traceback__");

// What is being told of exceptions on this thread, innermost first. An exception's own code makes its text, and what
// that shows by way of the host may be exceptions again, among them the same one.
struct told_exception {
  const PyObject* instance;
  bool is_traceback;
};
using telling = internal::under_way<told_exception>;

}  // namespace

String type_name_of(PyObject* object) {
  const PyObjectPtr name = name_of_type.of(reinterpret_cast<PyObject*>(Py_TYPE(object)));
  const bool is_text = name && PyUnicode_Check(name.get());
  drop_exception();
  return is_text ? text_of(name.get(), surrogates::escape) : String();
}

String exception_message(PyObject* instance) {
  if (telling::any([&](const told_exception& each) { return each.instance == instance && !each.is_traceback; })) {
    return type_name_of(instance);
  }
  const telling guard({instance, false});
  const PyObjectPtr text(PyObject_Str(instance));
  if (!text) {
    drop_exception();
    return type_name_of(instance);
  }
  return text_of(text.get(), surrogates::escape);
}

String exception_traceback_text(PyObject* instance) {
  // Within a traceback an exception is told by its message alone: with two texts of each, which their own code makes,
  // there would be four of what these show, and so on.
  PyObject* const format = format_exception.get();
  if (format == nullptr || telling::any([](const told_exception& each) { return each.is_traceback; })) {
    return {};
  }
  const telling guard({instance, true});
  // Spelled with all three arguments, which Python 3.9 insists on.
  const PyObjectPtr traceback = traceback_name.of(instance);
  const PyObjectPtr lines(traceback
                              ? PyObject_CallFunctionObjArgs(format, reinterpret_cast<PyObject*>(Py_TYPE(instance)),
                                                             instance, traceback.get(), nullptr)
                              : nullptr);
  const PyObjectPtr separator(lines ? PyUnicode_FromString("") : nullptr);
  const PyObjectPtr joined(separator ? PyUnicode_Join(separator.get(), lines.get()) : nullptr);
  drop_exception();
  return text_of(joined.get(), surrogates::escape);
}

}  // namespace ling::cpython
