// Loading plug-ins: what is wrong with a file is said with its name.
#include "ling/testing.h"

#include <filesystem>
#include <fstream>

namespace {

using namespace ling::testing;

TEST(Extension, ErrorsNameTheFileAndWhatIsMissing) {
  const std::filesystem::path no_library = std::filesystem::temp_directory_path() / "ling_no_library.txt";
  std::ofstream(no_library) << "plain text";
  for (const std::string& path : {std::string("/nowhere/missing.so"), std::string("missing.so"), no_library.string()}) {
    const std::string said = message(load_extension(path));
    EXPECT_TRUE(said.starts_with("Unable to load the extension " + path + ": ")) << said;
    EXPECT_GT(said.size(), path.size() + 40) << "what the system says follows";
  }
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(message(load_extension(LING_LIBRARY))
                    .starts_with("Not an extension: " LING_LIBRARY " lacks the symbol corvantis_extension_init: "));
  }
  std::filesystem::remove(no_library);
  EXPECT_EQ(message(load_extension("")), "Unable to load an extension: the path is empty.");
}

}  // namespace
