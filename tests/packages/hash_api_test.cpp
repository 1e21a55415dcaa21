#include "packages/hash_api.h"

#include <gtest/gtest.h>

#include "sha256/sha256.h"
#include "tests/support/caught.h"
#include "tests/support/environment.h"
#include "tests/support/sandbox.h"

namespace tests {
namespace {

using namespace tmw;

TEST(HashApi, FileAndArrayOfTheSameBytesHaveOneText) {
  Sandbox sandbox;
  for (const std::size_t length : {0U, 1U, 300000U}) {
    const std::string bytes(length, '\xA5');
    const std::vector<std::uint8_t> array(bytes.begin(), bytes.end());
    EXPECT_EQ(GetFileHash(sandbox.Write("Файл.dat", bytes)), sha256::CSHA256().SHA256(array));
  }
  EXPECT_EQ(GetFileHash(sandbox.Write("empty", "")),
            "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

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
  EXPECT_EQ(GetStringHash(""), sha256::CSHA256().SHA256({}));
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
