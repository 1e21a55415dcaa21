#include "publish/image_file.h"

#include <gtest/gtest.h>

#include <random>

#include "ports/companion_library.h"
#include "ports/ports.h"
#include "tests/publish/sample.h"

namespace tests {
namespace {

// "bits, whether it can be registered, version", or "none".
std::string Described(const std::optional<publish::ImageFacts>& facts) {
  if (!facts) return "none";
  std::string text = std::to_string(facts->bits) + (facts->can_be_registered ? " yes" : " no");
  for (const std::int32_t number : facts->version.value_or(std::array<std::int32_t, 4>{}))
    text += " " + std::to_string(number);
  return text;
}

TEST(Images, SayWhatTheyAreForAndWhatTheyExport) {
  const Sandbox sandbox;
  const auto read = [&](const std::string& bytes) {
    return Described(publish::ReadImage(sandbox.Write("image", bytes)));
  };
  EXPECT_EQ(read(PeImage(32, "DllRegisterServer", 3 << 16 | 12)), "32 yes 3 12 0 0");
  EXPECT_EQ(read(PeImage(64, "DllRegisterServer", 0)), "64 yes 0 0 0 0");
  EXPECT_EQ(read(PeImage(64, "DllRegisterServerEx", 1)), "64 no 0 1 0 0");
  EXPECT_EQ(read("MZ, says the text"), "none");
  EXPECT_EQ(Described(publish::ReadImage(sandbox.Path("gone"))), "none");
  const std::string companion = ports::CurrentPorts().companion->Path();
  EXPECT_TRUE(Described(publish::ReadImage(companion))
                  .starts_with(std::to_string(8 * sizeof(void*)) + " no"));
}

TEST(Images, TruncatedAndLyingHeadersDoNoHarm) {
  const Sandbox sandbox;
  const std::string whole = PeImage(32, "DllRegisterServer", 1);
  const std::string library = sandbox.Read(ports::CurrentPorts().companion->Path()).substr(0, 4096);
  const std::size_t end_of_name = whole.find("DllRegisterServer") + 18;
  for (std::size_t length = 0; length < end_of_name; ++length)
    EXPECT_EQ(
        Described(publish::ReadImage(sandbox.Write("image", whole.substr(0, length)))).find("yes"),
        std::string::npos);
  std::mt19937 random(20261120);
  for (int i = 0; i < 2000; ++i) {
    std::string bytes = i % 2 == 0 ? whole : library;
    for (int j = 0; j < 4; ++j)
      bytes[random() % (i % 4 < 2 ? 0x180 : bytes.size())] = static_cast<char>(random());
    const auto facts = publish::ReadImage(sandbox.Write("image", bytes));
    if (!facts || !facts->can_be_registered) continue;
    EXPECT_NE(bytes.find("DllRegisterServer"), std::string::npos) << i;
  }
}

}  // namespace
}  // namespace tests
