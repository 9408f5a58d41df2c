// The start of the interpreter: what is done, in which order, and that it is done once.
#include "extension/search_paths.h"
#include "extension/startup_steps.h"
#include "language/cpython_language.h"
#include "ling/error.h"
#include "python/interpreter.h"
#include "python/pyobject_ptr.h"

#include <thread>

namespace ling::cpython {

constinit std::atomic<interpreter_phase> known_phase{interpreter_phase::none};

namespace {

// Conversions hand out these four without a reference of their own, and whoever receives one releases it. Before 3.12
// their counts are ordinary ones: they are raised beyond what can be released in the life of a process. The lock must
// be held.
void pin_singletons() {
  constexpr Py_ssize_t immortal = Py_ssize_t{1} << 29;
  constexpr Py_ssize_t never_released = Py_ssize_t{1} << 40;
  for (PyObject* singleton : {Py_None, Py_True, Py_False, Py_NotImplemented}) {
    if (Py_REFCNT(singleton) < immortal) {
      Py_SET_REFCNT(singleton, Py_REFCNT(singleton) + never_released);
    }
  }
}

// A step that may be left out, as where memory is short; the start goes on.
template <class F>
void attempt(const F& step) noexcept {
  static_cast<void>(internal::guarded([&]() -> Any {
    step();
    return {};
  }));
}

void start_own_interpreter() {
  // Python's extension modules look for the interpreter's symbols as soon as the first one is imported.
  open_interpreter_library();
  choose_text_encoding();
  // 1. Signals stay the host's.
  Py_InitializeEx(0);
  pin_singletons();
  // 2. The paths found before there was a `sys.path`.
  attempt(add_pending_paths);
  // 3. From here on the lock belongs to nobody; each entry takes it. The thread state stays that of this thread, which
  //    finds it again.
  static_cast<void>(PyEval_SaveThread());
  // 4. The host's view of Python's own modules.
  const GilGuard lock;
  attempt(build_module_tree);
}

void start_interpreter() {
  if (Py_IsInitialized() == 0) {
    start_own_interpreter();
  } else {
    // Another part of the process owns the interpreter and its `sys.path`.
    const GilGuard lock;
    pin_singletons();
  }
  // Whoever else finalises it ends all that this module holds of it. (The last chance to know: afterwards a new one may
  // be there.)
  Py_AtExit([] { known_phase.store(interpreter_phase::ended, std::memory_order_release); });
  attempt([] { static_cast<void>(cpython_language_class.get()); });
  // 5. Python code may now ask for the host's modules.
  const GilGuard lock;
  attempt(install_importer);
}

std::atomic<std::thread::id> starter;

// The first one to come starts.
void start_or_wait_for_start() noexcept {
  auto current = interpreter_phase::none;
  if (known_phase.compare_exchange_strong(current, interpreter_phase::starting, std::memory_order_acquire)) {
    starter.store(std::this_thread::get_id(), std::memory_order_relaxed);
    start_interpreter();
    known_phase.store(interpreter_phase::running, std::memory_order_release);
    known_phase.notify_all();
  } else if (current == interpreter_phase::starting &&
             starter.load(std::memory_order_relaxed) != std::this_thread::get_id()) {
    // The starting thread needs the lock.
    const lock_given_away meanwhile;
    known_phase.wait(interpreter_phase::starting, std::memory_order_acquire);
  }
}

}  // namespace

Result<None> start_or_wait() {
  start_or_wait_for_start();
  if (interpreter_has_ended()) {
    return error_interpreter_ended();
  }
  return None();
}

Error error_interpreter_ended() { return Error("The Python interpreter has ended."); }

}  // namespace ling::cpython
