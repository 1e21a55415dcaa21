#include "packages/hash_api.h"

#include <gtest/gtest.h>

#include "sha256/sha256.h"
#include "tests/support/caught.h"
#include "tests/support/environment.h"
#include "tests/support/sandbox.h"

namespace tests {
namespace {

using namespace tmw;

TEST(HashApi, FilesAreFoundWhateverTheirPathLooksLike) {
  Sandbox sandbox;
  const std::string deep = std::string(90, 'a') + "/" + std::string(90, 'b') + "/";
  std::vector<std::string> names = {"f", deep + "f", deep + ".//./f"};
  // There the library has no other form of a path than its bytes.
  if (!kOnWindows) names.insert(names.end(), {"Әлия/Müller", "漢字 ™Ж"});
  for (const std::string& name : names) {
    sandbox.Write(name, "x");
    EXPECT_EQ(GetFileHash(sandbox.Path(name)), GetFileHash(sandbox.Write("x", "x"))) << name;
  }
}

TEST(HashApi, ATextIsHashedAsItsUtf16Units) {
  const std::vector<std::uint8_t> units = {0x61, 0, 0x62, 0, 0x4F, 0x04};
  EXPECT_EQ(GetStringHash("abя"), sha256::CSHA256().SHA256(units));
  EXPECT_EQ(GetStringHash(""), sha256::CSHA256().SHA256(""));
}

TEST(HashApi, AMissingFileIsNamedWithTheSystemsReason) {
  Sandbox sandbox;
  for (const std::string& path : {sandbox.Path("none"), sandbox.Path()}) {
    const ProgramError error = Caught([&] { GetFileHash(path); });
    EXPECT_TRUE(
        error.Description.starts_with("Ошибка подсчета контрольной суммы файла " + path + ": \r\n"))
        << error.Description;
    EXPECT_NE(error.Number, kProgramErrorNumber);
    EXPECT_NE(error.Source.find("::miHashApi.GetFileHash]"), std::string::npos);
  }
}

}  // namespace
}  // namespace tests
