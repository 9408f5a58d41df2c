// The start of the interpreter and what it makes of `sys.path`, each in a process of its own.
#include "bridge/python.h"
#include "extension/search_paths.h"
#include "ling/loading.h"
#include "ling/testing.h"

#include <semaphore>

namespace ling::cpython {
namespace {

// There is one importer, before all others.
void expect_started() {
  const GilGuard lock;
  const std::string names = repr(eval("[type(i).__name__ for i in __import__('sys').meta_path]"));
  EXPECT_TRUE(names.starts_with("['_LingModuleImporter', ") && names.rfind("_Ling") == 2) << names;
}
void expect_locked() { EXPECT_EQ(PyGILState_Ensure(), PyGILState_LOCKED); }

void start_on_eight_threads() {
  ling::testing::on_eight_threads([](int) {
    start_python();
    expect_started();
  });
}

// The test owns the interpreter, holds its lock and handles an exception.
void start_owned() {
  static_cast<void>(cpython_add_sys_path("/queued"));
  Py_InitializeEx(0);
  PyErr_SetString(PyExc_ValueError, "mine");
  start_python();
  start_python();
  EXPECT_TRUE(PyErr_ExceptionMatches(PyExc_ValueError));
  PyErr_Clear();
  EXPECT_EQ(repr(eval("'/queued' in __import__('sys').path")), "False");
  expect_locked();
  expect_started();
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
  expect_locked();
  expect_started();
}

// One thread holds the lock and loads a plug-in, which another thread is loading that needs the lock for it.
void load_while_another_thread_holds_the_lock() {
  Py_InitializeEx(0);
  start_python();
  ling::testing::directed_extension extension;
  std::binary_semaphore loading(0);
  extension.first = [&]() -> Any {
    loading.release();
    return {};
  };
  extension.second = [&]() -> Any {
    const GilGuard lock;
    return {};
  };
  std::jthread other([&] { EXPECT_FALSE(extension.load().is_error()); });
  loading.acquire();
  EXPECT_FALSE(extension.load().is_error());
  expect_locked();
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
  expect_started();
}

TEST(StartupDeathTest, HappensOnceWhoeverComesFirst) {
  for (void (*start)() : {&start_on_eight_threads, &start_owned, &start_while_another_thread_holds_the_lock,
                          &load_while_another_thread_holds_the_lock, &start_from_within_the_start}) {
    expect_passes_alone(start);
  }
}

TEST(StartupDeathTest, AddsEachPathOnceAndAtTheEnd) {
  expect_passes_alone([] {
    for (const char* path : {"/first", "/second", "/first"}) {
      static_cast<void>(cpython_add_sys_path(path));
      static_cast<void>(add_sys_path("/\xff"));  // spelled as Python spells file names
    }
    start_python();
    const GilGuard lock;
    EXPECT_EQ(repr(eval("__import__('sys').path[-3:]")), "['/first', '/\\udcff', '/second']");
    EXPECT_FALSE(cpython_add_sys_path("/größe").is_error() || add_sys_path("/größe").is_error());
    EXPECT_EQ(repr(eval("__import__('sys').path[-2:]")), "['/second', '/größe']");
    // What a str that is no Unicode text is when it arrives is empty, and would be the current directory.
    EXPECT_TRUE(cpython_add_sys_path(String::unchecked(from_python(eval("'/\\udcff'").get()))).is_error());
    ASSERT_TRUE(run("import sys, traceback\nsys.path = ()\nresult = 1"));  // errors need what could not be found then
    EXPECT_TRUE(cpython_add_sys_path("/one").is_error());
  });
}

}  // namespace
}  // namespace ling::cpython
