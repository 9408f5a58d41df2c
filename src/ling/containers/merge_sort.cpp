// Sorting values.
#include "ling/containers/merge_sort.h"

#include "ling/boolean.h"
#include "ling/detail/try.h"
#include "ling/reflection.h"

#include <algorithm>

namespace ling::internal {

namespace {

Result<Boolean> comes_first(const Any& a, const Any& b) {
  const Ordering order = TRY(compare_objects(a, b));
  if (order.value() == static_cast<int>(ordering_value::Incomparable)) {
    return Error(String("Cannot be compared: {} ({}) and {} ({}).")
                     .arg(display_text(a), raw_class_of(a).name(), display_text(b), raw_class_of(b).name()));
  }
  return Boolean(order.value() < 0);
}

// Merges two neighbouring sorted rows of `from` into `into`.
Result<None> merge(std::vector<Any>& from, std::vector<Any>& into, std::size_t begin, std::size_t middle,
                   std::size_t end) {
  std::size_t left = begin;
  std::size_t right = middle;
  for (std::size_t place = begin; place < end; ++place) {
    bool take_right = left == middle;
    if (left < middle && right < end) {
      const Boolean right_first = TRY(comes_first(from[right], from[left]));
      take_right = right_first.value();
    }
    into[place] = std::move(from[take_right ? right++ : left++]);
  }
  return None();
}

}  // namespace

Result<None> merge_sort(std::vector<Any>& items) {
  std::vector<Any> other(items.size());
  for (std::size_t width = 1; width < items.size(); width *= 2) {
    for (std::size_t begin = 0; begin < items.size(); begin += 2 * width) {
      const std::size_t middle = std::min(begin + width, items.size());
      const std::size_t end = std::min(begin + 2 * width, items.size());
      TRY(merge(items, other, begin, middle, end));
    }
    items.swap(other);
  }
  return None();
}

}  // namespace ling::internal
