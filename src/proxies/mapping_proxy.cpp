// Python's mappings.
#include "ling/detail/container_errors.h"
#include "ling/detail/try.h"
#include "proxies/collection_proxies.h"
#include "proxies/method_call.h"
#include "python/convert.h"
#include "python/error_bridge.h"

namespace ling::cpython {

Result<Integer> collection_length(const CPythonObject& self) {
  const Integer length = TRY(call_python_method_as<Integer>(self, "__len__"));
  if (length.value() < 0) {
    return Error(String("The length of {} is negative: {}.").arg(display_text(self), length.value()));
  }
  return length;
}

Result<Boolean> collection_contains(const CPythonObject& self, const Any& value) {
  return call_python_method_as<Boolean>(self, "__contains__", value);
}

Result<None> clear_collection(const CPythonObject& self) { return run_python_method(self, "clear"); }

namespace {

Result<List_Generic> list_of(const PyObjectPtr& view) {
  const PyObjectPtr iterator(view ? PyObject_GetIter(view.get()) : nullptr);
  const List_Generic items;
  while (iterator) {
    const PyObjectPtr item(PyIter_Next(iterator.get()));
    if (!item) {
      break;
    }
    items.append(from_python_locked(item.get()));
  }
  if (const auto failure = capture_error()) {
    return failure.value();
  }
  return items;
}

Result<List_Generic> list_of_view(const CPythonObject& self, const char* name) {
  return with_python_object(self, [&](PyObjectPtr_Borrowed object) {
    return list_of(PyObjectPtr(PyObject_CallMethod(object.get(), name, nullptr)));
  });
}

// Undefined stands for a default that is not given.
Result<Any> get(const CPythonObject& self, const Any& key, const Any& otherwise) {
  const Boolean found = TRY(collection_contains(self, key));
  if (found.value()) {
    return call_python_method_as<Any>(self, "__getitem__", key);
  }
  return Result<Any>::unchecked(otherwise);
}

}  // namespace

constinit const class_definition<CPythonObject> cpython_proxy_mapping_class(
    "CPythonProxyMapping", [](class_builder<CPythonObject>& c) {
      c.set_allocator(&allocate_python_object, nullptr);
      c.module("ling.cpython")
          .doc("A Python mapping.")
          .parent(CPythonObject::getClass())
          .parent(I_Map_Generic::genericInstance(Untyped::getType(), Untyped::getType()))
          .parent(I_MutableMap_Generic::getClass())
          .property("__length__", "The number of keys.", &collection_length)
          .property("keys", "The keys as a new list.",
                    [](const CPythonObject& self) { return list_of_view(self, "keys"); })
          .property("values", "The values as a new list, in the order of the keys.",
                    [](const CPythonObject& self) { return list_of_view(self, "values"); })
          .constant("keysType", Untyped::getType(), "What the keys are: anything.")
          .constant("valuesType", Untyped::getType(), "What the values are: anything.")
          .method("contains", "key", "Whether the key is there.", &collection_contains)
          .method("get", "key, default", "The value; without the key the default.", &get, {Undefined()})
          .method("set", "key, value", "Sets the value of a key.",
                  [](const CPythonObject& self, const Any& key, const Any& value) {
                    return run_python_method(self, "__setitem__", key, value);
                  })
          .method(
              "remove", "key", "Removes a key and answers its value.",
              [](const CPythonObject& self, const Any& key) { return call_python_method_as<Any>(self, "pop", key); })
          .method("clear", "", "Removes all keys.", &clear_collection)
          .method("iter", "", "Goes through the keys.", &iterate_by_protocol);
    });

}  // namespace ling::cpython
