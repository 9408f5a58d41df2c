// Containers that eight threads use at once.
#include "ling/testing.h"

#include <atomic>

namespace {

using namespace ling::testing;

constexpr int rounds = 500;

TEST(ContainerThreads, LoseNothingAndGiveEveryItemToOneThread) {
  const List_Generic list;
  on_eight_threads([&](int thread) {
    for (int i = 0; i < rounds; ++i) {
      list.append(2000 + thread * rounds + i);  // beyond the shared integers: an object that can be freed twice
    }
  });
  const auto iterator = I_Iterable_Generic::unchecked(list).iter().value();
  std::atomic<std::int64_t> popped = 0;
  std::atomic<std::int64_t> iterated = 0;
  on_eight_threads([&](int) {
    for (Any item = iterator.next(); !is_error_result(item); item = iterator.next()) {
      iterated += Integer::unchecked(item).value();
    }
    for (Any item = list.object().pop(-1); !is_error_result(item); item = list.object().pop(-1)) {
      popped += Integer::unchecked(item).value();
    }
  });
  const std::int64_t sum = std::int64_t{8 * rounds} * (2000 + 2000 + 8 * rounds - 1) / 2;
  EXPECT_EQ(popped, sum);
  EXPECT_EQ(iterated, sum);
}

TEST(ContainerThreads, MayDoAnythingToAListAtOnce) {
  const List_Generic list{1, 2, 3};
  const auto sequence = I_MutableSequence_Generic::unchecked(list);
  const std::function<void(int)> uses[] = {
      [&](int i) { list.append(String("item {}").arg(i)); },
      [&](int i) { list.set(-1, Tuple_Generic{i}); },
      [&](int) { list.object().pop(0); },
      [&](int) { EXPECT_FALSE(sequence.toList().is_error()); },
      [&](int i) { EXPECT_FALSE(sequence.contains(Tuple_Generic{i - 1}).is_error()); },
      [&](int) { EXPECT_FALSE(sequence.extend(sequence).is_error() && list.length() > 1000); },
      [&](int) { list.object().reverse(); },
      [&](int i) { EXPECT_FALSE(sequence.removeOne(Tuple_Generic{i - 6}).is_error()); },
      [&](int) { list.length() > 100 ? list.object().clear() : void(); },
  };
  on_eight_threads([&](int thread) {
    for (int i = 0; i < rounds; ++i) {
      uses[static_cast<std::size_t>(thread + i) % std::size(uses)](i);
    }
  });
}

TEST(ContainerThreads, InsertEveryKeyOnce) {
  const HashSet_Generic set;
  std::atomic<int> inserted = 0;
  std::atomic<int> removed = 0;
  on_eight_threads([&](int thread) {
    for (int i = 0; i < rounds; ++i) {
      inserted += Boolean::unchecked(set.insert(String("key {}").arg((i + thread * 50) % rounds))).value();
    }
    EXPECT_FALSE(is_error_result(I_Iterable_Generic::unchecked(set).toList()));
  });
  EXPECT_EQ(inserted, rounds);
  on_eight_threads([&](int) {
    for (int i = 0; i < rounds; ++i) {
      removed += set.remove(String("key {}").arg(i));
    }
  });
  EXPECT_EQ(removed, rounds);
  EXPECT_EQ(set.length(), 0u);
}

TEST(ContainerThreads, FindTextsAndNumbersWhileOthersWrite) {
  const HashMap_Generic map = make_map({"there", "always", 123456, "always"});
  std::atomic<bool> done = false;
  on_eight_threads([&](int thread) {
    if (thread < 4) {
      for (int i = 0; i < rounds * 8; ++i) {  // so that the table grows, shrinks and is emptied
        map.set(i, String("value {}").arg(i));
        map.set(String("key {}").arg(i), i);
        map.remove(String("key {}").arg(i - 50));
        map.remove(i - 50);
      }
      done = true;
      return;
    }
    while (!done) {
      EXPECT_EQ(text(map.get("there")), "always");
      EXPECT_EQ(text(map.get(123456)), "always");
      EXPECT_FALSE(map.contains("missing"));
      const Any value = map.get(50, "value 50");
      EXPECT_EQ(text(value), "value 50");
    }
  });
}

}  // namespace
