// Where Python modules are looked for.
#include "extension/search_paths.h"

#include "bridge/python.h"
#include "ling/logger.h"

#include <cstdlib>
#include <fstream>

namespace ling::cpython {
namespace {

namespace fs = std::filesystem;

TEST(SearchPaths, AreTheArchivesAndPackagesBesideTheModule) {
  std::string directory = (fs::temp_directory_path() / "ling-no-\xff-text-XXXXXX").string();
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
}

TEST(SearchPaths, EndWithTheFolderThatTheEnvironmentNames) {
  const std::tuple<const char*, const char*, const char*, std::string> rows[] = {
      {"/lo\xff", "/profile", "/lo\xff/Corvantis/Python313",                ""  },
      {"",        "/profile", "/profile/AppData/Local/Corvantis/Python313", ""  },
      {nullptr,   nullptr,    nullptr,                                      ""  },
      {"local",   "../\xff",  nullptr,
       "30 The variable LOCALAPPDATA is ignored: local is no absolute path.;"
       "30 The variable USERPROFILE is ignored: ../\ufffd is no absolute path.;"},
  };
  std::string seen;
  get_logger().setSink([&](const LogRecord& record) {
    seen += std::to_string(record.level()) + " " + std::string(record.message().view()) + ";";
  });
  const auto set = [](const char* name, const char* value) {
    value == nullptr ? unsetenv(name) : setenv(name, value, 1);
  };
  for (const auto& [local, profile, folder, logged] : rows) {
    set("LOCALAPPDATA", local);
    set("USERPROFILE", profile);
    EXPECT_EQ(user_folder(), folder == nullptr ? std::nullopt : std::optional<fs::path>(folder));
    EXPECT_EQ(std::exchange(seen, {}), logged);
  }
  set("USERPROFILE", nullptr);
  get_logger().setSink({});
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
  for (const char* path : {"/one", "/größe", "/one"}) {
    EXPECT_FALSE(cpython_add_sys_path(path).is_error());
  }
  EXPECT_EQ(tail(), "['/one', '/größe']");
  // A path of the system is spelled as Python spells file names.
  EXPECT_FALSE(add_sys_path("/größe").is_error());
  EXPECT_FALSE(add_sys_path("/no \xff text").is_error());
  EXPECT_EQ(repr(eval("ascii(__import__('sys').path[-2:])")), "\"['/gr\\\\xf6\\\\xdfe', '/no \\\\udcff text']\"");
}

TEST_F(SysPath, ThatIsNoneIsAnError) {
  const std::string before = tail();
  // What a str that is no Unicode text is when it arrives is empty, and would be the current directory.
  EXPECT_TRUE(cpython_add_sys_path(String::unchecked(from_python(eval("'/\\udcff'").get()))).is_error());
  EXPECT_EQ(tail(), before);
  ASSERT_TRUE(eval("__import__('traceback')")) << "errors need it, and without a path it cannot be found";
  for (const char* broken : {"sys.path = ()", "del sys.path"}) {
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
      static_cast<void>(add_sys_path("/\xff"));
    }
    start_python();
    const GilGuard lock;
    const std::string text = repr(eval("__import__('sys').path[-4:]"));
    std::exit(text.ends_with(", '/first', '/\\udcff', '/second']") ? 3 : 1);
  };
  EXPECT_EXIT(start(), ::testing::ExitedWithCode(3), "");
}

}  // namespace
}  // namespace ling::cpython
