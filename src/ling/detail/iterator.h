// The iterator over a snapshot, which all containers of the runtime hand out; and taking all items of anything that can
// be iterated.
#pragma once

#include "ling/interfaces.h"

#include <atomic>
#include <vector>

namespace ling::internal {

// What an instance of the class Iterator carries. Threads that share one get different items.
class snapshot_iterator {
 public:
  explicit snapshot_iterator(item_row row) noexcept : row_(std::move(row)) {}
  // The next item, StopIteration at the end and ever after.
  LING_API Any next();
  // The same without a reference of the caller's: null at the end, else good for as long as the iterator.
  LING_API const Any* advance() noexcept;

 private:
  const item_row row_;
  std::atomic<std::size_t> position_{0};
};

// The iterator in a value, null when it is another one. Borrowed, as native_cast's, and found sooner.
LING_API snapshot_iterator* snapshot_iterator_in(const Any& value) noexcept;

I_Iterator_Generic make_iterator(item_row row);
inline I_Iterator_Generic make_iterator(std::vector<Any> items) { return make_iterator(item_row(std::move(items))); }

// The items of an I_Iterable, or those an I_Iterator has left, appended to `items`; of a map its keys. A BadArgument
// for another value; the first Error of an iteration ends it.
LING_API Result<None> collect(const Any& iterable, std::vector<Any>& items);

}  // namespace ling::internal
