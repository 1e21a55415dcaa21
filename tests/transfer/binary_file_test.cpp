#include "transfer/binary_file.h"

#include <gtest/gtest.h>

#include "tests/support/caught.h"
#include "tests/support/sandbox.h"

namespace tmw {
namespace {

namespace win32 = ports::win32;
using tests::Caught;

void Open(BinaryFile& file, const std::string& path, std::uint32_t disposition) {
  file.OpenFile(path, ports::win32::kGenericWrite, ports::win32::kShareRead, disposition, 0);
}

TEST(BinaryFiles, DispositionsDecideWhatBecomesOfTheOldContent) {
  const struct {
    std::uint32_t disposition;
    std::string on_old;      // content after writing "xy" over "abcd"; "": refused
    std::string on_nothing;  // content after writing where no file was; "": refused
  } cases[] = {
      {ports::win32::kCreateNew, "", "xy"},        {ports::win32::kCreateAlways, "xy", "xy"},
      {ports::win32::kOpenExisting, "xycd", ""},   {ports::win32::kOpenAlways, "xycd", "xy"},
      {ports::win32::kTruncateExisting, "xy", ""}, {99, "", ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.disposition);
    const tests::Sandbox sandbox;
    sandbox.Write("old", "abcd");
    for (const auto& [name, expected] : {std::pair("old", c.on_old), {"new", c.on_nothing}}) {
      BinaryFile file;
      const auto open = [&] { Open(file, sandbox.Path(name), c.disposition); };
      if (expected.empty()) {
        EXPECT_NE(Caught(open).Number, 0);
        continue;
      }
      open();
      EXPECT_EQ(file.WriteBuffer("xy", 2, true), 2U);
      file.CloseHandle();
      EXPECT_EQ(sandbox.Read(name), expected);
    }
    EXPECT_EQ(sandbox.Read("old"), c.on_old.empty() ? "abcd" : c.on_old);
  }
}

TEST(BinaryFiles, AnOpenFileIsReplacedByTheNextAndKeepsOtherWritersOut) {
  const tests::Sandbox sandbox;
  BinaryFile file;
  EXPECT_EQ(file.GetSize() + static_cast<int>(file.WriteBuffer("abc", 3, true)), 0);
  Open(file, sandbox.Path("a"), ports::win32::kCreateNew);
  EXPECT_EQ(file.WriteBuffer("12345", 5, true), 5U);
  EXPECT_EQ(file.WriteBuffer("", 0, true), 0U);
  file.SetFilePos(-2, ports::win32::kMoveFromEnd);
  file.WriteBuffer("x", 1, true);
  BinaryFile other;
  EXPECT_THROW(Open(other, sandbox.Path("a"), ports::win32::kCreateAlways), ProgramError);
  EXPECT_EQ(sandbox.Read("a"), "123x5");
  Open(file, sandbox.Path("b"), ports::win32::kCreateNew);
  Open(other, sandbox.Path("a"), ports::win32::kOpenExisting);
  EXPECT_EQ(other.GetSize(), 5);
  EXPECT_THROW(Open(other, sandbox.Path("none"), ports::win32::kOpenExisting), ProgramError);
  EXPECT_EQ(other.GetSize() + static_cast<int>(other.WriteBuffer("abc", 3, true)), 0);
}

}  // namespace
}  // namespace tmw
