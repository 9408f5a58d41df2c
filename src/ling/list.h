// List: a growable sequence shared by reference.
//
// A List may be typed: `List<Integer>` refuses other items in its checked operations. Indices count from 0; negative
// ones count from the end. An index out of range is an Error.
//
// Threads: every operation is atomic. Iteration goes through the items of the moment at which it started, which costs
// nothing unless the list is changed meanwhile.
#pragma once

#include "ling/boolean.h"
#include "ling/class.h"
#include "ling/item_row.h"
#include "ling/none.h"
#include "ling/number.h"
#include "ling/spinlock.h"

#include <initializer_list>
#include <span>
#include <vector>

namespace ling {

class LING_API object_value_list final : public object_value {
 public:
  explicit object_value_list(std::vector<Any> items = {}) : object_value_list(nullptr, std::move(items)) {}
  // A typed list; null means untyped.
  object_value_list(object_value_class* typed_class, std::vector<Any> items)
      : class_(typed_class), items_(std::move(items)) {}

  ObjectType type() const noexcept override { return ObjectType::List; }
  object_value_class& object_class() const override;

  std::size_t length() const noexcept;
  std::vector<Any> copy_items() const;
  // The items of this moment without a copy; they are copied if the list is changed while the row is held.
  item_row share_items() const noexcept;
  // An Error when the index is out of range.
  Any at(std::int64_t index) const;
  Any at_or(std::int64_t index, const Any& otherwise) const;
  Any set(std::int64_t index, Any value);  // None or an Error
  // The same; an Error, too, when the value is not of the list's type.
  Any set_checked(std::int64_t index, const Any& value);
  // Whether the method `set` of the list does what set_checked does: no descendant, and nobody else, has put another in
  // its place.
  bool has_described_set() const noexcept;
  void append(Any value);
  void append_all(std::vector<Any>&& values);
  // The items of an iterable or of what is left of an iterator; checks the type. An Error leaves the list as it was.
  Result<None> extend(const Any& iterable);
  // Before the item at `index`, which is clamped to the list; checks the type.
  Result<None> insert(std::int64_t index, Any value);
  // None, or an Error when one of the indices is out of range; a count of 0 or less removes nothing.
  Any remove_at(std::int64_t index, std::int64_t count);
  Any pop(std::int64_t index);
  void clear() noexcept;
  // The index of the first equal item from `from` on, -1 when there is none. An Error when comparing fails.
  Result<Integer> index_of(const Any& value, std::int64_t from) const;
  // Whether there was an equal item; the first one is removed. An Error when comparing fails.
  Result<Boolean> remove_one(const Any& value);
  // A list of the same class; negative positions count from the end, both are clamped.
  Any slice(std::int64_t start, std::int64_t stop) const;
  void replace_all(std::vector<Any> items);
  // Puts the items in the place of `count` items from `start` on, which both are clamped to the list.
  void splice(std::size_t start, std::size_t count, std::vector<Any> items);
  void reverse();
  // Ascending; equal items keep their order. An Error, and the list as it was, when two items cannot be compared or the
  // list is changed while it is sorted.
  Result<None> sort();
  // The items `count` times in a row; an Error when that is absurdly long.
  Result<None> repeat(std::int64_t count);

 private:
  object_value_class* const class_;
  mutable spinlock lock_;
  item_row items_;
};

class LING_API List_Generic : public Handle<List_Generic, object_value_list> {
  LING_HANDLE(List_Generic, object_value_list)
  List_Generic() : List_Generic(std::vector<Any>()) {}
  explicit List_Generic(std::vector<Any> items) : Handle(new object_value_list(std::move(items))) {}
  // With one list in the braces compilers differ: some copy the handle. Append the list instead.
  List_Generic(std::initializer_list<Any> items) : List_Generic(std::vector<Any>(items)) {}

  std::size_t length() const noexcept { return object().length(); }
  std::vector<Any> copyItems() const { return object().copy_items(); }
  Any at(std::int64_t index) const { return object().at(index); }
  Any set(std::int64_t index, const Any& value) const;  // None or an Error; checks the type
  void append(const Any& value) const { object().append(value); }
  Any appendChecked(const Any& value) const;  // None or an Error; checks the type
  // The type of the items; untyped for an untyped list.
  Type elementsType() const;

  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::List;
  }
  static Type getType();
  static Class_Generic getClass();
};

template <class T>
class List : public Handle<List<T>, object_value_list, List_Generic> {
  using Handle = ling::Handle<List<T>, object_value_list, List_Generic>;
  LING_HANDLE(List, object_value_list)
  List() : Handle(new object_value_list(&getClass().object(), {})) {}
  List(std::initializer_list<T> items)
      : Handle(new object_value_list(&getClass().object(), std::vector<Any>(items.begin(), items.end()))) {}
  void append(const T& value) const { this->object().append(value); }
  static bool matches(const object_value* object) {
    return List_Generic::matches(object) && object->object_class().is_ancestor(getClass().object());
  }
  static Type getType() { return Type::of(getClass()); }
  static Class_Generic getClass() {
    const Type arguments[] = {T::getType()};
    return generic_instance(List_Generic::getClass(), arguments);
  }
};
template <>
class List<Any> : public Handle<List<Any>, object_value_list, List_Generic> {
  using Handle = ling::Handle<List<Any>, object_value_list, List_Generic>;
  LING_HANDLE(List, object_value_list)
  List() : Handle(new object_value_list()) {}
  List(std::initializer_list<Any> items) : Handle(new object_value_list(std::vector<Any>(items))) {}
};

}  // namespace ling
