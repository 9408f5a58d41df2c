// Tuple: an immutable row of values; Variadic, the pack in which a variadic function receives its trailing arguments.
//
// Threads: the row is immutable and shared freely; what it holds has its own rules.
#pragma once

#include "ling/any.h"
#include "ling/number.h"
#include "ling/type.h"

#include <initializer_list>
#include <span>
#include <vector>

namespace ling {

class LING_API object_value_tuple final : public object_value {
 public:
  explicit object_value_tuple(std::vector<Any> items) noexcept : items_(std::move(items)) {}
  ObjectType type() const noexcept override { return ObjectType::Tuple; }
  object_value_class& object_class() const override;

  std::size_t length() const noexcept { return items_.size(); }
  // The index must be below the length. Borrowed.
  const Any& at(std::size_t index) const noexcept { return items_[index]; }
  std::span<const Any> items() const noexcept { return items_; }
  // An Error when the index is out of range; negative ones count from the end.
  Any at_checked(std::int64_t index) const;
  Any at_or(std::int64_t index, const Any& otherwise) const;
  // The index of the first equal item from `from` on, -1 when there is none. An Error when comparing fails.
  Result<Integer> index_of(const Any& value, std::int64_t from) const;
  Any slice(std::int64_t start, std::int64_t stop) const;  // negative positions count from the end, both are clamped

 private:
  friend LING_API void assign_ellipsis_item(const class Variadic& pack, std::size_t index, const Any& item);
  std::vector<Any> items_;
};

class LING_API Tuple_Generic : public Handle<Tuple_Generic, object_value_tuple> {
  LING_HANDLE(Tuple_Generic, object_value_tuple)
  Tuple_Generic() : Tuple_Generic(std::vector<Any>()) {}
  explicit Tuple_Generic(std::vector<Any> items) : Handle(new object_value_tuple(std::move(items))) {}
  Tuple_Generic(std::initializer_list<Any> items) : Tuple_Generic(std::vector<Any>(items)) {}
  std::size_t length() const noexcept { return object().length(); }
  const Any& at(std::size_t index) const& noexcept { return object().at(index); }
  Any at(std::size_t index) const&& noexcept { return object().at(index); }
  std::span<const Any> items() const& noexcept { return object().items(); }
  std::span<const Any> items() const&& = delete;

  static bool matches(const object_value* object) noexcept {
    return object != nullptr && object->type() == ObjectType::Tuple;
  }
  static Type getType();
  static Class_Generic getClass();
};

// The trailing arguments of a variadic function, as its last parameter.
class LING_API Variadic : public Handle<Variadic, object_value_tuple, Tuple_Generic> {
  LING_HANDLE(Variadic, object_value_tuple)
  explicit Variadic(std::size_t length);
  auto begin() const noexcept { return items().begin(); }
  auto end() const noexcept { return items().end(); }
};

// A pack of that length whose items are yet to be assigned; it must not be shared before the last one is.
LING_API Variadic create_ellipsis(std::size_t length);
LING_API void assign_ellipsis_item(const Variadic& pack, std::size_t index, const Any& item);

}  // namespace ling
