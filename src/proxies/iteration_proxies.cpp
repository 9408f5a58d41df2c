// Python's iterables and iterators.
#include "ling/detail/immortal.h"
#include "proxies/collection_proxies.h"
#include "proxies/method_call.h"
#include "proxies/object_members.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/pending_exception.h"

namespace ling::cpython {

namespace {

Result<I_Iterator_Generic> as_iterator(const PyObjectPtr& iterator) {
  if (!iterator) {
    return capture_error_or("Unable to iterate over a Python object.");
  }
  if (PyIter_Check(iterator.get()) == 0) {
    return Error(String("The method '__iter__' returned {}, which is no iterator.")
                     .arg(display_text(from_python_locked(iterator.get()))));
  }
  return Result<I_Iterator_Generic>::unchecked(make_python_object(cpython_proxy_iterator_class, iterator.get()));
}

Result<I_Iterator_Generic> iterate_by_method(const CPythonObject& self) {
  if (self.address() == nullptr) {
    return Error("Invalid object.");
  }
  return with_python_object(self, [](PyObjectPtr_Borrowed object) -> Result<I_Iterator_Generic> {
    const PyObjectPtr method(PyObject_GetAttrString(object.get(), "__iter__"));
    if (!method || PyCallable_Check(method.get()) == 0) {
      tolerate_exception();
      return Error("Missing '__iter__' method.");
    }
    return as_iterator(PyObjectPtr(PyObject_CallObject(method.get(), nullptr)));
  });
}

Result<Boolean> contains_immutable(const CPythonObject& self, const I_Immutable& value) {
  return call_python_method_as<Boolean>(self, "__contains__", value);
}

// The lock must be held.
Any next_locked(PyObjectPtr_Borrowed iterator) {
  if (PyIter_Check(iterator.get()) == 0) {
    return Error("The object is not an iterator.");
  }
  const PyObjectPtr item(PyIter_Next(iterator.get()));
  if (item) {
    return from_python_locked(item.get());
  }
  const auto failure = capture_error();
  return failure ? Any(failure) : Any(StopIteration());
}

Any next(const CPythonObject& self) { return with_python_object(self, &next_locked); }

// Known, so that it is seen when another method takes its place.
const I_Callable_Generic& next_method() {
  static const internal::immortal<I_Callable_Generic> made(
      method_builder_base("next", "self", "The next item; StopIteration at the end.", {}, true).body(&next));
  return made.object;
}

}  // namespace

Any drain_hook(const Any& iterator, std::vector<Any>& items) {
  const auto& instance = static_cast<const object_value_instance&>(*iterator.get());
  const class_member* const next = instance.object_class().find_member(members::next.entry());
  if (next == nullptr || !next->method.is_same(next_method()) || instance.may_have_own_members()) {
    return Undefined();
  }
  return internal::guarded([&]() -> Any {
    return with_python_object(CPythonObject::unchecked(iterator), [&](PyObjectPtr_Borrowed object) -> Any {
      for (;;) {
        Any item = internal::unwrap(next_locked(object));
        if (StopIteration::matches(item.get())) {
          return None();
        }
        if (is_error_result(item)) {
          return item;
        }
        items.push_back(std::move(item));
      }
    });
  });
}

Result<I_Iterator_Generic> iterate_by_protocol(const CPythonObject& self) {
  return with_python_object(
      self, [](PyObjectPtr_Borrowed object) { return as_iterator(PyObjectPtr(PyObject_GetIter(object.get()))); });
}

constinit const class_definition<CPythonObject> cpython_proxy_iterable_class(
    "CPythonProxyIterable", [](class_builder<CPythonObject>& c) {
      c.set_allocator(&allocate_python_object, nullptr);
      c.module("ling.cpython")
          .doc("A Python object that can be iterated over.")
          .parent(CPythonObject::getClass())
          .parent(I_Iterable_Generic::getClass())
          .method("contains", "value", "Whether the object says that it holds the value.", &contains_immutable)
          .method("iter", "", "A new iterator.", &iterate_by_method);
    });

constinit const class_definition<CPythonObject> cpython_proxy_iterator_class(
    "CPythonProxyIterator", [](class_builder<CPythonObject>& c) {
      c.set_allocator(&allocate_python_object, nullptr);
      c.module("ling.cpython")
          .doc("A Python iterator.")
          .parent(CPythonObject::getClass())
          .parent(I_Iterator_Generic::getClass());
      c.add_method("next", next_method());
    });

}  // namespace ling::cpython
