#include <gtest/gtest.h>

#include <chrono>
#include <functional>

#include "foundation/file_utils.h"
#include "tests/fakes/faulty_file_system.h"
#include "tests/fakes/hand_clock.h"
#include "tests/support/caught.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"

namespace tmw {
namespace {

using F = tests::FaultyFileSystem;
using Names = std::vector<std::string>;

// A new database, and in another folder the old one that it is to replace.
class FileFaults : public testing::Test {
 protected:
  FileFaults() {
    ports_->files = &files_;
    ports_->clock = &clock_;
    for (std::size_t i = 0; content_.size() < 700'000; ++i)
      content_ += std::to_string(i) + "\n";
    source_ = box_.Write("Новая база.mdb", content_);
    target_ = box_.Write("куда/Тамрин.mdb", "старая");
  }

  // Whether the source and the target's folder hold exactly this; a half-written copy would show.
  void ExpectContents(bool has_source, const std::string& target, const std::string& where) {
    EXPECT_EQ(box_.Has("Новая база.mdb"), has_source) << where;
    EXPECT_EQ(box_.Read("куда/Тамрин.mdb"), target) << where;
    EXPECT_EQ(CollectFileNamesInFolder(box_.Path("куда"), "*"), Names{"Тамрин.mdb"}) << where;
  }

  tests::ScopedPorts ports_;
  F files_{*ports_->files};
  tests::HandClock clock_;
  tests::Sandbox box_;
  std::string content_;
  std::string source_;
  std::string target_;
};

TEST_F(FileFaults, ACopyIsWholeAndFlushedBeforeItGetsItsName) {
  box_.Write("куда/Тамрин.mdb.copying", "left behind by a killed process");
  CopyFile(source_, target_);
  ExpectContents(true, content_, "");
  EXPECT_EQ(files_.log, (Names{"remove", "flush", "attributes", "rename", "flush folder"}));
  const std::string longest_name = "ж" + std::string(253, 'a');
  CopyFile(source_, box_.Path(longest_name));
  EXPECT_EQ(box_.Read(longest_name), content_);
}

TEST_F(FileFaults, ACopyKeepsTimeAndRightsAndReplacesAReadOnlyTarget) {
  namespace fs = std::filesystem;
  const auto then = fs::last_write_time(tests::ToPath(source_)) - std::chrono::hours(1000);
  fs::last_write_time(tests::ToPath(source_), then);
  ASSERT_TRUE(files_.SetReadOnly(source_, true));
  CopyFile(source_, target_);
  EXPECT_EQ(fs::last_write_time(tests::ToPath(target_)), then);
  EXPECT_TRUE(files_.Examine(target_).value.read_only);
  MoveFile(source_, target_);
  ExpectContents(false, content_, "");
  ClearReadOnlyAttributeFromFile(target_);
  EXPECT_FALSE(files_.Examine(target_).value.read_only);
  if (files_.Separator() == '\\') return;  // the rest is about rights of Linux
  fs::permissions(tests::ToPath(target_), fs::perms{0750});
  CopyFile(target_, source_);
  EXPECT_EQ(fs::status(tests::ToPath(source_)).permissions(), fs::perms{0750});
}

TEST_F(FileFaults, AFailedCopyLeavesTheOldTargetAndNoHalfFile) {
  const std::pair<F::Code, void (*)(F&)> cases[] = {
      {F::kDiskFull, [](F& files) { files.write_budget = 0; }},
      {F::kDiskFull, [](F& files) { files.write_budget = 300'000; }},
      {F::kBroken, [](F& files) { files.flush_code = F::kBroken; }},
      {F::kBroken, [](F& files) { files.attributes_code = F::kBroken; }},
      {F::kBroken, [](F& files) { files.rename_codes = {F::kBroken}; }},
      {F::kBusy, [](F& files) { files.rename_codes.assign(50, F::kBusy); }}};
  for (const auto& [code, arrange] : cases) {
    F files(static_cast<ports::FileSystem&>(files_));
    ports_->files = &files;
    arrange(files);
    const ProgramError error = tests::Caught([&] { CopyFile(source_, target_); });
    EXPECT_EQ(error.Number, code);
    EXPECT_TRUE(error.Description.starts_with("Ошибка копирования файла \"" + source_ +
                                              "\" в файл \"" + target_ + "\":\r\n"));
    ExpectContents(true, "старая", error.Description);
  }
}

TEST_F(FileFaults, ATargetThatIsHeldForAMomentIsWaitedFor) {
  files_.rename_codes = {F::kBusy, F::kBusy};
  CopyFile(source_, target_);
  ExpectContents(true, content_, "");
  EXPECT_EQ(clock_.sleeps, (std::vector<std::int32_t>{100, 100}));
}

TEST_F(FileFaults, LookingOpeningAndCreatingAreAsPatientAsRenaming) {
  const std::pair<std::deque<F::Code> F::*, std::function<void()>> actions[] = {
      {&F::examine_codes, [&] { EXPECT_TRUE(IsFileExists(source_)); }},
      {&F::open_codes, [&] { EXPECT_EQ(ReadFileBytes(source_), content_); }},
      {&F::open_codes, [&] { CreateEmptyFile(box_.Path("пустой")); }},
      {&F::open_codes, [&] { EXPECT_TRUE(WriteFileBytes(box_.Path("пустой"), "1")); }},
      {&F::open_codes, [&] { CopyFile(source_, target_); }}};
  for (const auto& [codes, action] : actions) {
    clock_.sleeps.clear();
    (files_.*codes).assign(49, F::kBusy);
    action();
    EXPECT_EQ(clock_.sleeps, std::vector<std::int32_t>(49, 100));
  }
  files_.open_codes.assign(50, F::kBusy);
  EXPECT_EQ(tests::Caught([&] { ReadFileBytes(source_); }).Number, F::kBusy);
}

TEST_F(FileFaults, AMoveToAnotherFileSystemCopiesFirstAndDeletesLast) {
  files_.rename_codes = {F::kOtherDevice};
  files_.write_budget = 1000;
  EXPECT_EQ(tests::Caught([&] { MoveFile(source_, target_); }).Number, F::kDiskFull);
  ExpectContents(true, "старая", "");
  files_.rename_codes = {F::kOtherDevice};
  files_.write_budget.reset();
  MoveFile(source_, target_);
  ExpectContents(false, content_, "");
}

TEST_F(FileFaults, AHeldFileIsDeletedAsSoonAsItIsLetGo) {
  files_.remove_codes.assign(39, F::kBusy);
  DeleteFileRepeatedly(source_);
  EXPECT_FALSE(box_.Has("Новая база.mdb"));
  EXPECT_EQ(clock_.sleeps, std::vector<std::int32_t>(39, 100));
  files_.remove_codes.assign(9, F::kBusy);
  DeleteFile(target_);
  EXPECT_FALSE(box_.Has("куда/Тамрин.mdb"));
}

TEST_F(FileFaults, AFileHeldForFiveSecondsIsReported) {
  files_.remove_codes.assign(41, F::kBusy);
  const ProgramError error = tests::Caught([&] { DeleteFileRepeatedly(source_); });
  EXPECT_TRUE(error.Description.starts_with("Ошибка удаления файла \"" + source_ + "\":\r\n"));
  EXPECT_TRUE(files_.remove_codes.empty());
  EXPECT_EQ(clock_.now, 39 * 100 + 1000);
}

TEST_F(FileFaults, WithoutATemporaryFolderTheCauseIsNamed) {
  files_.temporary_code = F::kBroken;
  const ProgramError error = tests::Caught([] { GetTemporaryFolder(); });
  EXPECT_EQ(error.Number, F::kBroken);
  EXPECT_TRUE(error.Description.starts_with("Ошибка определения временной папки:\r\n"));
}

TEST_F(FileFaults, AHeldFileDoesNotKeepTheOthersOfAMaskFromBeingDeleted) {
  box_.Write("куда/А.mdb", "");
  box_.Write("куда/Я.mdb", "");
  files_.remove_codes = {0, F::kBusy, 0};
  EXPECT_FALSE(DeleteFiles(box_.Path("куда/*.MDB"), true));
  ExpectContents(true, "старая", "");
  files_.remove_codes = {F::kBusy};
  EXPECT_EQ(tests::Caught([&] { DeleteFiles(box_.Path("куда/*")); }).Number, F::kBusy);
}

}  // namespace
}  // namespace tmw
