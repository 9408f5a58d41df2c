// Loading plug-ins: what is wrong with a file is said with its name.
#include "ling/container_testing.h"

#include <filesystem>
#include <fstream>

namespace {

using namespace ling;
using namespace ling::testing;

TEST(Extension, ErrorsNameTheFileAndWhatIsMissing) {
  const std::filesystem::path no_library = std::filesystem::temp_directory_path() / "ling_no_library.txt";
  std::ofstream(no_library) << "plain text";
  const struct {
    std::string path;
    const char* message;  // how it begins, "{}" for the path; the rest is the system's
  } cases[] = {
      {"/nowhere/missing.so", "Unable to load the extension {}: "                               },
      {"missing.so",          "Unable to load the extension {}: "                               },
      {no_library.string(),   "Unable to load the extension {}: "                               },
      {LING_LIBRARY,          "Not an extension: {} lacks the symbol corvantis_extension_init: "},
      {LING_LIBRARY,          "Not an extension: {} lacks the symbol corvantis_extension_init: "},
  };
  for (const auto& each : cases) {
    const std::string said = message(load_extension(each.path));
    const std::string expected(String(each.message).arg(each.path).view());
    EXPECT_TRUE(said.starts_with(expected) && said.size() > expected.size()) << said;
  }
  std::filesystem::remove(no_library);
  EXPECT_EQ(message(load_extension("")), "Unable to load an extension: the path is empty.");
}

}  // namespace
