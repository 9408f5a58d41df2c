// The interfaces a class may conform to. An interface is a class without instances; a class conforms by naming it as a
// parent and having its members. Each interface is one handle, whose operations take and return Any, go to the
// runtime's own containers directly and to any other value through its members of the same name.
//
// Operations return results: a value, a lazily computed value, or an Error; what a member of a foreign class returned
// is passed on as it is.
//
// Threads: any; the runtime's own values are atomic in each operation, members of a foreign class as it makes them.
#pragma once

#include "ling/boolean.h"
#include "ling/class.h"
#include "ling/list.h"
#include "ling/number.h"

namespace ling {

// The names of interface members, in one place.
namespace members {
// clang-format off
#define LING_INTERFACE_METHODS(X)                                                                                  \
  X(append) X(appendAt) X(at) X(atOr) X(clear) X(clone) X(contains) X(deepClone) X(evaluate) X(evaluateExpression) \
  X(extend) X(get) X(indexOf) X(insert) X(iter) X(next) X(pop) X(remove) X(removeAt) X(removeOne) X(resolve)       \
  X(set) X(sliced) X(toCode)
#define LING_INTERFACE_PROPERTIES(X)                                                                               \
  X(__length__) X(keys) X(values) X(keysType) X(valuesType) X(elementsType) X(name) X(doc) X(code) X(instance)     \
  X(canEvaluate)
// clang-format on
#define LING_DECLARE_NAME(name) extern LING_API const meta_method_untyped name;
LING_INTERFACE_METHODS(LING_DECLARE_NAME)
#undef LING_DECLARE_NAME
#define LING_DECLARE_NAME(name) extern LING_API const meta_property_untyped name;
namespace property {
LING_INTERFACE_PROPERTIES(LING_DECLARE_NAME)
}
#undef LING_DECLARE_NAME
}  // namespace members

// What every interface handle is and how it is recognised: by the ancestors of the value's class.
#define LING_INTERFACE(Name)                                \
  LING_HANDLE(Name, object_value)                           \
  static bool matches(const object_value* object) noexcept; \
  static Type getType();                                    \
  static Class_Generic getClass();

class LING_API I_Immutable : public Handle<I_Immutable> {
  LING_INTERFACE(I_Immutable)
};

class LING_API I_Cloneable : public Handle<I_Cloneable> {
  LING_INTERFACE(I_Cloneable)
  Any clone() const;
  Any deepClone() const;
};

// Values that mean nothing outside the running process: they are never saved.
class LING_API I_RuntimeOnly : public Handle<I_RuntimeOnly> {
  LING_INTERFACE(I_RuntimeOnly)
};

class LING_API I_HasName : public Handle<I_HasName> {
  LING_INTERFACE(I_HasName)
  Result<String> name() const;
};

class LING_API I_HasDoc : public Handle<I_HasDoc> {
  LING_INTERFACE(I_HasDoc)
  Result<String> doc() const;
};

class LING_API I_HasCode : public Handle<I_HasCode> {
  LING_INTERFACE(I_HasCode)
  Result<String> code() const;
};

class LING_API I_Iterator_Generic : public Handle<I_Iterator_Generic> {
  LING_INTERFACE(I_Iterator_Generic)
  // The next item, or the Error StopIteration at the end.
  Any next() const;
};

class LING_API I_Iterable_Generic : public Handle<I_Iterable_Generic> {
  LING_INTERFACE(I_Iterable_Generic)
  Result<I_Iterator_Generic> iter() const;
  Result<Boolean> contains(const Any& value) const;
  // All items, in order. An Error when the iteration gives one; does not end for an endless iterable.
  Result<List_Generic> toList() const;
};

class LING_API I_Sequence_Generic : public Handle<I_Sequence_Generic, object_value, I_Iterable_Generic> {
  LING_INTERFACE(I_Sequence_Generic)
  Result<Integer> length() const;
  Result<Any> at(std::int64_t index) const;
  Any atOr(std::int64_t index, const Any& otherwise) const;
  // The position of the first equal item from `from` on, -1 when there is none.
  Result<Integer> indexOf(const Any& value, std::int32_t from = 0) const;
  // The items from `start` up to `stop`, as a sequence of the same kind where the kind can tell.
  Result<Any> sliced(std::int64_t start, std::int64_t stop) const;
  Type elementsType() const;
};

class LING_API I_MutableSequence_Generic : public Handle<I_MutableSequence_Generic, object_value, I_Sequence_Generic> {
  LING_INTERFACE(I_MutableSequence_Generic)
  Result<None> set(std::int64_t index, const Any& value) const;
  Result<None> append(const Any& value) const;
  Result<None> appendAt(std::int64_t index, const Any& value) const;
  Result<None> extend(const I_Iterable_Generic& values) const;
  Result<None> removeAt(std::int64_t index, std::int64_t count = 1) const;
  Result<Boolean> removeOne(const Any& value) const;
  Result<Any> pop(std::int64_t index = -1) const;
  Result<None> clear() const;
};

class LING_API I_Map_Generic : public Handle<I_Map_Generic, object_value, I_Iterable_Generic> {
  LING_INTERFACE(I_Map_Generic)
  Result<Integer> length() const;
  Result<List_Generic> keys() const;
  Result<List_Generic> values() const;
  // The value; without the key, `otherwise` when it is given, else an Error.
  Result<Any> get(const Any& key) const;
  Result<Any> get(const Any& key, const Any& otherwise) const;
  Type keysType() const;
  Type valuesType() const;
  // Keys and values, in the order of `keys`.
  Result<Any> pairs(std::vector<std::pair<Any, Any>>& into) const;
  // The interface as a generic instance for key and value types.
  static Class_Generic genericInstance(const Type& key, const Type& value);
  // A new map of the runtime's own, typed when the types are.
  static Any createInstance(const Type& key, const Type& value);
};

class LING_API I_MutableMap_Generic : public Handle<I_MutableMap_Generic, object_value, I_Map_Generic> {
  LING_INTERFACE(I_MutableMap_Generic)
  Result<None> set(const Any& key, const Any& value) const;
  // The removed value; an Error when the key is not there.
  Result<Any> remove(const Any& key) const;
  Result<None> clear() const;
};

class LING_API I_Set_Generic : public Handle<I_Set_Generic, object_value, I_Iterable_Generic> {
  LING_INTERFACE(I_Set_Generic)
  Result<Integer> length() const;
  static Class_Generic genericInstance(const Type& element);
};

class LING_API I_MutableSet_Generic : public Handle<I_MutableSet_Generic, object_value, I_Set_Generic> {
  LING_INTERFACE(I_MutableSet_Generic)
  Result<Boolean> insert(const Any& value) const;  // whether it was not there before
  Result<Boolean> remove(const Any& value) const;  // whether it was there
  Result<None> extend(const I_Iterable_Generic& values) const;
  Result<None> clear() const;
};

class LING_API I_Tuple_Generic : public Handle<I_Tuple_Generic, object_value, I_Sequence_Generic> {
  LING_INTERFACE(I_Tuple_Generic)
};

// A scripting language of the host.
class LING_API I_Language : public Handle<I_Language, object_value, I_HasName> {
  LING_INTERFACE(I_Language)
  Result<String> toCode(const Any& value) const;
  Result<Any> resolve(const String& name) const;
  Result<Any> evaluateExpression(const String& code, const Any& scope) const;
  Result<Any> evaluate(const String& code, const Any& scope) const;
  bool canEvaluate() const;
};

// The typed forms: what is taken and returned is known to be of the types given.
#define LING_TYPED_INTERFACE(Name)                                         \
  template <class... T>                                                    \
  class Name : public Handle<Name<T...>, object_value, Name##_Generic> {   \
    using Handle = ling::Handle<Name<T...>, object_value, Name##_Generic>; \
    LING_HANDLE(Name, object_value)                                        \
  };
LING_TYPED_INTERFACE(I_Iterator)
LING_TYPED_INTERFACE(I_Iterable)
LING_TYPED_INTERFACE(I_Sequence)
LING_TYPED_INTERFACE(I_MutableSequence)
LING_TYPED_INTERFACE(I_Map)
LING_TYPED_INTERFACE(I_MutableMap)
LING_TYPED_INTERFACE(I_Set)
LING_TYPED_INTERFACE(I_MutableSet)
LING_TYPED_INTERFACE(I_Tuple)
#undef LING_TYPED_INTERFACE

}  // namespace ling
