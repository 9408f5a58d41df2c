// Loading plug-ins: what is wrong with a file is said with its name.
#include "ling/testing.h"

#include <filesystem>
#include <fstream>

namespace {

using namespace ling;
using namespace ling::testing;

TEST(Extension, ErrorsNameTheFileAndWhatIsMissing) {
  const std::filesystem::path no_library = std::filesystem::temp_directory_path() / "ling_no_library.txt";
  std::ofstream(no_library) << "plain text";
  // How the error begins, "{}" for the path; the rest is the system's.
  const char* const unable = "Unable to load the extension {}: ";
  const char* const lacks = "Not an extension: {} lacks the symbol corvantis_extension_init: ";
  const std::pair<std::string, const char*> cases[] = {
      {"/nowhere/missing.so", unable},
      {"missing.so",          unable},
      {no_library,            unable},
      {LING_LIBRARY,          lacks },
      {LING_LIBRARY,          lacks }
  };
  for (const auto& [path, beginning] : cases) {
    const std::string said = message(load_extension(path));
    const std::string expected(String(beginning).arg(path).view());
    EXPECT_TRUE(said.starts_with(expected) && said.size() > expected.size()) << said;
  }
  std::filesystem::remove(no_library);
  EXPECT_EQ(message(load_extension("")), "Unable to load an extension: the path is empty.");
}

}  // namespace
