// Sorting values.
#include "ling/containers/merge_sort.h"

#include "ling/boolean.h"
#include "ling/detail/try.h"
#include "ling/reflection.h"
#include "ling/string.h"
#include "ling/values/exact_number.h"

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

bool are_all(const std::vector<Any>& items, ObjectType kind) noexcept {
  return std::ranges::all_of(items, [&](const Any& item) { return item.type() == kind; });
}

// Items of one kind whose order no class can take over: nothing is called and nothing counted.
template <class Object, class Less>
void sort_plain(std::vector<Any>& items, Less comes_first) {
  std::vector<object_value*> objects;
  objects.reserve(items.size());
  for (Any& item : items) {
    objects.push_back(item.release());
  }
  std::stable_sort(objects.begin(), objects.end(), [&](const object_value* a, const object_value* b) {
    return comes_first(static_cast<const Object&>(*a), static_cast<const Object&>(*b));
  });
  for (std::size_t i = 0; i < items.size(); ++i) {
    items[i] = Any::adopt(objects[i]);
  }
}

}  // namespace

Result<None> merge_sort(std::vector<Any>& items) {
  if (are_all(items, ObjectType::String)) {
    sort_plain<object_value_string>(items, [](const auto& a, const auto& b) { return a.view() < b.view(); });
    return None();
  }
  if (are_all(items, ObjectType::Integer)) {
    sort_plain<object_value_integer>(
        items, [](const auto& a, const auto& b) { return compare_integers(a, b) == ordering_value::Less; });
    return None();
  }
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
