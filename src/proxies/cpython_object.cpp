// The class CPythonObject.
#include "proxies/cpython_object.h"

#include "bridge/error_bridge.h"
#include "bridge/python_text.h"
#include "ling/ordering.h"

namespace ling::cpython {

namespace {

Result<String> display_object(const python_reference& self) {
  if (self.address() == nullptr) {
    return Error("The object is null.");
  }
  const GilGuard gil;
  const PyObjectPtr object = self.get();
  const PyObjectPtr text(PyObject_Str(object.get()));
  if (!text) {
    return capture_error_or("Unable to get the text of a Python object.");
  }
  return text_of(text.get(), surrogates::escape);
}

Ordering compare_object(const python_reference& self, const Any& other) {
  const auto* reference = native_cast<python_reference>(other);
  const bool same = reference != nullptr && reference->address() == self.address();
  return same ? ordering_value::Equal : ordering_value::Incomparable;
}

std::uint64_t hash_object(const python_reference& self) { return reinterpret_cast<std::uintptr_t>(self.address()); }

}  // namespace

constinit const class_definition<python_reference> cpython_object_class(
    "CPythonObject", [](class_builder<python_reference>& c) {
      c.module("ling.cpython")
          .doc("Proxy wrapper around of 'PyObject'.")
          .method(Any::__display__, "", &display_object)
          .method(Any::__compare__, "other", &compare_object)
          .method(Any::__hash__, "", &hash_object);
    });

Any make_python_object(PyObjectPtr_Borrowed object) {
  return make<object_value_native<python_reference>>(cpython_object_class.required(), PyObjectPtr::share(object));
}

PyObjectPtr python_object_of(const Any& value) noexcept {
  const auto* reference = native_cast<python_reference>(value);
  return reference == nullptr ? PyObjectPtr() : reference->get();
}

}  // namespace ling::cpython
