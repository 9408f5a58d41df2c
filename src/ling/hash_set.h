// HashSet: a set that keeps the order in which its values were first inserted. What HashMap says of keys holds for its
// values, and what it says of threads holds here.
#pragma once

#include "ling/class.h"

#include <memory>
#include <optional>
#include <vector>

namespace ling {

class Boolean;
class None;

namespace internal {
class key_table;
class plain_key;
}  // namespace internal

class LING_API object_value_hash_set final : public object_value {
 public:
  explicit object_value_hash_set(object_value_class* typed_class = nullptr);
  ~object_value_hash_set() override;

  ObjectType type() const noexcept override { return ObjectType::HashSet; }
  object_value_class& object_class() const override;

  std::size_t length() const noexcept;
  // An Error when the value is not immutable or cannot be compared.
  Result<Boolean> contains(const Any& value) const;
  // The same without a value. Empty when a value that decides itself what it equals must be asked before.
  std::optional<bool> contains(const internal::plain_key& value) const;
  Result<Boolean> insert(const Any& value);  // whether it was not there before
  // The same; an Error, too, when the value is not of the set's type.
  Result<Boolean> insert_checked(const Any& value);
  Result<Boolean> remove(const Any& value);  // whether it was there
  void clear() noexcept;
  std::vector<Any> copy_items() const;
  Any clone() const;  // a set of the same class
  // The items of an iterable or what is left of an iterator; checks the type. An Error leaves those before it inserted.
  Result<None> extend(const Any& iterable);

 private:
  object_value_class* const class_;
  const std::unique_ptr<internal::key_table> table_;
};

class LING_API HashSet_Generic : public Handle<HashSet_Generic, object_value_hash_set> {
  LING_HANDLE(HashSet_Generic, object_value_hash_set)
  HashSet_Generic() : Handle(new object_value_hash_set()) {}

  std::size_t length() const noexcept { return object().length(); }
  std::vector<Any> copyItems() const { return object().copy_items(); }
  bool contains(const Any& value) const;
  // Whether the value was not there before; an Error for one that is not immutable or not of the set's type.
  Any insert(const Any& value) const { return object().insert_checked(value); }
  bool remove(const Any& value) const;
  Type elementsType() const;

  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::HashSet;
  }
  static Type getType();
  static Class_Generic getClass();
};

}  // namespace ling
