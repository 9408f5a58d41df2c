// Tuples and packs of variadic arguments.
#include "ling/tuple.h"

#include "ling/algorithms/equality.h"
#include "ling/detail/container_errors.h"
#include "ling/detail/slice.h"

#include <cassert>

namespace ling {

Any object_value_tuple::at_checked(std::int64_t index) const {
  const auto position = internal::resolve_index(index, items_.size());
  return position ? items_[*position] : internal::error_index_out_of_range(index, items_.size());
}

Any object_value_tuple::at_or(std::int64_t index, const Any& otherwise) const {
  const auto position = internal::resolve_index(index, items_.size());
  return position ? items_[*position] : otherwise;
}

Result<Integer> object_value_tuple::index_of(const Any& value, std::int64_t from) const {
  return internal::index_of_equal(items_, value, from);
}

Any object_value_tuple::slice(std::int64_t start, std::int64_t stop) const {
  const internal::slice_range range = internal::clamp_slice(start, stop, items_.size());
  const auto begin = items_.begin();
  return Tuple_Generic(std::vector<Any>(begin + static_cast<std::ptrdiff_t>(range.start),
                                        begin + static_cast<std::ptrdiff_t>(range.stop)));
}

Variadic::Variadic(std::size_t length) : Handle(new object_value_tuple(std::vector<Any>(length))) {}

Variadic create_ellipsis(std::size_t length) { return Variadic(length); }

void assign_ellipsis_item(const Variadic& pack, std::size_t index, const Any& item) {
  std::vector<Any>& items = pack.object().items_;
  assert(index < items.size());
  items[index] = item;
}

}  // namespace ling
