#include "foundation/version.h"

#include <gtest/gtest.h>

#include <regex>

#include "ports/ports.h"
#include "ports/system_info.h"
#include "tests/support/environment.h"

namespace tmw {
namespace {

TEST(Version, Comparison) {
  struct Case {
    const char* a;
    const char* b;
    std::int32_t result;
  };
  const Case cases[] = {
      {"1.2.3.0", "1.2.3.5", 0},   // a fourth number 0 counts as absent
      {"1.2.3.4", "1.2.3.5", -1},  //
      {"1.10", "1.9", 1},          // numbers, not texts
      {"2.0", "2", 0},             //
      {"1.2.3.4.9", "1.2.3.4.1", 0},
      {"1.0.0.10", "1.0.0.9", 1},
      {"", "1", -2},
      {"1", "", -2},
      {"1.99999999999", "1.2", -2},
      {"x.1", "0.1", 0},
      {" 7beta.1", "7.1", 0},
      {"-1", "1", -1},
  };
  for (const Case& c : cases)
    EXPECT_EQ(CompareVersionStrings(c.a, c.b, -2), c.result) << c.a;
}

TEST(Version, ParsingLeavesOutputsOfMissingPiecesAlone) {
  std::int32_t n[5] = {-7, -7, -7, -7, -7};
  EXPECT_FALSE(ParseVersionString("", n[0], n[1], n[2], n[3], n[4]));
  EXPECT_EQ(n[4], -7);
  EXPECT_TRUE(ParseVersionString("3.5", n[0], n[1], n[2], n[3], n[4]));
  EXPECT_EQ((std::vector<std::int32_t>(n, n + 5)), (std::vector<std::int32_t>{3, 5, -7, -7, 2}));
  EXPECT_TRUE(ParseVersionString("1.2.3.4.5.6", n[0], n[1], n[2], n[3], n[4]));
  EXPECT_EQ((std::vector<std::int32_t>(n, n + 5)), (std::vector<std::int32_t>{1, 2, 3, 4, 6}));
}

TEST(SystemDescription, TheRealSystemTellsItsVersion) {
  const std::string form = tests::kOnWindows ? R"(^\d+\.\d+\.\d+)" : R"(^\D.*, Linux \d+\.\d+)";
  EXPECT_TRUE(std::regex_search(GetOSInfoString(), std::regex(form))) << GetOSInfoString();
  const ports::HardwareFacts facts = ports::CurrentPorts().system_info->Hardware();
  EXPECT_EQ(facts.total_virtual > std::int64_t{1} << 32, !tests::kOnWindows);
  EXPECT_FALSE(GetHardwareInfoString().find("processors: 0") != std::string::npos);
}

}  // namespace
}  // namespace tmw
