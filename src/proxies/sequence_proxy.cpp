// Python's sequences.
#include "ling/detail/try.h"
#include "proxies/collection_proxies.h"
#include "proxies/method_call.h"
#include "python/call_python.h"
#include "python/convert.h"
#include "python/error_bridge.h"
#include "python/pending_exception.h"

namespace ling::cpython {

namespace {

Result<Any> at(const CPythonObject& self, std::int64_t index) {
  return call_python_method_as<Any>(self, "__getitem__", index);
}

// An item that cannot be had is no failure.
Any at_or(const CPythonObject& self, std::int64_t index, const Any& otherwise) {
  const Result<Any> item = at(self, index);
  return item.is_error() && !ends_asking(item) ? otherwise : Any(item);
}

// Each removal moves the next item into the place.
Result<None> remove_at(const CPythonObject& self, std::int64_t index, std::int64_t count) {
  for (std::int64_t i = 0; i < count; ++i) {
    TRY(run_python_method(self, "__delitem__", index));
  }
  return None();
}

Result<Boolean> remove_one(const CPythonObject& self, const Any& value) {
  const Integer count = TRY(call_python_method_as<Integer>(self, "count", value));
  if (count.value() <= 0) {
    return Boolean(false);
  }
  TRY(run_python_method(self, "remove", value));
  return Boolean(true);
}

// -1 when the value is not there.
Result<Integer> index_of(const CPythonObject& self, const Any& value, std::int32_t from) {
  return with_python_object(self, [&](PyObjectPtr_Borrowed object) -> Result<Integer> {
    const PyObjectPtr wanted = to_python_locked(value);
    if (!wanted) {
      return error_not_convertible(value);
    }
    PyObjectPtr index(PyObject_CallMethod(object.get(), "index", "Oi", wanted.get(), from));
    if (!index && from == 0 && PyErr_ExceptionMatches(PyExc_TypeError) != 0) {
      tolerate_exception();  // a range, for one, searches from its beginning only
      index = PyObjectPtr(PyObject_CallMethod(object.get(), "index", "O", wanted.get()));
    }
    if (index) {
      return internal::promised<Integer>(from_python_locked(index.get()));
    }
    // Not found is an exception in Python; only what ends more than a search is one here.
    tolerate_exception();
    return Integer(-1);
  });
}

Result<Any> sliced(const CPythonObject& self, std::int64_t start, std::int64_t stop) {
  return with_python_object(self, [&](PyObjectPtr_Borrowed object) -> Result<Any> {
    const PyObjectPtr first(PyLong_FromLongLong(start));
    const PyObjectPtr last(PyLong_FromLongLong(stop));
    // Null would be a position that is not given.
    const PyObjectPtr slice(first && last ? PySlice_New(first.get(), last.get(), nullptr) : nullptr);
    const PyObjectPtr items(slice ? PyObject_GetItem(object.get(), slice.get()) : nullptr);
    if (!items) {
      return capture_error_or("Unable to slice a Python object.");
    }
    return Result<Any>::unchecked(from_python_locked(items.get()));
  });
}

void describe_reading(class_builder<CPythonObject>& c) {
  c.property("__length__", "The number of items.", &collection_length)
      .constant("elementsType", Untyped::getType(), "What the items are: anything.")
      .method("at", "index", "The item; negative indices count from the end.", &at)
      .method("atOr", "index, default", "The item, or the default when there is none.", &at_or)
      .method("contains", "value", "Whether an item is equal.", &collection_contains)
      .method("indexOf", "value, from", "The position of the first equal item from there on, -1 when there is none.",
              &index_of, {0})
      .method("sliced", "start, stop", "The items from one position up to another, as Python slices the object.",
              &sliced)
      .method("iter", "", "Goes through the items.", &iterate_by_protocol);
}

void describe_changing(class_builder<CPythonObject>& c) {
  c.method("set", "index, value", "Replaces an item.",
           [](const CPythonObject& self, std::int64_t index, const Any& value) {
             return run_python_method(self, "__setitem__", index, value);
           })
      .method("append", "value", "Adds an item at the end.",
              [](const CPythonObject& self, const Any& value) { return run_python_method(self, "append", value); })
      .method("appendAt", "index, value", "Adds an item before the one at that position.",
              [](const CPythonObject& self, std::int64_t index, const Any& value) {
                return run_python_method(self, "insert", index, value);
              })
      .method("extend", "values", "Adds the items of an iterable at the end.",
              [](const CPythonObject& self, const I_Iterable_Generic& values) {
                return run_python_method(self, "extend", values);
              })
      .method("removeAt", "index, count", "Removes that many items from that position on.", &remove_at, {1})
      .method("removeOne", "value", "Removes the first equal item; whether there was one.", &remove_one)
      .method(
          "pop", "index", "Removes an item and answers it.",
          [](const CPythonObject& self, std::int64_t index) { return call_python_method_as<Any>(self, "pop", index); },
          {-1})
      .method("clear", "", "Removes all items.", &clear_collection);
}

}  // namespace

constinit const class_definition<CPythonObject> cpython_proxy_sequence_class(
    "CPythonProxySequence", [](class_builder<CPythonObject>& c) {
      c.set_allocator(&allocate_python_object, nullptr);
      c.module("ling.cpython")
          .doc("A Python sequence.")
          .parent(CPythonObject::getClass())
          .parent(I_MutableSequence_Generic::getClass());
      describe_reading(c);
      describe_changing(c);
    });

}  // namespace ling::cpython
