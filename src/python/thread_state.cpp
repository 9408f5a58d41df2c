// The interpreter lock, and the Python thread states that host threads keep between calls.
//
// Making and deleting a thread state costs more than most calls, so a host thread keeps the one it got for as long as
// it lives. A thread that ends does not delete it, because that takes the lock: somebody who holds the lock may be
// waiting for just this thread to end. It leaves its state to the next thread that takes the lock.
//
// Others, too, may use Python when a thread ends, before and after this file has its turn, and in several rounds. What
// they rely on is that a state is given away only once Python has forgotten it for the thread, and that a thread which
// Python has forgotten keeps no further state: each use then makes and deletes one of its own.
#include "python/interpreter.h"
#include "python/interpreter_function.h"
#include "python/interpreter_lock.h"
#include "python/thread_end.h"

#include <atomic>
#include <new>
#include <utility>

namespace ling::cpython {

namespace {

struct kept_state {
  PyThreadState* state;
  kept_state* next = nullptr;
};

// The state under which somebody holds the lock; from 3.12 on, that under which this thread does. Null when nobody
// does.
constinit const interpreter_function<PyThreadState*()> current_state("PyThreadState_GetUnchecked",
                                                                     "_PyThreadState_UncheckedGet");

// Whether the thread whose own state this is holds the lock under it.
bool is_current(PyThreadState* own) noexcept {
  auto* const current = current_state.get();
  return own != nullptr && current != nullptr && current() == own;
}

// The states of threads that have ended.
std::atomic<kept_state*> ended_states{nullptr};

// Whether the thread has kept a state. Not an object with a destructor: it is asked to the very end of the thread.
constinit thread_local bool has_kept_state = false;

void thread_ended(void* value) {
  auto* kept = static_cast<kept_state*>(value);
  // Those who come later would find it. It is forgotten when Python's own turn has come.
  if (PyGILState_GetThisThreadState() == kept->state && watch_end_again(kept)) {
    return;
  }
  kept->next = ended_states.load(std::memory_order_relaxed);
  while (!ended_states.compare_exchange_weak(kept->next, kept, std::memory_order_release, std::memory_order_relaxed)) {
  }
}

// After a fork the interpreter itself deletes the states of all threads but one.
void process_forked() { ended_states.store(nullptr, std::memory_order_relaxed); }

// Makes the state of a thread that has none, held once more than it is released; unless it is too late for that.
[[gnu::noinline, gnu::cold]] void keep_thread_state() noexcept {
  if (has_kept_state) {
    return;
  }
  const PyGILState_STATE state = PyGILState_Ensure();
  auto* kept = new (std::nothrow) kept_state{PyGILState_GetThisThreadState()};
  if (kept == nullptr || !watch_thread({&thread_ended, &process_forked}, kept)) {
    delete kept;
    PyGILState_Release(state);
    return;
  }
  has_kept_state = true;
  // The returned state is the one that the next PyGILState_Ensure of this thread finds again.
  static_cast<void>(PyEval_SaveThread());
}

void delete_states(kept_state* states) noexcept {
  while (states != nullptr) {
    PyThreadState_Delete(states->state);
    delete std::exchange(states, states->next);
  }
}

// The lock must be held, and not by an outer scope of this thread, because it is let go on the way.
[[gnu::noinline, gnu::cold]] void delete_ended_states() noexcept {
  kept_state* states = ended_states.exchange(nullptr, std::memory_order_acquire);
  if (states == nullptr) {
    return;
  }
  // Runs the finalisers of the thread's values, which may be Python code and come back here.
  for (const kept_state* each = states; each != nullptr; each = each->next) {
    PyThreadState_Clear(each->state);
  }
  // From 3.12 on, deleting the state of another thread makes the interpreter forget that of the calling thread. Another
  // one takes its place meanwhile; no Python code runs until the own one is back.
  PyThreadState* stand_in = PyThreadState_New(PyInterpreterState_Get());
  if (stand_in == nullptr) {
    while (states != nullptr) {
      thread_ended(std::exchange(states, states->next));  // for whoever comes next
    }
    return;
  }
  PyThreadState* own = PyEval_SaveThread();
  PyEval_RestoreThread(stand_in);
  delete_states(states);
  PyThreadState_Clear(stand_in);
  PyEval_SaveThread();
  PyThreadState_Delete(stand_in);
  PyEval_RestoreThread(own);
}

}  // namespace

bool holds_lock() noexcept { return is_current(PyGILState_GetThisThreadState()); }

gil_lock::gil_lock() noexcept {
  PyThreadState* own = PyGILState_GetThisThreadState();
  if (is_current(own)) {
    return;
  }
  if (own == nullptr) [[unlikely]] {
    keep_thread_state();
    own = PyGILState_GetThisThreadState();
  }
  if (own != nullptr && current_state.get() != nullptr) [[likely]] {
    taken_ = taken::with_kept_state;
    PyEval_RestoreThread(own);
  } else {
    taken_ = taken::with_counted_state;
    state_ = PyGILState_Ensure();
  }
  if (state_ == PyGILState_UNLOCKED && ended_states.load(std::memory_order_relaxed) != nullptr) [[unlikely]] {
    delete_ended_states();
  }
}

void gil_lock::give_back() noexcept {
  if (taken_ == taken::with_kept_state) [[likely]] {
    static_cast<void>(PyEval_SaveThread());
  } else {
    PyGILState_Release(state_);
  }
}

lock_given_away::lock_given_away() noexcept {
  if (interpreter_runs() && PyGILState_GetThisThreadState() != nullptr) {
    held_.emplace();  // so that there is something to give back
    state_ = PyEval_SaveThread();
  }
}

}  // namespace ling::cpython
