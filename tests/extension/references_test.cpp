// References that die anywhere, and the thread states that threads keep.
#include "bridge/python.h"
#include "extension/pyobject_ptr.h"

#include <chrono>
#include <semaphore>

namespace ling::cpython {
namespace {

using References = PythonTest;

TEST_F(References, DieOnThreadsThatHoldNoLock) {
  const PyObjectPtr object = eval("[]");
  const Py_ssize_t count = Py_REFCNT(object.get());
  std::vector<PyObjectPtr> shared(8);
  for (PyObjectPtr& each : shared) {
    each = PyObjectPtr::share(object.get());
  }
  on_eight_threads([&](int i) {
    { const PyObjectPtr nothing; }
    EXPECT_EQ(PyGILState_GetThisThreadState(), nullptr) << "a lock was taken for nothing";
    const PyObjectPtr dies(std::move(shared[static_cast<std::size_t>(i)]));
  });
  EXPECT_EQ(Py_REFCNT(object.get()), count);
}

TEST_F(References, AreReleasedOnceHoweverTheyMove) {
  const PyObjectPtr object = eval("[]");
  {
    const GilGuard nested;
    PyObjectPtr first = PyObjectPtr::share(object.get());
    PyObjectPtr second = std::move(first);
    first = std::move(second);
    second = PyObjectPtr::share(object.get());
    second.swap(first);
    EXPECT_EQ(Py_REFCNT(object.get()), 3);
    Py_DecRef(second.release());
  }
  EXPECT_EQ(Py_REFCNT(object.get()), 1);
}

TEST_F(References, LeaveThreadsTheirStateUntilTheyEnd) {
  const PyObjectPtr functions = run(R"(
import threading
local = threading.local()
class Value:
    alive = 0
    def __init__(self): Value.alive += 1
    def __del__(self): Value.alive -= 1
def remember(): local.value = Value()
def recall(): return local.value is not None
result = (remember, recall, lambda: Value.alive)
)");
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

// --- the end of the process -----------------------------------------------------------------------------------------

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
      [] { exit_while_lock_is_held(); },
      [] { std::thread(&exit_while_lock_is_held).join(); },
      [] {
        const GilGuard lock;
        std::exit(3);
      },
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
    EXPECT_EXIT(run_way(), testing::ExitedWithCode(3), "");
  }
}

TEST(ReferencesDeathTest, OutliveAnInterpreterThatItsOwnerEnded) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto end_interpreter = [] {
    Py_InitializeEx(0);
    start_python();
    const PyObjectPtr survivor = eval("[]");
    Py_FinalizeEx();
  };
  EXPECT_EXIT((end_interpreter(), std::exit(3)), testing::ExitedWithCode(3), "");
}

}  // namespace
}  // namespace ling::cpython
