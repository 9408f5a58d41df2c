// Rows in which C++ code works on containers of a million values: the runtime's, and the standard library's of the same
// values, with the runtime's equality, hashes and order.
#include "cases.h"
#include "contestants.h"
#include "ling/ling.h"

#include <algorithm>
#include <random>
#include <unordered_map>

namespace benchmarks {
namespace {

using ling::Any;

constexpr std::int64_t length = 1'000'000;

struct hash_of_value {
  std::size_t operator()(const Any& value) const { return ling::hash_of(value); }
};
struct equal_values {
  bool operator()(const Any& a, const Any& b) const {
    const auto equal = ling::equal_objects(a, b);
    return !equal.is_error() && equal->value();
  }
};
bool is_before(const Any& a, const Any& b) { return ling::compare_objects_value(a, b) == ling::ordering_value::Less; }

using standard_list = std::vector<Any>;
using standard_map = std::unordered_map<Any, Any, hash_of_value, equal_values>;

const std::vector<Any>& shuffled_numbers() {
  static const std::vector<Any> numbers = [] {
    std::vector<Any> made;
    for (std::int64_t i = 0; i < length; ++i) {
      made.push_back(large_number + i);
    }
    std::shuffle(made.begin(), made.end(), std::mt19937_64(1));
    return made;
  }();
  return numbers;
}

template <class Map>
Map map_of(const std::vector<Any>& keys);
template <>
ling::HashMap_Generic map_of(const std::vector<Any>& keys) {
  ling::HashMap_Generic map;
  for (const Any& key : keys) {
    map.set(key, key);
  }
  return map;
}
template <>
standard_map map_of(const std::vector<Any>& keys) {
  standard_map map;
  for (const Any& key : keys) {
    map.insert_or_assign(key, key);
  }
  return map;
}

// Filled by the first case that needs it, and shared by all.
ling::List_Generic full_list() {
  static const ling::List_Generic list{std::vector<Any>(shuffled_numbers())};
  return list;
}
standard_list& full_vector() {
  static standard_list list = shuffled_numbers();
  return list;
}
template <class Map>
Map& full_map() {
  static Map map = map_of<Map>(shuffled_numbers());
  return map;
}

void expect(bool holds) {
  if (!holds) {
    throw failure("wrong result");
  }
}

template <class F>
void for_each_index(const F& body) {
  for (std::int64_t i = 0; i < length; ++i) {
    body(i);
  }
}

struct row {
  const char* name;
  void (*with_ling)();
  void (*with_std)();
};

const row rows[] = {
    {"list_append",
     [] {
       const ling::List_Generic list;
       for (const Any& number : shuffled_numbers()) {
         list.append(number);
       }
     },                                                                         [] {
       standard_list list;
       for (const Any& number : shuffled_numbers()) {
         list.push_back(number);
       }
     }                                        },
    {"list_index",
     [] {
       const auto list = full_list();
       for_each_index([&](std::int64_t i) { expect(!list.at(i).empty()); });
     },                                                                         [] {
       const auto& list = full_vector();
       for_each_index([&](std::int64_t i) { expect(!Any(list.at(static_cast<std::size_t>(i))).empty()); });
     }                                        },
    {"list_set",
     [] {
       const auto list = full_list();
       const auto& numbers = shuffled_numbers();
       for_each_index([&](std::int64_t i) { list.set(i, numbers[static_cast<std::size_t>(i)]); });
     },                                                                         [] {
       auto& list = full_vector();
       const auto& numbers = shuffled_numbers();
       for_each_index(
           [&](std::int64_t i) { list.at(static_cast<std::size_t>(i)) = numbers[static_cast<std::size_t>(i)]; });
     }                                        },
    {"list_iterate",
     [] {
       const auto list = full_list();
       const ling::item_row row = list.object().share_items();
       for (const Any& item : row.items()) {
         expect(!Any(item).empty());
       }
     },                                                                         [] {
       for (const Any& item : full_vector()) {
         expect(!Any(item).empty());
       }
     }                                        },
    {"list_sort",
     [] {
       const ling::List_Generic list{std::vector<Any>(shuffled_numbers())};
       expect(!list.object().sort().is_error());
     },                                                                         [] {
       standard_list list = shuffled_numbers();
       std::stable_sort(list.begin(), list.end(), is_before);
     }                                        },
    {"map_set",      [] { map_of<ling::HashMap_Generic>(shuffled_numbers()); },
     [] { map_of<standard_map>(shuffled_numbers()); }},
    {"map_get",
     [] {
       const auto map = full_map<ling::HashMap_Generic>();
       for (const Any& key : shuffled_numbers()) {
         expect(!map.get(key).empty());
       }
     },                                                                         [] {
       const auto& map = full_map<standard_map>();
       for (const Any& key : shuffled_numbers()) {
         expect(!Any(map.find(key)->second).empty());
       }
     }                                        },
    {"map_iterate",
     [] {
       for (const auto& [key, value] : full_map<ling::HashMap_Generic>().copyPairs()) {
         expect(!key.empty() && !value.empty());
       }
     },                                                                         [] {
       for (const auto& [key, value] : full_map<standard_map>()) {
         expect(!Any(key).empty() && !Any(value).empty());
       }
     }                                        },
};

void add(const char* name, const char* who, void (*run)()) {
  add_case({.group = "C++ containers",
            .row = name,
            .contestant = who,
            .operations = length,
            .measure = processor_time([run](std::int64_t turns) {
              for (std::int64_t i = 0; i < turns; ++i) {
                run();
              }
            })});
}

// The container's own share: the items are there before.
template <class F>
void add_memory(const char* name, const char* who, F make) {
  add_case({.group = "Memory",
            .row = name,
            .contestant = who,
            .unit = "bytes",
            .operations = length,
            .measure =
                [make](std::int64_t turns) {
                  shuffled_numbers();
                  return memory_growth([&](std::int64_t) { make(); })(turns);
                },
            .countable = false});
}

}  // namespace

void register_container_rows() {
  for (const row& of : rows) {
    add(of.name, "ling", of.with_ling);
    add(of.name, "std", of.with_std);
  }
  const auto fill = [](auto& list) {
    for (const Any& number : shuffled_numbers()) {
      if constexpr (requires { list.append(number); }) {
        list.append(number);
      } else {
        list.push_back(number);
      }
    }
  };
  add_memory("list, per item", "ling", [fill] {
    static const ling::List_Generic list;
    fill(list);
  });
  add_memory("list, per item", "std", [fill] {
    static standard_list list;
    fill(list);
  });
  add_memory("map, per entry", "ling", [] { full_map<ling::HashMap_Generic>(); });
  add_memory("map, per entry", "std", [] { full_map<standard_map>(); });
}

}  // namespace benchmarks
