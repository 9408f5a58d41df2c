// CPythonFunction.
#include "function/python_function.h"

#include "function/defaults.h"
#include "ling/detail/try.h"
#include "ling/interfaces.h"
#include "python/call_python.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/interpreter.h"
#include "python/pending_exception.h"
#include "python/python_equality.h"
#include "python/python_text.h"

#include <mutex>

namespace ling::cpython {

namespace {

// Python makes a bound method anew each time it is asked for one, and says itself that they are equal.
Any equals(const CPythonFunction& self, const Any& other) {
  TRY(ensure_interpreter());
  const GilGuard gil;
  return equals_python(self.object().function(), other);
}

Any hash(const CPythonFunction& self) {
  TRY(ensure_interpreter());
  const GilGuard gil;
  return hash_of_python(self.object().function());
}

Result<List_Generic> read_defaults(const CPythonFunction& self) {
  TRY(ensure_interpreter());
  const GilGuard gil;
  return List_Generic(defaults_of(self.object().function()));
}

Result<None> write_defaults(const CPythonFunction& self, const I_Iterable_Generic& values) {
  TRY(ensure_interpreter());
  {
    const GilGuard gil;
    TRY(set_defaults(self.object().function(), values));
  }
  self.object().forget_signature();
  return None();
}

// What stands in `__doc__`, as it is: none for a function without a docstring.
Any read_doc(const CPythonFunction& self) {
  TRY(ensure_interpreter());
  const GilGuard gil;
  const PyObjectPtr doc(PyObject_GetAttrString(self.object().function(), "__doc__"));
  return doc ? from_python_locked(doc.get()) : Any(capture_error_or("Unable to read an attribute."));
}

// Of a text, or of anything that Python can call.
Any construct(const Class_Generic&, const Any& source) {
  if (const auto text = String::cast(source)) {
    return compile_function(text.value());
  }
  if (CPythonFunction::matches(source.get())) {
    return source;
  }
  TRY(ensure_interpreter());
  const GilGuard gil;
  const PyObjectPtr object = to_python_locked(source);
  return object ? Any(make_python_function(object.get()))
                : Any(capture_error_or("The source object isn't a function."));
}

}  // namespace

constinit const class_definition<CPythonFunction> cpython_function_class(
    "CPythonFunction", [](class_builder<CPythonFunction>& c) {
      c.module("ling.cpython")
          .doc("Invokable wrapper around of a Python function.")
          .flags(class_flags::callable)
          .parent(I_Callable_Generic::getClass())
          .parent(I_Immutable::getClass())
          .parent(I_HasName::getClass())
          .parent(I_HasDoc::getClass())
          .constructor("source",
                       "A function from its source text: a lambda expression, a `def`, or the lines of a body.",
                       &construct)
          .property("name", "The qualified name of the Python function.",
                    [](const CPythonFunction& self) { return self.name(); })
          .property("doc", "Returns description of a function.", &read_doc)
          .property("signature", "What it takes and returns.",
                    [](const CPythonFunction& self) { return self.signature(); })
          .property("$_pyobj", "The Python function.", [](const CPythonFunction& self) { return self; })
          .property("$$defaults", "Default values for arguments, can be overriden.", &read_defaults, &write_defaults)
          .property("$_sign", "Cached signature.",
                    [](const CPythonFunction& self) { return self.object().cached_signature(); })
          .property("$_result_type", "Cached result type.",
                    [](const CPythonFunction& self) -> Any {
                      const auto signature = Signature::cast(self.object().cached_signature());
                      return signature ? Any(signature->resultType()) : Any();
                    })
          .method(Any::__equals__, "other", &equals)
          .method(Any::__hash__, "", &hash);
    });

object_value_class& object_value_python_function::object_class() const { return cpython_function_class.required(); }
Type CPythonFunction::getType() { return Type::of(getClass()); }
Class_Generic CPythonFunction::getClass() { return cpython_function_class.required(); }

Any object_value_python_function::do_call(std::span<const Any> arguments) const {
  TRY(ensure_interpreter());
  const GilGuard gil;
  return call_python(function(), arguments);
}

Any object_value_python_function::do_call_named(std::span<const Any> positional,
                                                std::span<const named_argument> named) const {
  TRY(ensure_interpreter());
  const GilGuard gil;
  return call_python(function(), positional, named);
}

String object_value_python_function::name() const {
  if (ensure_interpreter().is_error()) {
    return {};
  }
  const GilGuard gil;
  // The second one only where there is no first: either may be code that runs.
  const PyObjectPtr qualified(PyObject_GetAttrString(function(), "__qualname__"));
  const bool is_missing = !qualified && PyErr_ExceptionMatches(PyExc_AttributeError) != 0;
  drop_exception();
  if (is_missing || (qualified && !PyUnicode_Check(qualified.get()))) {
    return text_attribute(function(), "__name__");
  }
  return text_of(qualified.get(), surrogates::escape);
}

Result<Signature> object_value_python_function::signature() const {
  if (Any cached = cached_signature(); !cached.empty()) {
    return Signature::unchecked(std::move(cached));
  }
  const Any asked = TRY(object_value_python_callable::signature());
  Any former = asked;
  {
    const std::lock_guard guard(lock_);
    former.swap(signature_);
  }
  return Signature::unchecked(asked);
}

Any object_value_python_function::cached_signature() const noexcept {
  const std::lock_guard guard(lock_);
  return signature_;
}

void object_value_python_function::forget_signature() noexcept {
  Any former;
  const std::lock_guard guard(lock_);
  former.swap(signature_);
}

Result<CPythonFunction> make_python_function(PyObjectPtr_Borrowed callable) {
  if (!callable || PyCallable_Check(callable.get()) == 0) {
    return Error("The source object isn't a function.");
  }
  return CPythonFunction::unchecked(make<object_value_python_function>(PyObjectPtr::share(callable)));
}

}  // namespace ling::cpython
