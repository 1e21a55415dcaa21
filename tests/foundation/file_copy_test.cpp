#include <gtest/gtest.h>

#include <chrono>

#include "foundation/file_utils.h"
#include "tests/fakes/faulty_file_system.h"
#include "tests/fakes/hand_clock.h"
#include "tests/support/caught.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"

namespace tmw {
namespace {

using tests::Caught;
using tests::FaultyFileSystem;
using Log = std::vector<std::string>;

class FileCopy : public testing::Test {
 protected:
  FileCopy() {
    ports_->files = &files_;
    ports_->clock = &clock_;
    for (std::size_t i = 0; content_.size() < 700'000; ++i)
      content_ += std::to_string(i) + "\n";
    source_ = box_.Write("Новая база.mdb", content_);
    target_ = box_.Write("куда/Тамрин.mdb", "старая");
  }

  // The names in the target's folder; a half-grown copy would be seen here.
  std::vector<std::string> TargetFolder() {
    return CollectFileNamesInFolder(box_.Path("куда"), "*");
  }

  tests::ScopedPorts ports_;
  FaultyFileSystem files_{*ports_->files};
  tests::HandClock clock_;
  tests::Sandbox box_;
  std::string content_;
  std::string source_;
  std::string target_;
};

TEST_F(FileCopy, ACopyIsWholeFlushedAndOnlyThenNamed) {
  // What a killed process left behind does not stand in the way.
  box_.Write("куда/Тамрин.mdb.copying", "обрывок");
  CopyFile(source_, target_);
  EXPECT_EQ(box_.Read("куда/Тамрин.mdb"), content_);
  EXPECT_EQ(box_.Read("Новая база.mdb"), content_);
  EXPECT_EQ(TargetFolder(), Log{"Тамрин.mdb"});
  EXPECT_EQ(files_.log, (Log{"remove", "flush", "attributes", "rename", "flush folder"}));
}

TEST_F(FileCopy, ACopyKeepsTimeAndRightsAndReplacesAReadOnlyTarget) {
  namespace fs = std::filesystem;
  const auto then = fs::last_write_time(tests::ToPath(source_)) - std::chrono::hours(1000);
  fs::last_write_time(tests::ToPath(source_), then);
  ASSERT_TRUE(files_.SetReadOnly(source_, true));
  CopyFile(source_, target_);
  EXPECT_EQ(fs::last_write_time(tests::ToPath(target_)), then);
  EXPECT_TRUE(files_.Examine(target_).value.read_only);
  CopyFile(source_, target_);
  MoveFile(source_, target_);
  EXPECT_FALSE(box_.Has("Новая база.mdb"));
  ClearReadOnlyAttributeFromFile(target_);
  EXPECT_FALSE(files_.Examine(target_).value.read_only);
  if (files_.Separator() == '\\') return;  // the other rights are Linux's
  fs::permissions(tests::ToPath(target_), fs::perms{0750});
  CopyFile(target_, source_);
  EXPECT_EQ(fs::status(tests::ToPath(source_)).permissions(), fs::perms{0750});
}

TEST_F(FileCopy, AFailedCopyLeavesTheOldTargetAndNoHalfFile) {
  struct Case {
    const char* what;
    void (*arrange)(FaultyFileSystem&);
    platform::SystemCode code;
  };
  const Case cases[] = {
      {"nothing can be written", [](auto& f) { f.write_budget = 0; }, FaultyFileSystem::kDiskFull},
      {"the disk fills up", [](auto& f) { f.write_budget = 300'000; }, FaultyFileSystem::kDiskFull},
      {"the flush fails", [](auto& f) { f.flush_code = FaultyFileSystem::kBroken; },
       FaultyFileSystem::kBroken},
      {"rights cannot be given", [](auto& f) { f.attributes_code = FaultyFileSystem::kBroken; },
       FaultyFileSystem::kBroken},
      {"the rename fails", [](auto& f) { f.rename_codes = {FaultyFileSystem::kBroken}; },
       FaultyFileSystem::kBroken},
      {"the target stays busy",
       [](auto& f) { f.rename_codes = std::deque<int>(10, FaultyFileSystem::kBusy); },
       FaultyFileSystem::kBusy},
  };
  for (const Case& c : cases) {
    FaultyFileSystem files(files_);
    ports_->files = &files;
    c.arrange(files);
    const ProgramError error = Caught([&] { CopyFile(source_, target_); });
    EXPECT_EQ(error.Number, c.code) << c.what;
    EXPECT_TRUE(error.Description.starts_with("Ошибка копирования файла \"" + source_ +
                                              "\" в файл \"" + target_ + "\":\r\n"))
        << error.Description;
    EXPECT_EQ(box_.Read("куда/Тамрин.mdb"), "старая") << c.what;
    EXPECT_EQ(box_.Read("Новая база.mdb"), content_) << c.what;
    EXPECT_EQ(TargetFolder(), Log{"Тамрин.mdb"}) << c.what;
  }
  ports_->files = &files_;
  const ProgramError missing = Caught([&] { CopyFile(box_.Path("нет.mdb"), target_); });
  EXPECT_TRUE(missing.Description.starts_with("Ошибка открытия файла \"" + box_.Path("нет.mdb") +
                                              "\":\r\n"));
  EXPECT_EQ(box_.Read("куда/Тамрин.mdb"), "старая");
}

TEST_F(FileCopy, ATargetThatIsHeldForAMomentIsWaitedFor) {
  files_.rename_codes = {FaultyFileSystem::kBusy, FaultyFileSystem::kBusy};
  CopyFile(source_, target_);
  EXPECT_EQ(box_.Read("куда/Тамрин.mdb"), content_);
  EXPECT_EQ(clock_.sleeps, (std::vector<std::int32_t>{100, 100}));
}

TEST_F(FileCopy, AMoveIsARenameWithinOneFileSystem) {
  MoveFile(source_, target_);
  EXPECT_EQ(files_.log, (Log{"rename", "flush folder"}));
  EXPECT_EQ(box_.Read("куда/Тамрин.mdb"), content_);
  EXPECT_FALSE(box_.Has("Новая база.mdb"));
  const ProgramError error = Caught([&] { MoveFile(source_, target_); });
  EXPECT_TRUE(error.Description.starts_with("Ошибка переноса файла \"" + source_));
  EXPECT_EQ(box_.Read("куда/Тамрин.mdb"), content_);
}

TEST_F(FileCopy, AMoveToAnotherFileSystemCopiesFirstAndDeletesLast) {
  files_.rename_codes = {FaultyFileSystem::kOtherDevice};
  files_.write_budget = 1000;
  EXPECT_EQ(Caught([&] { MoveFile(source_, target_); }).Number, FaultyFileSystem::kDiskFull);
  EXPECT_EQ(box_.Read("Новая база.mdb"), content_);
  EXPECT_EQ(box_.Read("куда/Тамрин.mdb"), "старая");
  EXPECT_EQ(TargetFolder(), Log{"Тамрин.mdb"});

  files_.write_budget.reset();
  files_.rename_codes = {FaultyFileSystem::kOtherDevice};
  MoveFile(source_, target_);
  EXPECT_EQ(box_.Read("куда/Тамрин.mdb"), content_);
  EXPECT_FALSE(box_.Has("Новая база.mdb"));
}

TEST_F(FileCopy, ANameOfFullLengthCanBeCopied) {
  std::string name = "д";  // 127 letters of two bytes
  while (name.size() < 254)
    name += "ё";
  CopyFile(source_, box_.Path(name));
  EXPECT_EQ(box_.Read(name), content_);
  EXPECT_EQ(CollectFileNamesInFolder(box_.Path(), "*.copying"), Log{});
}

}  // namespace
}  // namespace tmw
