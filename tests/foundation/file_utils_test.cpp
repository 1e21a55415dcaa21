#include "foundation/file_utils.h"

#include <gtest/gtest.h>

#include "foundation/encodings.h"
#include "platform/file_system.h"
#include "tests/fakes/faulty_file_system.h"
#include "tests/fakes/hand_clock.h"
#include "tests/support/caught.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"

namespace tmw {
namespace {

using namespace std::string_literals;
using Names = std::vector<std::string>;

char Separator() {
  return platform::CurrentPorts().files->Separator();
}

template <typename Action>
std::string Message(Action action) {
  return tests::Caught(action).Description;
}

TEST(FileNames, APathIsSplitIntoFolderNameAndExtension) {
  struct Case {
    const char* path;
    const char* folder;
    const char* name;
    const char* extension;
  };
  const Case cases[] = {
      {"C:\\Моя база\\Tamrin.mdb", "C:\\Моя база", "Tamrin", "mdb"},
      {"/opt/tamrin/Tamrin", "/opt/tamrin", "Tamrin", ""},
      {".\\UnTmz.dll", ".", "UnTmz", "dll"},
      {"a.b/отчёт.за.май.TMS", "a.b", "отчёт.за.май", "TMS"},
      {"Tamrin.exe", "", "Tamrin", "exe"},
      {"C:\\a.txt", "C:\\", "a", "txt"},
      {"/a", "/", "a", ""},
      {"a//b.c", "a", "b", "c"},
      {"a/.profile", "a", ".profile", ""},
      {"a/b.", "a", "b.", ""},
      {"a.d\\", "a.d", "", ""},
      {"", "", "", ""},
  };
  for (const Case& c : cases) {
    const SplitName split = SplitFileName(c.path);
    EXPECT_EQ(split.Folder, c.folder) << c.path;
    EXPECT_EQ(split.Name, c.name) << c.path;
    EXPECT_EQ(split.Extension, c.extension) << c.path;
    EXPECT_TRUE(std::string(c.path).ends_with(split.FileName())) << c.path;
  }
}

TEST(FileNames, JoiningPutsOneSeparatorOfThisSystem) {
  const std::string s(1, Separator());
  EXPECT_EQ(JoinPath("a", "b"), "a" + s + "b");
  EXPECT_EQ(JoinPath("a/", "b"), "a" + s + "b");
  EXPECT_EQ(JoinPath("a\\\\", "/b"), "a" + s + "b");
  EXPECT_EQ(JoinPath("C:\\", "b"), "C:\\b");
  EXPECT_EQ(JoinPath("/", "b"), "/b");
  EXPECT_EQ(JoinPath("a", "b\\c/d"), "a" + s + "b" + s + "c" + s + "d");
  EXPECT_EQ(JoinPath("", "b/c"), "b" + s + "c");
  EXPECT_EQ(JoinPath("a", ""), "a");
}

TEST(FileNames, AbsoluteNamesHaveNoDotsLeft) {
  const std::string here = tests::FromPath(std::filesystem::current_path());
  const std::string s(1, Separator());
  EXPECT_EQ(GetAbsoluteFileName("файл.dat"), here + s + "файл.dat");
  EXPECT_EQ(GetAbsoluteFileName("./a/../b//c"), here + s + "b" + s + "c");
  EXPECT_EQ(GetAbsoluteFileName(here + "/x/./../../.."),
            tests::FromPath(std::filesystem::current_path().parent_path().parent_path()));
  EXPECT_NE(Message([] { GetAbsoluteFileName(""); }).find("имени файла \"\":\r\n"),
            std::string::npos);
}

TEST(FileNames, MasksIgnoreLetterCaseAndMatchWholeNames) {
  struct Case {
    const char* name;
    const char* mask;
    bool matches;
  };
  const Case cases[] = {
      {"Скрипт.XML", "*.xml", true},
      {"ФАЙЛ.tms", "файл.*", true},
      {"ёлка", "?лка", true},
      {"a.xml2", "*.xml", false},
      {"axml", "*.xml", false},
      {".xml", "*.xml", true},
      {"без точки", "*.*", true},
      {"без точки", "*", true},
      {"", "*", true},
      {"abcabd", "*abd", true},
      {"abcabd", "a*b*d", true},
      {"abc", "a?", false},
      {"abc", "a*d", false},
      {"a[1].xml", "a[1].x*", true},
      {"aaab", "*aab", true},
      {"a.b", "", false},
      {"a.b.xml", "*.b.*", true},
      {"ab", "a*b*", true},
  };
  for (const Case& c : cases)
    EXPECT_EQ(MatchesMask(c.name, c.mask), c.matches) << c.name << " " << c.mask;
}

TEST(FileUtils, TextsAreReadInTheEncodingTheyBear) {
  const tests::Sandbox box;
  struct Case {
    std::string bytes;
    const char* text;
  };
  const Case plain[] = {
      {"", ""},
      {"\xCF\xF0\xE8\xE2\xE5\xF2\r\n", "Привет\r\n"},
      {"\xEF\xBB\xBF\xD0\x9F!", "П!"},
      {"\xEF\xBB\xBF\xD0", "\uFFFD"},
      {"\xEF\xBB", "п»"},
  };
  for (const Case& c : plain)
    EXPECT_EQ(ReadFileToString(box.Write("a b.txt", c.bytes)), c.text);
  const Case unicode[] = {
      {"", ""},
      {"\x1F\x04!\0"s, "П!"},
      {"\xFF\xFE\x1F\x04"s, "П"},
      {"\xFF\xFE\xFF\xFE\x1F\x04"s, "\uFEFFП"},
      {"\x1F\x04!"s, "П"},
  };
  for (const Case& c : unicode)
    EXPECT_EQ(ReadUnicodeFileToString(box.Write("a b.txt", c.bytes)), c.text);
  std::string large;
  while (large.size() < 1'000'000)
    large += "строка " + std::to_string(large.size()) + "\n";
  EXPECT_EQ(ReadFileBytes(box.Write("large", large)), large);
  EXPECT_EQ(GetFileLength(box.Path("large")), static_cast<std::int64_t>(large.size()));
}

TEST(FileUtils, MessagesNameTheFileAndGiveTheSystemsWords) {
  const tests::Sandbox box;
  const std::string missing = box.Path("нет такого.dat");
  const std::string below = box.Write("файл", "x") + "/ниже/ещё";
  EXPECT_TRUE(Message([&] {
                ReadFileToString(missing);
              }).starts_with("Ошибка открытия файла \"" + missing + "\":\r\n"));
  EXPECT_TRUE(Message([&] {
                ReadUnicodeFileToString(missing);
              }).starts_with("Ошибка открытия файла \"" + missing + "\":\r\n"));
  EXPECT_TRUE(Message([&] {
                GetFileLength(missing);
              }).starts_with("Ошибка определения длины файла \"" + missing + "\":\r\n"));
  EXPECT_TRUE(Message([&] {
                CreateEmptyFile(below);
              }).starts_with("Ошибка создания файла \"" + below + "\":\r\n"));
  EXPECT_TRUE(Message([&] {
                CreateFolderIfAbsent(below);
              }).starts_with("Ошибка создания папки \"" + box.Path("файл")));
  EXPECT_TRUE(Message([&] {
                DeleteFile(box.Path());
              }).starts_with("Ошибка удаления файла \"" + box.Path() + "\":\r\n"));
  EXPECT_TRUE(Message([&] {
                ClearReadOnlyAttributeFromFile(missing);
              }).starts_with("Ошибка снятия атрибута \"только чтение\" с файла \"" + missing));
  std::string text;
  EXPECT_FALSE(TryCreateFolderIfAbsent(below, text));
  EXPECT_EQ(text, Message([&] { CreateFolderIfAbsent(below); }));
}

TEST(FileUtils, FilesAndFoldersAreToldApart) {
  const tests::Sandbox box;
  const std::string file = box.Write("файл", "x");
  EXPECT_TRUE(IsFileExists(file));
  EXPECT_FALSE(IsFolderExists(file));
  EXPECT_TRUE(IsFolderExists(box.Path()));
  EXPECT_TRUE(IsFolderExists(box.Path() + "/"));
  EXPECT_FALSE(IsFileExists(box.Path()));
  for (const std::string& nothing : {""s, box.Path("нет"), file + "/ниже", file + "\0x"s}) {
    EXPECT_FALSE(IsFileExists(nothing)) << nothing;
    EXPECT_FALSE(IsFolderExists(nothing)) << nothing;
  }
}

TEST(FileUtils, FoldersAreMadeAtAnyDepthAndPathsMayBeLong) {
  const tests::Sandbox box;
  std::string folder = box.Path();
  for (int level = 0; level < 12; ++level)
    folder = JoinPath(folder, "очень длинная папка номер " + std::to_string(level));
  ASSERT_GT(Utf8ToUtf16(folder).size(), 300U);
  CreateFolderIfAbsent(folder);
  CreateFolderIfAbsent(folder + "/");
  EXPECT_TRUE(IsFolderExists(folder));
  const std::string file = JoinPath(folder, "файл.txt");
  CreateEmptyFile(file);
  EXPECT_EQ(GetFileLength(file), 0);
  CopyFile(file, JoinPath(folder, "копия.txt"));
  MoveFile(file, JoinPath(folder, "ещё.txt"));
  EXPECT_EQ(CollectFileNamesInFolder(folder, "*.TXT"), (Names{"ещё.txt", "копия.txt"}));
  EXPECT_TRUE(DeleteFiles(JoinPath(folder, "*.*")));
  EXPECT_EQ(CollectFileNamesInFolder(folder, "*"), Names{});
}

TEST(FileUtils, ListingGivesFilesOnlyInTheOrderOfNames) {
  const tests::Sandbox box;
  for (const char* name : {"б.xml", "А.xml", "a2.XML", "B1.xml", "c.txt", "папка.xml/внутри.xml"})
    box.Write(name, "");
  EXPECT_EQ(CollectFileNamesInFolder(box.Path(), "*.xml"),
            (Names{"a2.XML", "B1.xml", "А.xml", "б.xml"}));
  EXPECT_EQ(CollectFileNamesInFolder(box.Path("нет"), "*.xml"), Names{});
  EXPECT_TRUE(DeleteFiles(box.Path("*.xml")));
  EXPECT_EQ(CollectFileNamesInFolder(box.Path(), "*"), Names{"c.txt"});
  EXPECT_TRUE(box.Has("папка.xml/внутри.xml"));
  EXPECT_TRUE(DeleteFiles(box.Path("нет/*.*")));
}

TEST(FileUtils, DeletingAMissingOrReadOnlyFileSucceeds) {
  const tests::Sandbox box;
  EXPECT_TRUE(DeleteFile(box.Path("нет")));
  EXPECT_TRUE(DeleteFile(box.Path("нет/ниже"), true));
  const std::string file = box.Write("файл", "x");
  ASSERT_TRUE(platform::CurrentPorts().files->SetReadOnly(file, true));
  EXPECT_TRUE(DeleteFile(file));
  EXPECT_FALSE(IsFileExists(file));
  EXPECT_FALSE(DeleteFile(box.Path(), true));
  EXPECT_TRUE(IsFolderExists(box.Path()));
}

class HeldFile : public testing::Test {
 protected:
  HeldFile() {
    ports_->files = &files_;
    ports_->clock = &clock_;
  }

