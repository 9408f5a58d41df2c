// Where Python modules are looked for.
#include "extension/search_paths.h"

#include "bridge/python.h"

#include <cstdlib>
#include <fstream>

namespace ling::cpython {
namespace {

namespace fs = std::filesystem;

TEST(SearchPaths, AreTheArchivesAndPackagesBesideTheModule) {
  std::string directory = (fs::temp_directory_path() / "ling-XXXXXX").string();
  ASSERT_NE(mkdtemp(directory.data()), nullptr);
  for (const char* name : {"site-packages/a.zip", "site-packages/B.ZIP", "site-packages/c.py", "python3/other.zip",
                           "site-packages/directory.zip/d.zip", "python3/lib/library.zip"}) {
    const fs::path file = fs::path(directory) / name;
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "content";
  }
  const std::vector<fs::path> expected = {
      directory + "/site-packages/a.zip",
      directory + "/site-packages",
      directory + "/python3/lib/library.zip",
  };
  EXPECT_EQ(library_paths(directory), expected);
  EXPECT_EQ(library_paths(directory + "/missing"), std::vector<fs::path>());
  fs::remove_all(directory);
  EXPECT_EQ(library_paths({}), std::vector<fs::path>()) << "not those of the root directory";
}

TEST(SearchPaths, EndWithTheFolderThatTheEnvironmentNames) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"/local", "/profile", "/local/Corvantis/Python313"                },
      {"",       "/profile", "/profile/AppData/Local/Corvantis/Python313"},
      {nullptr,  "/profile", "/profile/AppData/Local/Corvantis/Python313"},
      {nullptr,  nullptr,    nullptr                                     },
  };
  const auto set = [](const char* name, const char* value) {
    value == nullptr ? unsetenv(name) : setenv(name, value, 1);
  };
  for (const auto& [local, profile, folder] : rows) {
    set("LOCALAPPDATA", local);
    set("USERPROFILE", profile);
    const auto expected = folder == nullptr ? std::nullopt : std::optional<fs::path>(folder);
    EXPECT_EQ(user_folder(), expected);
  }
}

// Cases that change `sys.path`, which is put back afterwards.
class SysPath : public PythonTest {
 protected:
  ~SysPath() override { PySys_SetObject("path", before_.get()); }
  static std::string tail() { return repr(eval("__import__('sys').path[-2:]")); }

 private:
  PyObjectPtr before_ = eval("__import__('sys').path[:]");
};

TEST_F(SysPath, GetsAPathOnceAndAtTheEnd) {
  for (const char* path : {"/one", "/größe", "/one", "/größe"}) {
    EXPECT_FALSE(cpython_add_sys_path(path).is_error());
  }
  EXPECT_EQ(tail(), "['/one', '/größe']");
  on_eight_threads([](int) { EXPECT_FALSE(cpython_add_sys_path("/shared").is_error()); });
  EXPECT_EQ(tail(), "['/größe', '/shared']");
}

TEST_F(SysPath, ThatIsNoListIsAnError) {
  ASSERT_TRUE(eval("__import__('traceback')")) << "errors need it, and without a path it cannot be found";
  for (const char* broken : {"sys.path = ()", "sys.path = None", "del sys.path"}) {
    static_cast<void>(run(std::string("import sys\n") + broken));
    EXPECT_TRUE(cpython_add_sys_path("/one").is_error()) << broken;
    EXPECT_EQ(PyErr_Occurred(), nullptr);
  }
}

TEST(SysPathDeathTest, GetsQueuedPathsWhenTheInterpreterStarts) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto start = [] {
    for (const char* path : {"/first", "/second", "/first"}) {
      static_cast<void>(cpython_add_sys_path(path));
    }
    start_python();
    const GilGuard lock;
    const PyObjectPtr path = eval("__import__('sys').path");
    const std::string text = repr(path);
    std::exit(text.ends_with(", '/first', '/second']") && text.find("'/first'") == text.rfind("'/first'") ? 3 : 1);
  };
  EXPECT_EXIT(start(), testing::ExitedWithCode(3), "");
}

}  // namespace
}  // namespace ling::cpython
