// References that die anywhere, and the thread states that threads keep.
#include "bridge/python.h"
#include "python/pyobject_ptr.h"

#include <limits.h>
#include <pthread.h>

#include <chrono>
#include <semaphore>

namespace ling::cpython {
namespace {

using References = PythonTest;

// Counts thread states: each value lives as long as the one that it was stored with.
constexpr const char* values_of_threads = R"(
import threading
local = threading.local()
class Value:
    alive = 0
    def __init__(self): Value.alive += 1
    def __del__(self): Value.alive -= 1
def remember(): local.value = Value()
def recall(): return local.value is not None
result = (remember, recall, lambda: Value.alive)
)";

TEST_F(References, DieOnThreadsThatHoldNoLock) {
  const PyObjectPtr object = eval("[]");
  const Py_ssize_t count = Py_REFCNT(object.get());
  PyObjectPtr shared[8];
  for (PyObjectPtr& each : shared) {
    each = PyObjectPtr::share(object.get());
  }
  on_eight_threads([&](int i) {
    { const PyObjectPtr nothing; }
    EXPECT_EQ(PyGILState_GetThisThreadState(), nullptr) << "a lock was taken for nothing";
    shared[i] = {};
  });
  EXPECT_EQ(Py_REFCNT(object.get()), count);
}

TEST_F(References, LeaveThreadsTheirStateUntilTheyEnd) {
  const PyObjectPtr functions = run(values_of_threads);
  const auto call = [&](Py_ssize_t index) {
    return PyObjectPtr(PyObject_CallObject(PyTuple_GetItem(functions.get(), index), nullptr));
  };
  on_eight_threads([&](int) {
    {
      const GilGuard lock;
      EXPECT_TRUE(call(0));
    }
    PyThreadState* kept = PyGILState_GetThisThreadState();
    const GilGuard lock;
    EXPECT_TRUE(call(1)) << "the thread came back with another state";
    EXPECT_EQ(PyGILState_GetThisThreadState(), kept);
  });
  EXPECT_EQ(repr(call(2)), "0") << "states of ended threads are deleted with the next lock that is taken";
}

TEST_F(References, LetAThreadBeJoinedUnderTheLock) {
  std::binary_semaphore used(0), end(0);
  std::thread thread([&] {
    { const GilGuard lock; }
    used.release();
    end.acquire();
  });
  PyThreadState* state = PyEval_SaveThread();
  used.acquire();
  PyEval_RestoreThread(state);
  end.release();
  thread.join();
}

// --- the end of a thread ---------------------------------------------------------------------------------------------

// A host's own use of the end of a thread: with Python, and in so many rounds.
struct late_use {
  pthread_key_t key;
  int rounds;
  PyObject* function;
};
void use_late(void* value) {
  auto* use = static_cast<late_use*>(value);
  std::thread([] { const GilGuard deletes_states_of_ended_threads; }).join();
  {
    const GilGuard lock;
    EXPECT_TRUE(PyObjectPtr(PyObject_CallObject(use->function, nullptr)));
  }
  if (--use->rounds > 0) {
    pthread_setspecific(use->key, use);
  }
}

// Keys have their turns in the order of their numbers: the host's before and behind Python's and this module's.
void end_threads_that_use_python(bool module_before_python) {
  pthread_key_t lowest, keys[3];
  pthread_key_create(&lowest, nullptr);
  pthread_key_create(&keys[0], &use_late);
  Py_InitializeEx(0);
  start_python();
  const PyObjectPtr functions = run(values_of_threads);
  PyObject* const remember = PyTuple_GetItem(functions.get(), 0);
  PyObject* const alive = PyTuple_GetItem(functions.get(), 2);
  PyEval_SaveThread();
  pthread_key_create(&keys[1], &use_late);
  if (module_before_python) {
    pthread_key_delete(lowest);
  }
  std::thread([] { const GilGuard makes_the_key; }).join();
  pthread_key_create(&keys[2], &use_late);
  for (int rounds = 1; rounds <= PTHREAD_DESTRUCTOR_ITERATIONS; ++rounds) {
    for (const bool used_before : {true, false}) {
      late_use uses[] = {
          {keys[0], rounds, remember},
          {keys[1], rounds, remember},
          {keys[2], rounds, remember}
      };
      std::thread([&] {
        for (late_use& use : uses) {
          pthread_setspecific(use.key, &use);
        }
        if (used_before) {
          const GilGuard lock;
          EXPECT_TRUE(PyObjectPtr(PyObject_CallObject(remember, nullptr)));
        }
      }).join();
      const GilGuard lock;
      EXPECT_EQ(repr(PyObjectPtr(PyObject_CallObject(alive, nullptr))), "0") << rounds << " " << used_before;
    }
  }
  std::exit(testing::Test::HasFailure() ? 1 : 3);
}

TEST(ReferencesDeathTest, ServeThreadsToTheirVeryEnd) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const bool module_before_python : {false, true}) {
    EXPECT_EXIT(end_threads_that_use_python(module_before_python), ::testing::ExitedWithCode(3), "");
  }
}

// --- the end of the process ------------------------------------------------------------------------------------------

std::binary_semaphore lock_is_held(0);

// Leaves the process by exit() while another thread holds the lock and never gives it back.
void exit_while_lock_is_held() {
  { const GilGuard lock; }
  std::thread([] {
    const GilGuard lock;
    lock_is_held.release();
    std::this_thread::sleep_for(std::chrono::hours(24));
  }).detach();
  lock_is_held.acquire();
  std::exit(3);
}

TEST(ReferencesDeathTest, DoNotKeepTheProcessFromEnding) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  void (*const ways[])() = {
      [] { std::thread(&exit_while_lock_is_held).join(); },
      // A reference that dies behind main().
      [] {
        const GilGuard lock;
        static const PyObjectPtr last = eval("[]");
        std::exit(3);
      },
  };
  for (const auto& way : ways) {
    const auto run_way = [&] {
      start_python();
      way();
    };
    EXPECT_EXIT(run_way(), ::testing::ExitedWithCode(3), "");
  }
}

}  // namespace
}  // namespace ling::cpython
