#include "transfer/binary_file.h"

#include <gtest/gtest.h>

#include "foundation/api_errors.h"
#include "platform/ports.h"
#include "tests/support/caught.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"

namespace tmw {
namespace {

using namespace platform::win32;  // NOLINT(google-build-using-namespace)
using tests::Caught;

// A disk that takes three bytes of a write and then cannot close the file.
class TightDisk final : public platform::BinaryFiles {
 public:
  static constexpr platform::SystemCode kCannotClose = 5;

  class Handle final : public platform::BinaryFileHandle {
   public:
    std::uint32_t Size() override { return 0xFFFFFFFF; }
    platform::Status Seek(std::int32_t, std::uint32_t) override { return {}; }
    platform::Outcome<std::uint32_t> Write(const void*, std::uint32_t) override {
      return platform::Outcome<std::uint32_t>::Success(3);
    }
    platform::Status Flush() override { return {}; }
    platform::Status Close() override { return platform::Status::Failure(kCannotClose); }
  };

  platform::Outcome<std::unique_ptr<platform::BinaryFileHandle>> Open(const std::string&,
                                                                      std::uint32_t, std::uint32_t,
                                                                      std::uint32_t,
                                                                      std::uint32_t) override {
    return {true, 0, std::make_unique<Handle>()};
  }
};

class BinaryFileTest : public testing::Test {
 protected:
  void Open(BinaryFile& file, const char* name, std::uint32_t disposition) const {
    file.OpenFile(sandbox_.Path(name), kGenericWrite, kShareRead, disposition, 0);
  }

  tests::Sandbox sandbox_;
};

TEST_F(BinaryFileTest, WithoutAnOpenFileNothingHappens) {
  BinaryFile file;
  EXPECT_EQ(file.GetSize(), 0);
  file.SetFilePos(-1, kMoveFromBegin);
  EXPECT_EQ(file.WriteBuffer("abc", 3, true), 0U);
  file.CloseHandle();
}

TEST_F(BinaryFileTest, DispositionsDecideWhatBecomesOfTheOldContent) {
  struct Case {
    std::uint32_t disposition;
    const char* on_old;      // content after writing "xy" over "abcd"; "": refused
    const char* on_nothing;  // content after writing where no file was; "": refused
  };
  const Case cases[] = {{kCreateNew, "", "xy"},        {kCreateAlways, "xy", "xy"},
                        {kOpenExisting, "xycd", ""},   {kOpenAlways, "xycd", "xy"},
                        {kTruncateExisting, "xy", ""}, {99, "", ""}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.disposition);
    const tests::Sandbox sandbox;
    sandbox.Write("old", "abcd");
    for (const auto& [name, expected] : {std::pair("old", c.on_old), {"new", c.on_nothing}}) {
      BinaryFile file;
      const auto write = [&] {
        file.OpenFile(sandbox.Path(name), kGenericWrite, kShareRead, c.disposition, 0);
        EXPECT_EQ(file.WriteBuffer("xy", 2, true), 2U);
        file.CloseHandle();
      };
      if (*expected == '\0') {
        EXPECT_NE(Caught(write).Number, 0);
        EXPECT_EQ(file.Handle(), nullptr);
      } else {
        write();
        EXPECT_EQ(sandbox.Read(name), expected);
      }
    }
    EXPECT_EQ(sandbox.Read("old"), *c.on_old == '\0' ? "abcd" : c.on_old);
  }
}

TEST_F(BinaryFileTest, AnOpenFileIsReplacedByTheNextAndKeepsOtherWritersOut) {
  BinaryFile file;
  Open(file, "a", kCreateNew);
  EXPECT_EQ(file.WriteBuffer("12345", 5, true), 5U);
  EXPECT_EQ(file.WriteBuffer("", 0, true), 0U);
  file.SetFilePos(-2, kMoveFromEnd);
  file.WriteBuffer("x", 1, true);
  EXPECT_EQ(file.GetSize(), 5);
  BinaryFile other;
  EXPECT_THROW(Open(other, "a", kCreateAlways), ProgramError);
  EXPECT_EQ(sandbox_.Read("a"), "123x5");
  Open(file, "b", kCreateNew);
  Open(other, "a", kOpenExisting);
  EXPECT_EQ(other.GetSize(), 5);
}

TEST_F(BinaryFileTest, MessagesNameTheFileAndEndWithTheSystemsWords) {
  const std::string path = sandbox_.Path("нет");
  BinaryFile file;
  const ProgramError missing = Caught([&] { Open(file, "нет", kOpenExisting); });
  EXPECT_EQ(missing.Number, 2);
  EXPECT_EQ(missing.Description,
            "Ошибка открытия файла \"" + path + "\": \r\n" + GetApiErrorText(2, ""));
  EXPECT_TRUE(missing.Source.ends_with("::BinaryFile.OpenFile]"));

  Open(file, "нет", kCreateAlways);
  const ProgramError seek = Caught([&] { file.SetFilePos(-7, kMoveFromBegin); });
  EXPECT_EQ(seek.Description, "Ошибка установки указателя в файле \"" + path +
                                  "\" на позицию -7 (0):\r\n" + GetApiErrorText(seek.Number, ""));

  file.OpenFile(path, kGenericRead, kShareRead, kOpenExisting, 0);
  const ProgramError write = Caught([&] { file.WriteBuffer("x", 1, false); });
  EXPECT_EQ(write.Description,
            "Ошибка записи в файл \"" + path + "\":\r\n" + GetApiErrorText(write.Number, ""));
}

TEST_F(BinaryFileTest, AShortWriteIsAnErrorOnlyWhenAllMustBeWritten) {
  tests::ScopedPorts ports;
  TightDisk disk;
  ports->binary_files = &disk;
  BinaryFile file;
  file.OpenFile("f", kGenericWrite, kShareRead, kCreateAlways, 0);
  EXPECT_EQ(file.WriteBuffer("12345", 5, false), 3U);
  const ProgramError error = Caught([&] { file.WriteBuffer("12345", 5, true); });
  EXPECT_EQ(error.Number, 1001);
  EXPECT_EQ(error.Description,
            "Ошибка записи в файл \"f\":\r\nЗапись выполнена частично (3 вместо 5).");
  EXPECT_EQ(file.GetSize(), -1);
  EXPECT_EQ(Caught([&] { file.CloseHandle(); }).Number, TightDisk::kCannotClose);
  EXPECT_NE(file.Handle(), nullptr);
}

}  // namespace
}  // namespace tmw
