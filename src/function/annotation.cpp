// Annotations: a name is looked up among Python's, then among the runtime's.
#include "function/annotation.h"

#include "ling/module.h"
#include "ling/none.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/module_attribute.h"
#include "python/pending_exception.h"
#include "python/python_text.h"
#include "python/type_table.h"

#include <algorithm>

namespace ling::cpython {

namespace {

constinit const module_attribute get_origin("typing", "get_origin");

String before(const String& text, std::string_view mark) {
  const std::size_t position = text.view().find(mark);
  return position == std::string_view::npos ? text : String(text.view().substr(0, position)).trimmed();
}

// "typing.List[int]" is "List", "int | None" is "int".
String short_name(const String& name) {
  const String text = before(before(name.trimmed(), "["), "|");
  const std::size_t dot = text.view().rfind('.');
  return dot == std::string_view::npos ? text : String(text.view().substr(dot + 1)).trimmed();
}

bool means_anything(const String& name) { return name.view() == "Any" || name.view() == "_empty"; }

// The generic type that a subscripted one was made of; null when it is none.
PyObjectPtr origin_of(PyObject* annotation) {
  PyObject* const function = get_origin.get();
  PyObjectPtr origin(function == nullptr ? nullptr : PyObject_CallFunctionObjArgs(function, annotation, nullptr));
  tolerate_exception();
  return origin && origin.get() != Py_None ? std::move(origin) : PyObjectPtr();
}

Type type_of_class(PyObject* python_class) {
  const String name = annotation_name(python_class);
  const Type named = type_from_name(name);
  if (!named.is_untyped() || means_anything(name)) {
    return named;
  }
  const auto of_class = Class_Generic::cast(from_python_locked(python_class));
  return of_class ? Type::of(of_class.value()) : Type::untyped();
}

}  // namespace

String annotation_name(PyObjectPtr_Borrowed annotation) {
  if (PyUnicode_Check(annotation.get())) {
    return text_of(annotation.get(), surrogates::refuse);
  }
  for (const char* attribute : {"__qualname__", "__name__"}) {
    const PyObjectPtr name(PyObject_GetAttrString(annotation.get(), attribute));
    tolerate_exception();
    if (name && PyUnicode_Check(name.get())) {
      return text_of(name.get(), surrogates::refuse);
    }
  }
  const PyObjectPtr text(PyObject_Str(annotation.get()));
  tolerate_exception();
  return text_of(text.get(), surrogates::refuse);
}

Type type_from_name(const String& name) {
  const String wanted = short_name(name);
  if (means_anything(wanted)) {
    return Type::untyped();
  }
  for (const type_row& row : type_rows()) {
    if (!wanted.empty() && std::ranges::find(row.in_annotations, wanted.view()) != row.in_annotations.end()) {
      return Type::of(row.get_class());
    }
  }
  const auto known = find_type(wanted);
  return known ? known.value() : Type::untyped();
}

Type type_from_annotation(PyObjectPtr_Borrowed annotation) {
  if (!annotation) {
    return Type::untyped();
  }
  PyObjectPtr current = PyObjectPtr::share(annotation);
  // An origin that has an origin in turn is rare; one without end is somebody's joke.
  constexpr int maximum_origins = 16;
  for (int i = 0; i < maximum_origins && current.get() != Py_None; ++i) {
    PyObjectPtr origin = origin_of(current.get());
    if (!origin) {
      break;
    }
    current = std::move(origin);
  }
  if (current.get() == Py_None) {
    return None::getType();
  }
  return PyType_Check(current.get()) ? type_of_class(current.get()) : type_from_name(annotation_name(current.get()));
}

}  // namespace ling::cpython