  tests::ScopedPorts ports_;
  tests::FaultyFileSystem files_{*ports_->files};
  tests::HandClock clock_;
  tests::Sandbox box_;
};

TEST_F(HeldFile, IsDeletedAsSoonAsItIsLetGo) {
  const std::string file = box_.Write("занят.dll", "x");
  files_.remove_codes.assign(39, tests::FaultyFileSystem::kBusy);
  DeleteFileRepeatedly(file);
  EXPECT_FALSE(IsFileExists(file));
  EXPECT_EQ(clock_.sleeps, std::vector<std::int32_t>(39, 100));
}

TEST_F(HeldFile, IsReportedAfterAboutFiveSeconds) {
  const std::string file = box_.Write("занят.dll", "x");
  files_.remove_codes.assign(41, tests::FaultyFileSystem::kBusy);
  EXPECT_TRUE(Message([&] {
                DeleteFileRepeatedly(file);
              }).starts_with("Ошибка удаления файла \"" + file + "\":\r\n"));
  EXPECT_EQ(files_.log.size(), 41U);
  EXPECT_EQ(clock_.now, 4900);
  EXPECT_EQ(clock_.sleeps.back(), 1000);
}

TEST_F(HeldFile, DoesNotKeepTheOthersOfAMaskFromBeingDeleted) {
  for (const char* name : {"1.dat", "2.dat", "3.dat"})
    box_.Write(name, "x");
  files_.remove_codes = {0, tests::FaultyFileSystem::kBusy, 0};
  EXPECT_FALSE(DeleteFiles(box_.Path("*.dat"), true));
  EXPECT_EQ(CollectFileNamesInFolder(box_.Path(), "*"), Names{"2.dat"});
  files_.remove_codes = {tests::FaultyFileSystem::kBusy};
  EXPECT_TRUE(Message([&] {
                DeleteFiles(box_.Path("*.dat"));
              }).starts_with("Ошибка удаления файла \"" + box_.Path("2.dat") + "\":\r\n"));
}

}  // namespace
}  // namespace tmw
