// What cases that work on Python objects share: the lock for a case, and Python code to make the objects with.
#pragma once

#include "ling/registration.h"
#include "python/convert.h"
#include "python/interpreter.h"
#include "python/pending_exception.h"

#include <gtest/gtest.h>

#include <barrier>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace ling::cpython {

inline void start_python() { EXPECT_FALSE(ensure_interpreter().is_error()); }

// Runs statements in a namespace of their own; gives the variable `result`, null with an exception pending on failure.
inline PyObjectPtr run(const std::string& code) {
  const PyObjectPtr names(PyDict_New());
  PyDict_SetItemString(names.get(), "__builtins__", PyEval_GetBuiltins());
  const PyObjectPtr compiled(Py_CompileString(code.c_str(), "<case>", Py_file_input));
  const PyObjectPtr none(compiled ? PyEval_EvalCode(compiled.get(), names.get(), names.get()) : nullptr);
  return none ? PyObjectPtr::share(PyDict_GetItemString(names.get(), "result")) : PyObjectPtr();
}
inline PyObjectPtr eval(const std::string& expression) { return run("result = (" + expression + "\n)"); }

inline std::string repr(const PyObjectPtr& object) {
  const PyObjectPtr text(PyObject_Repr(object.get()));
  const PyObjectPtr bytes(text ? PyUnicode_AsEncodedString(text.get(), "utf-8", "backslashreplace") : nullptr);
  return bytes ? PyBytes_AsString(bytes.get()) : "";
}

// The exception that is pending, which then is no more.
inline PyObjectPtr take_pending() {
  auto fetched = fetch_exception();
  return fetched ? std::move(fetched->value) : PyObjectPtr();
}

// The memory blocks that Python's own allocator has given out; 0 when another allocator serves.
inline long long allocated_blocks() {
  const PyObjectPtr count = run("import gc, sys\ngc.collect()\nresult = sys.getallocatedblocks()");
  return PyLong_AsLongLong(count.get());
}

// Does something so often that a leak exceeds what the interpreter keeps for later, which comes and goes by hundreds.
template <class F>
void expect_no_leak(const char* what, const F& work) {
  constexpr int warm_up = 500, rounds = 2000;
  long long blocks = 0;
  for (int i = 0; i < warm_up + rounds; ++i) {
    if (i == warm_up) {
      blocks = allocated_blocks();
    }
    work();
  }
  EXPECT_LT(allocated_blocks() - blocks, rounds / 2) << what;
}

// Does something in a process of its own, which ends well when no expectation has failed.
template <class F>
void expect_passes_alone(const F& work) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT((work(), std::exit(::testing::Test::HasFailure() ? 1 : 3)), ::testing::ExitedWithCode(3), "");
}

// A case that holds the lock throughout.
class PythonTest : public ::testing::Test {
 protected:
  PythonTest() {
    EXPECT_FALSE(initialize().is_error());
    start_python();
    lock_.emplace();
  }
  ~PythonTest() override {
    EXPECT_EQ(PyErr_Occurred(), nullptr) << "an exception was left pending";
    PyErr_Clear();
  }

  // Eight threads that start at once, each with its own lock; the case gives its lock away meanwhile.
  void on_eight_threads(const std::function<void(int)>& work) {
    lock_.reset();
    std::barrier start(8);
    std::vector<std::jthread> threads;
    for (int i = 0; i < 8; ++i) {
      threads.emplace_back([&, i] {
        start.arrive_and_wait();
        work(i);
      });
    }
    threads.clear();
    lock_.emplace();
  }

 private:
  std::optional<GilGuard> lock_;
};

}  // namespace ling::cpython
