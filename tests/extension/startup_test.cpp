// The start of the interpreter, each in a process of its own, and what stands in an interpreter that was started.
#include "bridge/python.h"
#include "extension/search_paths.h"
#include "ling/loading.h"
#include "ling/testing.h"

#include <cstdlib>
#include <semaphore>

extern "C" void corvantis_extension_init() noexcept;

namespace ling::cpython {
namespace {

// Ends the process with status 3 when the start left everything as it must be.
[[noreturn]] void exit_with(bool passed) { std::exit(passed ? 3 : 1); }

// Whether there is one importer, before all others.
bool started() {
  const GilGuard lock;
  const PyObjectPtr names = eval("[type(i).__name__ for i in __import__('sys').meta_path]");
  return repr(names).starts_with("['_LingModuleImporter', ") && repr(names).rfind("_Ling") == 2;
}

void start_on_eight_threads() {
  std::atomic<int> passed = 0;
  ling::testing::on_eight_threads([&](int) {
    start_python();
    passed += started() ? 1 : 0;
  });
  exit_with(passed == 8);
}

// The test owns the interpreter, holds its lock and handles an exception.
void start_owned() {
  static_cast<void>(cpython_add_sys_path("/queued"));
  Py_InitializeEx(0);
  PyErr_SetString(PyExc_ValueError, "mine");
  start_python();
  start_python();
  const bool kept = PyErr_ExceptionMatches(PyExc_ValueError) != 0;
  PyErr_Clear();
  const bool queued = repr(eval("'/queued' in __import__('sys').path")) == "True";
  exit_with(kept && !queued && PyGILState_Ensure() == PyGILState_LOCKED && started());
}

// One thread holds the lock and wants the start, the other starts and wants the lock.
void start_while_another_thread_holds_the_lock() {
  Py_InitializeEx(0);
  std::binary_semaphore starting(0);
  std::jthread other([&] {
    starting.release();
    start_python();
  });
  starting.acquire();
  // Whoever of the two is first, the start must end; this makes the other one the likely starter.
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  start_python();
  exit_with(PyGILState_Ensure() == PyGILState_LOCKED && started());
}

// One thread holds the lock and loads a plug-in, which another thread is loading that needs the lock for it.
void load_while_another_thread_holds_the_lock() {
  Py_InitializeEx(0);
  start_python();
  ling::testing::directed_extension extension;
  std::binary_semaphore loading(0);
  bool initialised = false;
  extension.first = [&]() -> Any {
    loading.release();
    return {};
  };
  extension.second = [&]() -> Any {
    const GilGuard lock;
    initialised = true;
    return {};
  };
  std::jthread other([&] { EXPECT_FALSE(extension.load().is_error()); });
  loading.acquire();
  const bool loaded = !extension.load().is_error();
  exit_with(loaded && initialised && PyGILState_Ensure() == PyGILState_LOCKED);
}

// Python code that the start runs needs the interpreter.
void start_from_within_the_start() {
  Py_InitializeEx(0);
  static PyMethodDef ensure = {"ensure",
                               [](PyObject*, PyObject*) {
                                 start_python();
                                 return PyLong_FromLong(1);
                               },
                               METH_NOARGS, nullptr};
  const PyObjectPtr function(PyCMethod_New(&ensure, nullptr, nullptr, nullptr));
  PySys_SetObject("ensure", function.get());
  static_cast<void>(run("import sys\nsys.addaudithook(lambda *_: sys.ensure())"));
  start_python();
  exit_with(started());
}

TEST(StartupDeathTest, HappensOnceWhoeverComesFirst) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (void (*start)() : {&start_on_eight_threads, &start_owned, &start_while_another_thread_holds_the_lock,
                          &load_while_another_thread_holds_the_lock, &start_from_within_the_start}) {
    EXPECT_EXIT(start(), ::testing::ExitedWithCode(3), "");
  }
}

using Startup = PythonTest;

TEST_F(Startup, GoesOnWithoutAUserFolderThatCannotBeMade) {
  const std::string file = "/proc/self/exe";  // no folder
  std::vector<std::string> messages;
  get_logger().setSink([&](const LogRecord& record) { messages.emplace_back(record.message().view()); });
  setenv("LOCALAPPDATA", file.c_str(), 1);
  corvantis_extension_init();
  get_logger().setSink({});
  unsetenv("LOCALAPPDATA");
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_NE(messages[0].find(file + "/Corvantis/Python313: "), std::string::npos) << messages[0];
  EXPECT_EQ(repr(eval("any('/proc/self/exe' in p for p in __import__('sys').path)")), "False");
}

}  // namespace
}  // namespace ling::cpython
