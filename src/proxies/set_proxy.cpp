// Python's sets.
#include "ling/detail/try.h"
#include "proxies/collection_proxies.h"
#include "proxies/method_call.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/pending_exception.h"

namespace ling::cpython {

namespace {

// Whether the set has grown.
Result<Boolean> insert(const CPythonObject& self, const Any& value) {
  const Integer before = TRY(collection_length(self));
  TRY(run_python_method(self, "add", value));
  const Integer after = TRY(collection_length(self));
  return Boolean(after.value() > before.value());
}

// An exception means that the value was not there.
Result<Boolean> remove(const CPythonObject& self, const Any& value) {
  return with_python_object(self, [&](PyObjectPtr_Borrowed object) -> Result<Boolean> {
    const PyObjectPtr method(PyObject_GetAttrString(object.get(), "remove"));
    if (!method || PyCallable_Check(method.get()) == 0) {
      tolerate_exception();
      return Error(String("The method is missing in {}.").arg(display_text(self)));
    }
    const PyObjectPtr argument = to_python_locked(value);
    if (!argument) {
      tolerate_exception();
      return Error(String("Unable to convert an argument: {}.").arg(display_text(value)));
    }
    const PyObjectPtr done(PyObject_CallFunctionObjArgs(method.get(), argument.get(), nullptr));
    tolerate_exception();
    return Boolean(static_cast<bool>(done));
  });
}

Result<None> extend(const CPythonObject& self, const I_Iterable_Generic& values) {
  const I_Iterator_Generic iterator = TRY(values.iter());
  for (;;) {
    const Any item = internal::unwrap(iterator.next());
    if (StopIteration::matches(item.get())) {
      return None();
    }
    if (is_error_result(item)) {
      return Error::unchecked(item);
    }
    TRY(run_python_method(self, "add", item));
  }
}

}  // namespace

constinit const class_definition<CPythonObject> cpython_proxy_set_class(
    "CPythonProxySet", [](class_builder<CPythonObject>& c) {
      c.set_allocator(&allocate_python_object, nullptr);
      c.module("ling.cpython")
          .doc("A Python set.")
          .parent(cpython_proxy_iterable_class.required())
          .parent(I_Set_Generic::genericInstance(Untyped::getType()))
          .parent(I_MutableSet_Generic::getClass())
          .property("__length__", "The number of values.", &collection_length)
          .method("insert", "value", "Adds a value; whether it was not there before.", &insert)
          .method("remove", "value", "Removes a value; whether it was there.", &remove)
          .method("extend", "values", "Adds the values of an iterable.", &extend)
          .method("clear", "", "Removes all values.", &clear_collection);
    });

}  // namespace ling::cpython
