#include "platform/linux/updater_arguments.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "ports/host.h"
#include "tests/support/environment.h"

namespace platform {
namespace {

using Words = std::vector<std::string>;

std::vector<char*> Pointers(Words& words) {
  std::vector<char*> pointers;
  for (std::string& word : words)
    pointers.push_back(word.data());
  return pointers;
}

TEST(UpdaterArguments, RelativePathsAreMadeAbsoluteBeforeTheFolderChanges) {
  const std::string here = std::filesystem::current_path().string();
  const struct {
    Words given;
    Words made;
  } cases[] = {
      {{"-e", "Tamrin"}, {"-e", here + "/Tamrin"}},
      {{"-y", "-E", "../tm/./Т", "-p", "a/b"},
       {"-y", "-E", std::filesystem::path(here).parent_path().string() + "/tm/Т", "-p", "a/b"}},
      {{"-e", "/opt/Tamrin", "-e", "", "-e"}, {"-e", "/opt/Tamrin", "-e", "", "-e"}},
      {{"-p", "-e", "-w", "-e", "-v", "-e"}, {"-p", "-e", "-w", "-e", "-v", "-e"}},
  };
  for (const auto& c : cases) {
    Words words = c.given;
    words.insert(words.begin(), "program");
    std::vector<char*> pointers = Pointers(words);
    EXPECT_EQ(ports::PrepareUpdater(static_cast<int>(pointers.size()), pointers.data()),
              std::nullopt);
    EXPECT_EQ(Words(pointers.begin() + 1, pointers.end()), c.made);
  }
  for (const char* const name : {"TAMRIN_MACHINE_REG", "TAMRIN_USER_REG"}) {
    const tests::ScopedVariable variable(name, "a/user.reg");
    MakePathsAbsolute(0, nullptr);
    EXPECT_EQ(std::getenv(name), here + "/a/user.reg");
  }
}

}  // namespace
}  // namespace platform
