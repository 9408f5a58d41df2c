// References that die anywhere, and the thread states that threads keep.
#include "bridge/python.h"
#include "python/pyobject_ptr.h"

#include <limits.h>
#include <pthread.h>

#include <chrono>
#include <cstdint>
#include <semaphore>

namespace ling::cpython {
namespace {

using References = PythonTest;

// Counts thread states: each value lives as long as the one that it was stored with.
constexpr const char* values_of_threads = R"(
import threading, weakref
local, alive = threading.local(), weakref.WeakSet()
class Value: pass
def remember():
    local.value = Value()
    alive.add(local.value)
result = (remember, lambda: local.value, lambda: len(alive))
)";
PyObjectPtr call(const PyObjectPtr& functions, Py_ssize_t index) {
  return PyObjectPtr(PyObject_CallObject(PyTuple_GetItem(functions.get(), index), nullptr));
}

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
  on_eight_threads([&](int) {
    {
      const GilGuard lock;
      EXPECT_TRUE(call(functions, 0));
    }
    PyThreadState* kept = PyGILState_GetThisThreadState();
    const GilGuard lock;
    EXPECT_TRUE(call(functions, 1)) << "the thread came back with another state";
    EXPECT_EQ(PyGILState_GetThisThreadState(), kept);
  });
  EXPECT_EQ(repr(call(functions, 2)), "0") << "states of ended threads are deleted with the next lock that is taken";
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

pthread_key_t before_python, behind_python;
PyObjectPtr late_functions;

// A host's own use of the end of a thread: with Python, and in so many rounds.
template <pthread_key_t& key>
void use_late(void* rounds) {
  std::thread([] { const GilGuard deletes_states_of_ended_threads; }).join();
  {
    const GilGuard lock;
    EXPECT_TRUE(call(late_functions, 0));
  }
  pthread_setspecific(key, reinterpret_cast<void*>(reinterpret_cast<std::intptr_t>(rounds) - 1));
}

// Keys have their turns in the order of their numbers: this module's first, then the host's
// before and behind Python's.
void end_threads_that_use_python() {
  pthread_key_t lowest;
  pthread_key_create(&lowest, nullptr);
  pthread_key_create(&before_python, &use_late<before_python>);
  start_python();
  pthread_key_delete(lowest);
  std::thread([] { const GilGuard makes_the_key; }).join();
  pthread_key_create(&behind_python, &use_late<behind_python>);
  std::optional<GilGuard> lock(std::in_place);
  late_functions = run(values_of_threads);
  for (std::intptr_t rounds = 1; rounds <= PTHREAD_DESTRUCTOR_ITERATIONS; ++rounds) {
    lock.reset();
    std::thread([&] {
      for (const pthread_key_t key : {before_python, behind_python}) {
        pthread_setspecific(key, reinterpret_cast<void*>(rounds));
      }
      const GilGuard own;
      EXPECT_TRUE(call(late_functions, 0));
    }).join();
    lock.emplace();
    EXPECT_EQ(repr(call(late_functions, 2)), "0") << rounds;
  }
}

TEST(ReferencesDeathTest, ServeThreadsToTheirVeryEnd) { expect_passes_alone(&end_threads_that_use_python); }

// --- the end of the process ------------------------------------------------------------------------------------------

TEST(ReferencesDeathTest, DoNotKeepTheProcessFromEnding) {
  // A thread that has a state leaves by exit() while another one holds the lock and never gives it back.
  expect_passes_alone([] {
    start_python();
    static std::binary_semaphore lock_is_held(0);
    std::thread([] {
      { const GilGuard lock; }
      std::thread([] {
        const GilGuard lock;
        lock_is_held.release();
        std::this_thread::sleep_for(std::chrono::hours(24));
      }).detach();
      lock_is_held.acquire();
      std::exit(3);
    }).join();
  });
  expect_passes_alone([] {
    start_python();
    const GilGuard lock;
    static const PyObjectPtr last_dies_behind_main = eval("[]");
  });
}

}  // namespace
}  // namespace ling::cpython
