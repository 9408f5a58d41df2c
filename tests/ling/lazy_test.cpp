// Values that come later, or may be gone: computed and external values, weak references.
#include "ling/testing.h"

#include <atomic>
#include <stdexcept>

namespace {

using namespace ling::testing;

class stored_elsewhere final : public object_value_external {
 public:
  explicit stored_elsewhere(std::function<Any()> load_function) : load_(std::move(load_function)) {}
  Any load() override { return load_(); }

 private:
  const std::function<Any()> load_;
};

TEST(Computed, IsOneObjectOnAllThreads) {
  for (int round = 0; round < 100; ++round) {
    std::atomic<int> deaths = 0;
    std::atomic<int> runs = 0;
    const Any computed = make_computed<Any>([&runs, kept = make_mortal([&] { ++deaths; })] {
      ++runs;
      return Any(List_Generic({kept}));
    });
    Any seen[8];
    on_eight_threads([&](int thread) { seen[thread] = internal::unwrap(computed); });
    for (const Any& each : seen) {
      ASSERT_EQ(each.type(), ObjectType::List);
      ASSERT_TRUE(each.is_same(seen[0]));
    }
    EXPECT_GE(runs, 1);
    EXPECT_EQ(deaths, 0);
    call(seen[0], "clear");
    EXPECT_EQ(deaths, 1) << "a function that has run lets go of what it captured";
  }
}

TEST(Computed, KeepsItsError) {
  int runs = 0;
  const Any broken = make_computed<Any>([&]() -> Any {
    ++runs;
    throw std::runtime_error("broken");
  });
  const Any first = internal::unwrap(broken);
  EXPECT_EQ(message(first), "broken");
  EXPECT_TRUE(internal::unwrap(broken).is_same(first));
  EXPECT_EQ(runs, 1);
  const Any exhausted =
      make_computed<Any>([&] { return ++runs == 2 ? Any(Error::outOfMemory("none left")) : Any(runs); });
  EXPECT_EQ(message(internal::unwrap(exhausted)), "none left");
  EXPECT_EQ(text(exhausted), "3") << "there may be memory the next time";
}

TEST(Computed, BoundsHowDeeplyValuesNeedEachOther) {
  Any value = 1;
  for (int i = 0; i < 100'000; ++i) {
    value = make_computed<Any>([inner = value] { return internal::unwrap(inner); });
  }
  EXPECT_EQ(message(internal::unwrap(value)), "Computed values need each other too deeply.");
}

TEST(External, IsLoadedAtEveryLook) {
  int loads = 0;
  const Any counted = make<stored_elsewhere>([&] { return Any(++loads); });
  const Any nested = make<stored_elsewhere>([&] { return counted; });
  const Any throwing = make<stored_elsewhere>([]() -> Any { throw std::runtime_error("not there"); });
  Any endless;
  endless = make<stored_elsewhere>([&] { return endless; });
  const auto twice = make_function("twice", "number", "", [](std::int64_t number) { return number * 2; });
  expect_outcomes({
      {internal::unwrap(counted),  "1"                                                                       },
      {twice(nested),              "4"                                                                       },
      {class_of(nested),           "<class ling.Integer>"                                                    },
      {raw_class_of(nested),       "<class ling.External>"                                                   },
      {internal::unwrap(throwing), "Error: not there"                                                        },
      {internal::unwrap(endless),  "Error: A lazy value keeps yielding lazy values."                         },
      {twice(throwing),
       "BadArgument: Bad call of 'twice': the argument 'number' must be Integer, not Error: Error: not there"},
  });
}

TEST(WeakReference, DoesNotKeepItsTarget) {
  int deaths = 0;
  Any reference;
  Any found = 1;
  Any target = make_mortal([&] {
    ++deaths;
    found = call(reference, "lock");  // its own death does not revive it
  });
  { const WeakReference short_lived(target); }  // the last one forgets the target, and leaves nothing behind
  reference = construct(WeakReference::getClass(), target);
  const WeakReference one(target);
  EXPECT_TRUE(one.lock().is_same(target));
  EXPECT_TRUE(call(reference, "lock").is_same(target));
  target = {};
  EXPECT_EQ(deaths, 1);
  EXPECT_TRUE(is_none(found));
  EXPECT_TRUE(is_none(one.lock()));
  EXPECT_TRUE(is_none(call(reference, "lock")));
  EXPECT_TRUE(WeakReference(true).lock().is_same(true)) << "what never dies is always there";
}

TEST(WeakReference, SeesALivingTargetOrNoneWhileItDiesElsewhere) {
  for (int round = 0; round < 200; ++round) {
    std::atomic<int> deaths = 0;
    Any target = make_mortal([&] { ++deaths; });
    const WeakReference shared(target);
    std::atomic<bool> gone = false;
    on_eight_threads([&](int thread) {
      if (thread == 0) {
        target = {};
        gone = true;
        return;
      }
      for (bool last = false; !last;) {
        last = gone;
        const Any locked = shared.lock();
        if (!locked.empty()) {
          const WeakReference further(locked);
          ASSERT_EQ(deaths, 0);
          ASSERT_TRUE(further.lock().is_same(locked));
        }
      }
    });
    ASSERT_EQ(deaths, 1);
    ASSERT_TRUE(is_none(shared.lock()));
  }
}

}  // namespace
