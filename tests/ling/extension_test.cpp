// Loading plug-ins: what is wrong with a file is said with its name, and what succeeded is initialised.
#include "ling/loading.h"
#include "ling/testing.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <mutex>
#include <semaphore>

namespace {

using namespace ling::testing;

TEST(Extension, ErrorsNameTheFileAndWhatIsMissing) {
  const std::filesystem::path no_library = std::filesystem::temp_directory_path() / "ling_no_library.txt";
  std::ofstream(no_library) << "plain text";
  for (const std::string& path : {std::string("/nowhere/missing.so"), std::string("missing.so"), no_library.string()}) {
    const std::string said = message(load_extension(path));
    EXPECT_TRUE(said.starts_with("Unable to load the extension " + path + ": ")) << said;
    EXPECT_GT(said.size(), path.size() + 40) << "what the system says follows";
  }
  EXPECT_TRUE(message(load_extension(LING_LIBRARY))
                  .starts_with("Not an extension: " LING_LIBRARY " lacks the symbol corvantis_extension_init: "));
  std::filesystem::remove(no_library);
  EXPECT_EQ(message(load_extension("")), "Unable to load an extension: the path is empty.");
}

// Gives the other threads time to come too early. Nothing depends on its length.
void dawdle() { std::this_thread::sleep_for(std::chrono::milliseconds(30)); }

TEST(Extension, IsInitialisedForThreadsThatInitialiseMeanwhile) {
  directed_extension extension;
  std::binary_semaphore loading(0);
  std::atomic<bool> initialised = false;
  extension.first = [&]() -> Any {
    loading.release();
    dawdle();
    return {};
  };
  extension.second = [&]() -> Any {
    initialised = true;
    return {};
  };
  std::jthread loader([&] { EXPECT_FALSE(extension.load().is_error()); });
  loading.acquire();
  EXPECT_FALSE(initialize().is_error());
  EXPECT_TRUE(initialised);
}

TEST(Extension, ThatFailsFailsForAll) {
  directed_extension extension;
  std::atomic<int> calls = 0;
  extension.first = [&]() -> Any {
    dawdle();
    return Error("handler " + std::to_string(++calls));
  };
  on_eight_threads([&](int) { EXPECT_EQ(message(extension.load()), "handler 1"); });
}

TEST(Extension, IsTriedAgainAfterItsEntryPointFailed) {
  directed_extension extension;
  std::atomic<int> entries = 0, failures = 0, initialised = 0;
  extension.entry = [&]() -> Any {
    dawdle();
    return ++entries == 1 ? Any(Error("not yet")) : Any();
  };
  extension.second = [&]() -> Any {
    dawdle();
    return ++initialised;
  };
  on_eight_threads([&](int) {
    if (const auto loaded = extension.load(); loaded.is_error()) {
      EXPECT_TRUE(message(loaded).ends_with("corvantis_extension_init failed: not yet"));
      EXPECT_NE(loaded.error().cause(), nullptr);
      ++failures;
    } else {
      EXPECT_EQ(initialised, 1);
    }
  });
  EXPECT_EQ(failures, 1);
  EXPECT_EQ(entries, 2);
}

TEST(Extension, IsTriedAgainAfterMemoryHadRunOut) {
  directed_extension extension;
  int entries = 0;
  extension.entry = [&]() -> Any { return ++entries == 1 ? Any(Error::outOfMemory()) : Any(); };
  const Result<None> first = extension.load();
  EXPECT_TRUE(first.is_error() && first.error().isOutOfMemory());
  EXPECT_FALSE(extension.load().is_error());
  EXPECT_EQ(entries, 2);
}

// Each may load from within: itself, which is under way, or another one, whose failure is not its own.
TEST(Extension, LoadsOthersAndItself) {
  directed_extension outer;
  directed_extension inner;  // directs both from here on
  std::vector<std::string> trace;
  bool inside = false;
  inner.bind = [&]() -> Any {
    trace.emplace_back(inside ? "inner bind" : "outer bind");
    return {};
  };
  inner.first = [&]() -> Any {
    trace.emplace_back(inside ? "inner first" : "outer first");
    if (!inside) {
      EXPECT_FALSE(outer.load().is_error());
      inside = true;
      EXPECT_EQ(message(inner.load()), "inner fails");
      inside = false;
    }
    return {};
  };
  inner.second = [&]() -> Any {
    trace.emplace_back(inside ? "inner second" : "outer second");
    return inside ? Any(Error("inner fails")) : Any();
  };
  EXPECT_FALSE(outer.load().is_error());
  EXPECT_EQ(trace, (std::vector<std::string>{"outer bind", "outer first", "inner bind", "inner first", "inner second",
                                             "outer second"}));
}

// A language's lock, which the thread that waits holds and the thread that loads needs.
std::mutex language_lock;
thread_local bool has_language_lock = false;

void without_language_lock(void (*wait)(void*), void* argument) {
  const bool had = std::exchange(has_language_lock, false);
  if (had) {
    language_lock.unlock();
  }
  wait(argument);
  if (had) {
    language_lock.lock();
    has_language_lock = true;
  }
}

TEST(Extension, IsWaitedForWithoutTheLocksOfLanguages) {
  directed_extension extension;
  std::binary_semaphore loading(0), waiting(0);
  // The language may come with the very library that is waited for.
  extension.entry = [&]() -> Any {
    loading.release();
    waiting.acquire();
    dawdle();
    internal::add_lock_release(&without_language_lock);
    return {};
  };
  extension.second = []() -> Any {
    const std::lock_guard needed(language_lock);
    return {};
  };
  std::jthread loader([&] { EXPECT_FALSE(extension.load().is_error()); });
  loading.acquire();
  const std::lock_guard held(language_lock);
  has_language_lock = true;
  waiting.release();
  EXPECT_FALSE(extension.load().is_error());
  EXPECT_TRUE(has_language_lock) << "it has it again";
}

}  // namespace
