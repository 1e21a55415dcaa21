#include "foundation/file_utils.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <tuple>

#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/text.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "tests/support/caught.h"
#include "tests/support/sandbox.h"

namespace tmw {
namespace {

using namespace std::string_literals;
using Names = std::vector<std::string>;

TEST(FileNames, APathIsSplitIntoFolderNameAndExtension) {
  // The path, then its folder, name and extension.
  const std::array<std::string, 4> cases[] = {
      {"C:\\Моя база\\Tamrin.mdb", "C:\\Моя база", "Tamrin", "mdb"},
      {"/opt/tamrin/Tamrin", "/opt/tamrin", "Tamrin", ""},
      {"a.b/отчёт.за.май.TMS", "a.b", "отчёт.за.май", "TMS"},
      {".\\UnTmz.dll", ".", "UnTmz", "dll"},
      {"C:\\a.txt", "C:\\", "a", "txt"},
      {"/a", "/", "a", ""},
      {"a//.profile", "a", ".profile", ""},
      {"b.", "", "b.", ""},
      {"a.d\\", "a.d", "", ""}};
  for (const auto& [path, folder, name, extension] : cases) {
    const SplitName split = SplitFileName(path);
    EXPECT_EQ(split.Folder + "|" + split.Name + "|" + split.Extension,
              folder + "|" + name + "|" + extension);
    EXPECT_TRUE(path.ends_with(split.FileName())) << path;
  }
}

TEST(FileNames, JoiningPutsOneSeparatorOfThisSystem) {
  const std::string s(1, ports::CurrentPorts().files->Separator());
  EXPECT_EQ(JoinPath("a\\\\", "/b\\c/d"), "a" + s + "b" + s + "c" + s + "d");
  EXPECT_EQ(JoinPath("C:\\", "b"), "C:\\b");
  EXPECT_EQ(JoinPath("/", "b"), "/b");
  EXPECT_EQ(JoinPath("", "b/c"), "b" + s + "c");
  EXPECT_EQ(JoinPath("a", ""), "a");
}

TEST(FileNames, AbsoluteNamesHaveNoDotsLeft) {
  const std::string here = tests::FromPath(std::filesystem::current_path());
  const std::string s(1, ports::CurrentPorts().files->Separator());
  EXPECT_EQ(GetAbsoluteFileName("файл.dat"), here + s + "файл.dat");
  EXPECT_EQ(GetAbsoluteFileName("./a/../b//c"), here + s + "b" + s + "c");
  EXPECT_EQ(GetAbsoluteFileName(here + "/x/./../../.."),
            tests::FromPath(std::filesystem::current_path().parent_path().parent_path()));
}

TEST(FileNames, MasksIgnoreLetterCaseAndMatchWholeNames) {
  // A name, a blank, a mask.
  const char* const matching[] = {"Скрипт.XML *.xml", "ФАЙЛ.tms файл.*", "ёлка ?лка",
                                  ".xml *.xml",       "точки-нет *.*",   " *",
                                  "abcabd *abd",      "abcabd a*b*d",    "a[1].xml a[1].x*",
                                  "ab a*b*"};
  const char* const others[] = {"a.xml2 *.xml", "axml *.xml", "abc a?", "abc a*d", "a ", "a a?"};
  const auto matches = [](const char* pair) {
    const std::vector<std::string> words = Split(pair, " ");
    return MatchesMask(words[0], words[1]);
  };
  for (const char* pair : matching)
    EXPECT_TRUE(matches(pair)) << pair;
  for (const char* pair : others)
    EXPECT_FALSE(matches(pair)) << pair;
}

TEST(FileUtils, TextsAreReadInTheEncodingTheyBear) {
  const tests::Sandbox box;
  const auto plain = [&](std::string_view bytes) {
    return ReadFileToString(box.Write("a b.txt", bytes));
  };
  EXPECT_EQ(plain(""), "");
  EXPECT_EQ(plain("\xCF\xF0\xE8\r\n"), "При\r\n");
  EXPECT_EQ(plain("\xEF\xBB\xBF\xD0\x9F!"), "П!");
  EXPECT_EQ(plain("\xEF\xBB\xBF\xD0"), "\uFFFD");
  const auto unicode = [&](std::string_view bytes) {
    return ReadUnicodeFileToString(box.Write("a b.txt", bytes));
  };
  EXPECT_EQ(unicode(""), "");
  EXPECT_EQ(unicode("\x1F\x04!\0"s), "П!");
  EXPECT_EQ(unicode("\xFF\xFE\x1F\x04!"), "П");
  EXPECT_EQ(unicode("\xFF\xFE\xFF\xFE"), "\uFEFF");
  const std::string large(1'000'000, 'x');
  EXPECT_EQ(ReadFileBytes(box.Write("large", large)), large);
  EXPECT_EQ(GetFileLength(box.Path("large")), 1'000'000);
}

TEST(FileUtils, MessagesNameTheFileAndGiveTheSystemsWords) {
  const tests::Sandbox box;
  const std::string missing = box.Path("нет такого.dat");
  const std::string below = box.Write("файл", "x") + "/ниже";
  const std::tuple<const char*, std::string, std::function<void()>> cases[] = {
      {"Ошибка открытия файла", missing, [&] { ReadUnicodeFileToString(missing); }},
      {"Ошибка определения длины файла", missing, [&] { GetFileLength(missing); }},
      {"Ошибка определения полного имени файла", "", [] { GetAbsoluteFileName(""); }},
      {"Ошибка создания файла", below, [&] { CreateEmptyFile(below); }},
      {"Ошибка создания папки", box.Path("файл"), [&] { CreateFolderIfAbsent(below); }},
      {"Ошибка удаления файла", box.Path(), [&] { DeleteFile(box.Path()); }},
      {"Ошибка снятия атрибута \"только чтение\" с файла", missing,
       [&] { ClearReadOnlyAttributeFromFile(missing); }},
  };
  for (const auto& [words, path, action] : cases) {
    const ProgramError error = tests::Caught(action);
    EXPECT_EQ(error.Description,
              words + (" \"" + path) + "\":\r\n" + GetApiErrorText(error.Number, ""));
  }
  std::string text;
  EXPECT_FALSE(TryCreateFolderIfAbsent(below, text));
  EXPECT_TRUE(text.starts_with("Ошибка создания папки \"" + box.Path("файл") + "\":"));
}

TEST(FileUtils, FilesAndFoldersAreToldApart) {
  const tests::Sandbox box;
  const std::string file = box.Write("файл", "x");
  EXPECT_TRUE(IsFileExists(file));
  EXPECT_TRUE(IsFolderExists(box.Path()));
  EXPECT_TRUE(IsFolderExists(box.Path() + "/"));
  EXPECT_FALSE(IsFileExists(box.Path()));
  for (const std::string& nothing : {""s, box.Path("нет"), file + "/ниже", file + "\0x"s})
    EXPECT_FALSE(IsFileExists(nothing)) << nothing;
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

TEST(FileUtils, ListingAndDeletingTakeFilesOnlyInTheOrderOfNames) {
  const tests::Sandbox box;
  for (const char* name : {"б.xml", "А.xml", "a2.XML", "B1.xml", "c.txt", "папка.xml/внутри.xml"})
    box.Write(name, "");
  const Names scripts = {"a2.XML", "B1.xml", "А.xml", "б.xml"};
  EXPECT_EQ(CollectFileNamesInFolder(box.Path(), "*.xml"), scripts);
  EXPECT_EQ(CollectFileNamesInFolder(box.Path("нет"), "*.xml"), Names{});
  ASSERT_TRUE(ports::CurrentPorts().files->SetReadOnly(box.Path("б.xml"), true));
  EXPECT_TRUE(DeleteFiles(box.Path("*.xml")));
  EXPECT_EQ(CollectFileNamesInFolder(box.Path(), "*"), Names{"c.txt"});
  EXPECT_TRUE(box.Has("папка.xml/внутри.xml"));
  EXPECT_TRUE(DeleteFiles(box.Path("нет/*.*")));
  EXPECT_TRUE(DeleteFile(box.Path("нет/ниже")));
  EXPECT_FALSE(DeleteFile(box.Path("папка.xml"), true));
}

}  // namespace
}  // namespace tmw
