// Text out of a Python str. The lock must be held.
#pragma once

#include "ling/string.h"
#include "python/interpreter_function.h"
#include "python/pending_exception.h"
#include "python/pyobject_ptr.h"

namespace ling::cpython {

// The UTF-8 of a str, which keeps it; null with an exception set for what is no str or cannot be encoded. Exported by
// all versions that the module runs on, part of the limited API since 3.10.
inline const char* utf8_in(PyObject* text, Py_ssize_t* size) noexcept {
  static constinit const interpreter_function<const char*(PyObject*, Py_ssize_t*)> function("PyUnicode_AsUTF8AndSize");
  return function.get()(text, size);
}

// What becomes of a str that is no valid Unicode text because it holds lone surrogates.
enum class surrogates {
  refuse,  // the result is the empty text
  escape,  // they show as "\udc80"
};

// The text of a str; empty for null and for what cannot be encoded. Leaves no exception of its own; one that is pending
// must be put aside by the caller.
inline String text_of(PyObject* text, surrogates policy) {
  if (text == nullptr) {
    return {};
  }
  // The interpreter keeps what it tells of a text that is not ASCII for as long as the text: not of long ones.
  constexpr Py_ssize_t longest_to_keep = 1000;
  if (Py_ssize_t size = 0; policy == surrogates::refuse && PyUnicode_GetLength(text) <= longest_to_keep) {
    if (const char* const bytes = utf8_in(text, &size)) {
      return String::fromUtf8(bytes, static_cast<std::size_t>(size));
    }
    drop_exception();
    return {};
  }
  const PyObjectPtr bytes(policy == surrogates::refuse ? PyUnicode_AsUTF8String(text)
                                                       : PyUnicode_AsEncodedString(text, "utf-8", "backslashreplace"));
  if (!bytes) {
    drop_exception();
    return {};
  }
  return String::fromUtf8(PyBytes_AsString(bytes.get()), static_cast<std::size_t>(PyBytes_Size(bytes.get())));
}

// An attribute that is a str; empty when it is missing or something else. No exception must be pending, none is left.
inline String text_attribute(PyObject* object, const char* name) {
  const PyObjectPtr text(PyObject_GetAttrString(object, name));
  drop_exception();
  return text && PyUnicode_Check(text.get()) ? text_of(text.get(), surrogates::escape) : String();
}

}  // namespace ling::cpython
